#pragma once

#include "db/FMDatabase.h"
#include "db/FMResultSet.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

/// The rows of a query, the columns of each joined by "|", NULL as "NULL".
inline QStringList rowsOf(FMDatabase &db, const QString &query)
{
    QStringList lines;
    const auto set = db.executeQuery(query, {});
    while (set && set->next()) {
        QStringList columns;
        for (int i = 0; i < set->columnCount(); ++i)
            columns += set->stringForColumnIndex(i).value_or(QStringLiteral("NULL"));
        lines += columns.join(u'|');
    }
    return lines;
}

/// The same from the database at `path`; none where there is no database.
inline QStringList rowsIn(const QString &path, const QString &query)
{
    const auto db = FMDatabase::databaseWithPath(path);
    return db->open() ? rowsOf(*db, query) : QStringList();
}

/// A fresh `data.db` of the schema that the program ships, without the sample plan, in a folder of its own.
class TemplateDatabase final
{
    Q_DISABLE_COPY_MOVE(TemplateDatabase)

public:
    TemplateDatabase()
    {
        QFile schema(QStringLiteral(BELFRY_SCHEMA));
        if (schema.open(QIODevice::ReadOnly) && db->open())
            db->executeStatements(QString::fromUtf8(schema.readAll()) + QStringLiteral("; delete from plan"));
    }

    QString path() const { return folder.filePath(QStringLiteral("data.db")); }

    /// Runs statements that a test knows to be right.
    void run(const QString &sql) const
    {
        if (!db->executeStatements(sql))
            qFatal("%s", qPrintable(db->lastErrorMessage()));
    }

    QStringList rows(const QString &query) const { return rowsOf(*db, query); }

private:
    QTemporaryDir folder;

public:
    const std::shared_ptr<FMDatabase> db = FMDatabase::databaseWithPath(path());
};
