#pragma once

#include "platform/Resources.h"

#include <QString>

#include <memory>
#include <optional>

class FMDatabase;

/// Locates `data.db`, installs a copy of the template database if it is missing, and holds the one connection
/// to it.
class SQLiteHelper final
{
    Q_DISABLE_COPY_MOVE(SQLiteHelper)

public:
    SQLiteHelper(QString documentsPath, Resources resources);

    /// The instance for the user's documents folder and the program's own resources.
    static SQLiteHelper &shared();

    const QString dbName;

    /// The path of the database file: `dbName` in the documents folder. If nothing exists there, the first
    /// call creates the folder and copies the template, and prints what it does and any failure on standard
    /// output.
    ///
    /// Empty, with a line in the log, if both the file and the template are missing: the installation is
    /// incomplete and the program must end, because SQLite would create an empty file that stays.
    QString dbURL();

    /// The connection; the first call creates it closed.
    std::shared_ptr<FMDatabase> db();

private:
    bool installTemplate(const QString &path) const;

    const QString documentsPath;
    const Resources resources;
    std::optional<QString> url;
    std::shared_ptr<FMDatabase> connection;
};
