#pragma once

#include "platform/SoundFrame.h"

#include <QElapsedTimer>
#include <QObject>

#include <memory>
#include <span>

class SoundServer;
struct pa_stream;

/// A stream of sound to the sound server. It opens by itself as soon as there is one, and again when
/// there is another one. Its end cuts the sound at once.
class SoundStream final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SoundStream)

public:
    /// Begins to open. The signals come from the event loop, never from a call.
    explicit SoundStream(std::shared_ptr<SoundServer> server);
    ~SoundStream() override;

    /// True while a server takes sound.
    bool isOpen() const;

    /// Hands over as many of `frames` as there is room for, and returns how many. The server keeps
    /// up to five seconds of sound.
    qint64 write(std::span<const SoundFrame> frames);

    /// Says that all has been written, so that the server does not wait for more to go with the last of it.
    void drain();

    /// Has the server say how far it is: moved() follows, unless it does not answer.
    void askProgress();

    /// Says that all has been heard: what becomes of the server does not matter any more.
    void finish();

    /// Throws away what has been written and opens afresh.
    void reopen();

Q_SIGNALS:
    /// The server takes sound now. Nothing that was written earlier counts any more.
    void opened();

    /// So many of the frames written since opened() have been heard by now.
    void moved(qint64 frames);

private:
    void open();
    void close();
    void stateChanged();
    void progressReported();

    std::shared_ptr<SoundServer> server;
    pa_stream *stream = nullptr;
    bool drained = false;
    bool finished = false;
    qint64 heard = 0;
    QElapsedTimer asked; // invalid when no answer is due
};
