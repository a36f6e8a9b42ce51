#include "platform/SoundModule.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>

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
    if (factory)
        return true;
    QLibrary module(path);
    const auto enter =
        reinterpret_cast<decltype(&belfryEnterSoundModule)>(module.resolve("belfryEnterSoundModule"));
    if (enter)
        enter(factory);
    else
        error = module.errorString();
    return bool(factory);
}

std::unique_ptr<AVAudioPlayer> SoundModule::makePlayer(const QString &file, QString &error)
{
    return load(error) ? factory(file, error) : nullptr;
}
