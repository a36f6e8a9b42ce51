#pragma once

#include <QtGlobal>

/// One stereo frame of 16-bit samples. Everything is converted to this format.
struct SoundFrame
{
    qint16 left;
    qint16 right;
};

/// In frames per second.
constexpr int sampleRate = 48000;
