#pragma once

#include "platform/AVAudioPlayer.h"

#include <QString>

/// The sound, as a module that is loaded while the program runs.
///
/// Its libraries, which decode and which speak to the sound server, would take up more of the start and of
/// the memory than all the rest of the program, before anything rings.
class SoundModule final
{
    Q_DISABLE_COPY_MOVE(SoundModule)

public:
    explicit SoundModule(QString path);

    /// The path of the running program's: in the folder of modules of an installed one, else beside the
    /// program.
    static QString pathOfApplication();

    /// Loads the module if it has not been; takes some tens of milliseconds. Returns false, with the reason
    /// in `error`, when that fails; the next call tries again.
    bool load(QString &error);

    /// A player for the file at `file`, or null with the reason in `error`. Loads the module first if need
    /// be.
    std::unique_ptr<AVAudioPlayer> makePlayer(const QString &file, QString &error);

private:
    QString path;
    AVAudioPlayerFactory factory;
};

/// The one function of the module, which is called by name: gives the factory of its players to `factory`.
extern "C" Q_DECL_EXPORT void belfryEnterSoundModule(AVAudioPlayerFactory &factory);
