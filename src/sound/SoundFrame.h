#pragma once

#include <QtGlobal>

/// One stereo frame of 16-bit samples, the one format that everything is played in.
struct SoundFrame
{
    qint16 left;
    qint16 right;
};

/// In frames a second.
constexpr int sampleRate = 48000;
