#include "store/SQLiteHelper.h"

#include "db/FMDatabase.h"
#include "platform/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

// The environment's XDG_DOCUMENTS_DIR goes before the user's user-dirs.dirs, which Qt reads.
QString userDocuments()
{
    const QString given = qEnvironmentVariable("XDG_DOCUMENTS_DIR");
    return QDir::isAbsolutePath(given) ? QDir::cleanPath(given)
                                       : QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

// Also true for a link to nothing: copying over it would fail, and SQLite follows it.
bool somethingLiesAt(const QString &path)
{
    return QFileInfo::exists(path) || QFileInfo(path).isSymLink();
}

} // namespace

SQLiteHelper::SQLiteHelper(QString documentsPath, Resources resources)
    : dbName(u"data.db"_s)
    , documentsPath(std::move(documentsPath))
    , resources(std::move(resources))
{}

SQLiteHelper &SQLiteHelper::shared()
{
    static SQLiteHelper instance(userDocuments(), Resources::ofApplication());
    return instance;
}

QString SQLiteHelper::dbURL()
{
    if (!url) {
        url = QDir(documentsPath).filePath(dbName);
        if (!somethingLiesAt(*url))
            prepare(*url);
    }
    return *url;
}

std::shared_ptr<FMDatabase> SQLiteHelper::db()
{
    if (!connection)
        connection = FMDatabase::databaseWithPath(dbURL());
    return connection;
}

void SQLiteHelper::prepare(const QString &path) const
{
    Log::print(u"数据库不存在："_s + path);
    if (!QFileInfo::exists(documentsPath) && !QDir().mkpath(documentsPath))
        Log::print(u"创建Document下的软件目录出错："_s + QString::fromLocal8Bit(std::strerror(errno)));
    const auto bundleDbPath = resources.path(u"data"_s, u"db"_s);
    if (!bundleDbPath) {
        Log::write(u"The template database data.db is missing among the program's resources."_s);
        std::exit(EXIT_FAILURE);
    }
    Log::print(u"bundleDbPath = "_s + *bundleDbPath);
    QFile bundleDb(*bundleDbPath);
    if (!bundleDb.copy(path))
        return Log::print(bundleDb.errorString());
    // The copy has the template's permissions, and an installed template may be read-only.
    QFile::setPermissions(path, QFile::permissions(path) | QFile::ReadOwner | QFile::WriteOwner);
}
