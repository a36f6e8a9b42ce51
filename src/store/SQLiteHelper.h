#pragma once

#include "platform/Resources.h"

#include <QString>

#include <memory>
#include <optional>

class FMDatabase;

/// Knows where `data.db` lies, puts a copy of the template there when it is missing, and holds the one
/// connection to it.
class SQLiteHelper final
{
    Q_DISABLE_COPY_MOVE(SQLiteHelper)

public:
    SQLiteHelper(QString documentsPath, Resources resources);

    /// That of the running program: the user's documents folder, the program's own resources.
    static SQLiteHelper &shared();

    const QString dbName;

    /// The path of the database file: `dbName` in the documents folder. The first call makes that folder
    /// and copies the template when no file exists at the path, and says so on standard output; a failure
    /// costs a line there.
    ///
    /// Empty, with a line in the log, when there is no file and the template is missing: the program is not
    /// installed completely and must end, because SQLite would create an empty file that stays.
    QString dbURL();

    /// The connection, not opened yet at the first call.
    std::shared_ptr<FMDatabase> db();

private:
    bool installTemplate(const QString &path) const;

    const QString documentsPath;
    const Resources resources;
    std::optional<QString> url;
    std::shared_ptr<FMDatabase> connection;
};
