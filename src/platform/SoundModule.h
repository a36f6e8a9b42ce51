#pragma once

#include "platform/AVAudioPlayer.h"

#include <QString>

#include <memory>

/// The sound as a plugin that is loaded at run time: its libraries, for decoding and for the sound server,
/// would slow down the start and double its memory before anything rings.
class SoundModule final : public AVAudioPlayerFactory
{
    Q_DISABLE_COPY_MOVE(SoundModule)

public:
    explicit SoundModule(QString path);

    /// The path of the running program's plugin: in the folder of modules of an installed one, else in the
    /// build tree.
    static QString pathOfApplication();

    /// Loads the plugin unless it is loaded; takes some tens of milliseconds. Returns false, with the reason
    /// in `error`, when that fails; the next call tries again.
    bool load(QString &error);

    /// Loads the plugin first if necessary. The players must not outlive this object.
    std::unique_ptr<AVAudioPlayer> makePlayer(const QString &file, QString &error) override;

private:
    const QString path;
    std::unique_ptr<AVAudioPlayerFactory> plugin;
};
