#include "store/SQLiteHelper.h"

#include "db/FMDatabase.h"
#include "platform/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <filesystem>

using namespace Qt::StringLiterals;

namespace {

// The environment variable XDG_DOCUMENTS_DIR takes precedence over the user's user-dirs.dirs, which Qt reads.
QString userDocuments()
{
    const QString given = qEnvironmentVariable("XDG_DOCUMENTS_DIR");
    return QDir::isAbsolutePath(given) ? QDir::cleanPath(given)
                                       : QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
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
        if (!QFileInfo::exists(*url) && !installTemplate(*url))
            url = QString();
    }
    return *url;
}

std::shared_ptr<FMDatabase> SQLiteHelper::db()
{
    if (!connection)
        connection = FMDatabase::databaseWithPath(dbURL());
    return connection;
}

bool SQLiteHelper::installTemplate(const QString &path) const
{
    Log::print(u"数据库不存在："_s + path);
    std::error_code error;
    if (!QFileInfo::exists(documentsPath))
        std::filesystem::create_directories(QFile::encodeName(documentsPath).toStdString(), error);
    if (error)
        Log::print(u"创建Document下的软件目录出错："_s + QString::fromStdString(error.message()));
    const auto bundleDbPath = resources.path(u"data"_s, u"db"_s);
    if (!bundleDbPath) {
        Log::write(u"Template database data.db not found among the program's resources"_s);
        return false;
    }
    Log::print(u"bundleDbPath = "_s + *bundleDbPath);
    QFile bundleDb(*bundleDbPath);
    if (!bundleDb.open(QIODevice::ReadOnly)) {
        Log::print(bundleDb.errorString());
        return true;
    }
    // Writes the whole file or nothing, and through a symbolic link at `path`.
    QSaveFile copy(path);
    if (!copy.open(QIODevice::WriteOnly) || copy.write(bundleDb.readAll()) < 0 || !copy.commit())
        Log::print(copy.errorString());
    return true;
}
