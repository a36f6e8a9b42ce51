#pragma once

#include "sound/PulseMainLoop.h"

#include <QObject>
#include <QTimer>

#include <memory>

struct pa_context;

/// The connection to the user's sound server (PulseAudio, or that of PipeWire), one for all players.
///
/// It is made when the first sound is to be played, and then kept. While anything is playing, a connection
/// that fails, or over which nothing is answered for three seconds, is dropped; another one is tried after
/// half a second and then every two seconds. The log has one line when an outage begins and one when sound is
/// played again. No call waits.
class SoundServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SoundServer)

public:
    SoundServer();
    ~SoundServer() override;

    /// The connection, ready for use, or null.
    pa_context *connection() const;

    /// To be called when something begins to play, and when it ends.
    void attach();
    void detach();

    /// To be called when sound has been played, which ends an outage.
    void reportPlayback();

    /// Drops the connection on the next turn of the event loop, because of the last error that libpulse
    /// reported.
    void fail();

    /// Sends at once what libpulse would send on the next turn of the event loop. Must not be called from a
    /// callback of libpulse.
    void flush() { loop.runDeferred(); }

Q_SIGNALS:
    /// connection() is ready.
    void connected();

    /// connection() is about to go away: release everything made from it.
    void disconnected();

private:
    struct Free
    {
        void operator()(pa_context *context) const;
    };

    bool mayBeResolving() const;
    void connectToServer();
    void contextChanged();
    void drop(const QString &reason);
    void reportOutage(const QString &reason);
    void checkConnection();
    void ping();

    PulseMainLoop loop;
    std::unique_ptr<pa_context, Free> context;
    int contextNumber = 0;
    QTimer checkTimer;
    int attached = 0;
    int ticksWithoutActivity = 0;
    int ticksToReconnect = 0;
    bool outage = false;
};
