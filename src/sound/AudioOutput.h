#pragma once

#include "sound/SoundFrame.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <span>

/// The output of a player: one stream to a sound server, which may come, go and come back.
///
/// No call waits. Destroying it cuts the sound at once. Signals may come from a callback of the sound
/// library: write() and drain() may be called from a slot, reopen() and the destructor may not.
class AudioOutput : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AudioOutput)

public:
    AudioOutput() = default;

    /// True while there is a server that responds, whether or not it takes sound yet.
    virtual bool isConnected() const = 0;

    /// True while the server takes sound.
    virtual bool isOpen() const = 0;

    /// Takes as many of `frames` as there is room for, from the first on, and returns how many.
    virtual qint64 write(std::span<const SoundFrame> frames) = 0;

    /// To be called when everything has been written, so that the server does not wait for more.
    virtual void drain() = 0;

    /// Asks for the playback position: progressed() follows if anything has been played since.
    virtual void requestTimingUpdate() = 0;

    /// To be called when everything has been played: failures of the server no longer matter.
    virtual void finish() = 0;

    /// Discards what has been written and opens the stream again: opened() follows.
    virtual void reopen() = 0;

Q_SIGNALS:
    /// The server takes sound from now on. What was written earlier is discarded.
    void opened();

    /// There is room for more.
    void writable();

    /// `framesPlayed` of the frames written since opened() have been played, at some moment within the last
    /// `age`.
    void progressed(qint64 framesPlayed, std::chrono::nanoseconds age);
};

using AudioOutputFactory = std::function<std::unique_ptr<AudioOutput>()>;
