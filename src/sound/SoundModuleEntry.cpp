#include "platform/SoundModule.h"
#include "sound/SoundPlayer.h"
#include "sound/SoundServer.h"
#include "sound/SoundStream.h"

void belfryEnterSoundModule(AVAudioPlayerFactory &factory)
{
    // People set it for the sake of games. It overrides the size of our buffer, which has to carry the sound
    // over a main thread that is held.
    qunsetenv("PULSE_LATENCY_MSEC");
    factory = [server = std::make_shared<SoundServer>()](const QString &path,
                                                         QString &error) -> std::unique_ptr<AVAudioPlayer> {
        auto file = SoundFile::open(path, error);
        if (!file)
            return nullptr;
        const auto makeOutput = [server] { return std::make_unique<SoundStream>(server); };
        return std::make_unique<SoundPlayer>(std::move(file), makeOutput);
    };
}
