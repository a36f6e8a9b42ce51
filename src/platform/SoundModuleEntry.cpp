#include "platform/SoundModule.h"
#include "platform/SoundPlayer.h"
#include "platform/SoundServer.h"

void belfryEnterSoundModule(AVAudioPlayerFactory &factory)
{
    factory = soundPlayerFactory(std::make_shared<SoundServer>());
}
