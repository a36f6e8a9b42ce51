#include "platform/AVAudioPlayer.h"
#include "sound/SoundPlayer.h"
#include "sound/SoundServer.h"
#include "sound/SoundStream.h"

/// The plugin that SoundModule loads: makes players that share one connection to the sound server.
class SoundPlugin final : public QObject, public AVAudioPlayerFactory
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SoundPlugin)
    Q_PLUGIN_METADATA(IID "AVAudioPlayerFactory")
    Q_INTERFACES(AVAudioPlayerFactory)

public:
    SoundPlugin();

    std::unique_ptr<AVAudioPlayer> makePlayer(const QString &path, QString &error) override;

private:
    std::shared_ptr<SoundServer> server;
};

SoundPlugin::SoundPlugin()
{
    // People set it for games. It would override the size of our buffer, which has to carry the sound while
    // the main thread is held.
    qunsetenv("PULSE_LATENCY_MSEC");
    server = std::make_shared<SoundServer>();
}

std::unique_ptr<AVAudioPlayer> SoundPlugin::makePlayer(const QString &path, QString &error)
{
    auto file = SoundFile::open(path, error);
    if (!file)
        return nullptr;
    const auto makeOutput = [server = server] { return std::make_unique<SoundStream>(server); };
    return std::make_unique<SoundPlayer>(std::move(file), makeOutput);
}

#include "SoundPlugin.moc"
