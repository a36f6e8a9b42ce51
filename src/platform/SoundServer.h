#pragma once

#include "platform/PulseMainLoop.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <memory>

struct pa_context;

/// The connection to the user's sound server (PulseAudio, or PipeWire in its stead), one for all players.
///
/// It is made when the first sound is to be played, and then kept. While anything is playing, a
/// connection that fails, or that shows no life for three seconds, is given up and another one tried every
/// two seconds. The log has one line when that begins and one when sound moves again. Nothing waits.
class SoundServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SoundServer)

public:
    /// `address` is that of the server in the notation of PULSE_SERVER; empty for the user's own.
    explicit SoundServer(QByteArray address = {});
    ~SoundServer() override;

    /// The connection, ready for use, or null.
    pa_context *connection() const;

    /// Says that somebody wants to play sound from now on, until detach().
    void attach();
    void detach();

    /// Says that a stream has got on: with `heard`, that sound of it has been played.
    void noteLife(bool heard);

    /// Gives the connection up on the next turn of the event loop. `reason` is for the log.
    void fail(const QString &reason);

    /// Sends at once what libpulse would send on the next turn of the event loop. Not to be called out of
    /// libpulse.
    void flush() { loop.runDeferred(); }

Q_SIGNALS:
    /// connection() is ready.
    void connected();

    /// connection() is about to go away: let go of everything made from it.
    void lost();

private:
    struct Free
    {
        void operator()(pa_context *context) const;
    };

    void connectToServer();
    void contextChanged();
    void drop(const QString &reason);
    void watch();

    QByteArray address;
    PulseMainLoop loop;
    std::unique_ptr<pa_context, Free> context;
    QTimer watchTimer;
    int attached = 0;
    int idleTurns = 0;      // of the watch, since the server last showed life
    int turnsToConnect = 0; // of the watch, until the next try
    bool outage = false;
};
