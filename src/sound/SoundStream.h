#pragma once

#include "sound/AudioOutput.h"

#include <QElapsedTimer>

class SoundServer;
struct pa_stream;

/// A playback stream of the sound server. It opens by itself as soon as there is a connection, and again
/// after a reconnect.
///
/// It asks for a buffer of five seconds and works with whatever it is granted.
class SoundStream final : public AudioOutput
{
    Q_OBJECT

public:
    /// Begins to open. Signals come from the event loop, never from within a call.
    explicit SoundStream(std::shared_ptr<SoundServer> server);
    ~SoundStream() override;

    bool isConnected() const override { return stream; }
    bool isOpen() const override;
    qint64 write(std::span<const SoundFrame> frames) override;
    void drain() override;
    void requestTimingUpdate() override;
    void finish() override;
    void reopen() override;

private:
    void open();
    void close();
    void stateChanged();
    void timingUpdated();

    std::shared_ptr<SoundServer> server;
    pa_stream *stream = nullptr;
    bool drained = false;
    bool finished = false;
    qint64 playedFrames = 0;
    QElapsedTimer timingRequest; // invalid when no answer is due
};
