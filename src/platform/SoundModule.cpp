#include "platform/SoundModule.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>

using namespace Qt::StringLiterals;

SoundModule::SoundModule(QString path) : path(std::move(path)) {}

QString SoundModule::pathOfApplication()
{
    const QString name = u"belfry-sound.so"_s;
    const QDir program(QCoreApplication::applicationDirPath());
    const QString installed = program.filePath(QStringLiteral(BELFRY_MODULE_FOLDER "/") + name);
    return QFileInfo::exists(installed) ? installed : program.filePath(name);
}

bool SoundModule::load(QString &error)
{
    if (plugin)
        return true;
    QPluginLoader loader(path);
    plugin.reset(qobject_cast<AVAudioPlayerFactory *>(loader.instance()));
    if (!plugin)
        error = u"%1: %2"_s.arg(path, loader.errorString());
    return bool(plugin);
}

std::unique_ptr<AVAudioPlayer> SoundModule::makePlayer(const QString &file, QString &error)
{
    return load(error) ? plugin->makePlayer(file, error) : nullptr;
}
