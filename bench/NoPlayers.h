#pragma once

#include "platform/AVAudioPlayer.h"

/// For benchmarks that play nothing.
class NoPlayers final : public AVAudioPlayerFactory
{
public:
    std::unique_ptr<AVAudioPlayer> makePlayer(const QString & /*path*/, QString & /*error*/) override
    {
        return nullptr;
    }
};
