#pragma once

#include <QtGlobal>

/// One moment of sound, in the one format that everything is played in: two channels, 16 bit.
struct SoundFrame
{
    qint16 left;
    qint16 right;
};

/// How many frames make a second.
constexpr int soundFrameRate = 48000;
