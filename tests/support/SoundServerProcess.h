#pragma once

#include "support/SoundRecording.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <limits>

/// A sound server of a test's own, PulseAudio with no hardware, and a recorder of everything it plays.
///
/// It takes its name from the folder in which it lives, so that it can be ended and started again. The
/// recording comes in by the event loop.
class SoundServerProcess final
{
    Q_DISABLE_COPY_MOVE(SoundServerProcess)

public:
    SoundServerProcess()
    {
        QObject::connect(&recorder, &QProcess::readyReadStandardOutput, &recorder, [this]() { takeIn(); });
    }

    ~SoundServerProcess() { kill(); }

    /// For PULSE_SERVER.
    QByteArray address() const { return "unix:" + QFile::encodeName(socket()); }

    /// Has a server run that has never been held up. False when that does not work.
    bool ensureHealthy() { return (daemon.state() == QProcess::Running && !wasFrozen) || start(); }

    /// Starts the server and the recorder afresh, and returns whether both run. The recording begins anew.
    bool start()
    {
        kill();
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"})
            environment.insert(QString::fromLatin1(name), folder.path());
        environment.insert(QStringLiteral("PULSE_SERVER"), QFile::decodeName(address()));
        // A sanitizer or a faked clock is for the program under test.
        environment.remove(QStringLiteral("LD_PRELOAD"));
        daemon.setProcessEnvironment(environment);
        recorder.setProcessEnvironment(environment);
        daemon.setStandardErrorFile(folder.filePath(QStringLiteral("daemon.log")));
        QFile::remove(socket());
        recording.samples.clear();
        wasFrozen = false;
        beganAt = std::numeric_limits<qint64>::max();
        daemon.start(QStringLiteral("pulseaudio"),
                     {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
                      QStringLiteral("--use-pid-file=no"), QStringLiteral("--exit-idle-time=-1"),
                      QStringLiteral("--high-priority=no"), QStringLiteral("--realtime=no"),
                      QStringLiteral("-L"),
                      QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=") + socket(),
                      QStringLiteral("-L"),
                      QStringLiteral("module-null-sink sink_name=ear rate=48000 channels=2 norewinds=1")});
        if (!QTest::qWaitFor([this]() { return QFile::exists(socket()); }, 10000))
            return false;
        // The socket is there a moment before anybody listens at it.
        const auto isRecording = [this]() {
            if (recorder.state() == QProcess::NotRunning)
                recorder.start(QStringLiteral("parec"),
                               {QStringLiteral("--raw"), QStringLiteral("--device=ear.monitor"),
                                QStringLiteral("--format=s16le"), QStringLiteral("--rate=48000"),
                                QStringLiteral("--channels=1"), QStringLiteral("--latency-msec=10")});
            return !recording.samples.empty();
        };
        return QTest::qWaitFor(isRecording, 10000);
    }

    /// Ends the server and the recorder, as a crash would.
    void kill()
    {
        for (QProcess *process : {&recorder, &daemon}) {
            process->kill();
            process->waitForFinished();
        }
    }

    /// Holds the server still, as a deadlock would; it does not answer until thaw().
    void freeze()
    {
        wasFrozen = true;
        ::kill(pid_t(daemon.processId()), SIGSTOP);
    }

    void thaw() { ::kill(pid_t(daemon.processId()), SIGCONT); }

    /// Has the sink of the server stop playing, or go on, as one that sleeps. Nothing more is recorded.
    void suspend(bool isSuspended)
    {
        wasFrozen = true;
        control({QStringLiteral("suspend-sink"), QStringLiteral("ear"), QString::number(isSuspended)});
    }

    /// Waits until everything that has been played by now is recorded, and returns the recording from the
    /// moment `from` on.
    SoundRecording heard(double from = 0)
    {
        const double now = seconds();
        if (!QTest::qWaitFor([&]() { return recording.length() > now; }, 10000))
            qWarning("The recorder does not go on.");
        const auto first = qsizetype(std::max(0.0, from) * SoundRecording::rate);
        SoundRecording part;
        if (first < qsizetype(recording.samples.size()))
            part.samples.assign(recording.samples.begin() + first, recording.samples.end());
        return part;
    }

    /// The moment that is now, in seconds of the recording.
    double seconds() const { return double(QDateTime::currentMSecsSinceEpoch() - beganAt) / 1000; }

    /// The moment at which the recording began, in ms since 1970.
    qint64 began() const { return beganAt; }

    /// How many streams of sound the server has.
    qsizetype streamCount()
    {
        return control({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")})
            .count('\n');
    }

private:
    QByteArray control(const QStringList &command) const
    {
        QProcess pactl;
        pactl.setProcessEnvironment(daemon.processEnvironment());
        pactl.start(QStringLiteral("pactl"), command);
        pactl.waitForFinished();
        return pactl.readAllStandardOutput();
    }

    QString socket() const { return folder.filePath(QStringLiteral("socket")); }

    // The promptest arrival of all tells best when the first sample was played.
    void takeIn()
    {
        const QByteArray bytes = recorder.readAllStandardOutput();
        const auto *samples = reinterpret_cast<const qint16 *>(bytes.constData());
        recording.samples.insert(recording.samples.end(), samples, samples + bytes.size() / 2);
        const auto length = qint64(recording.length() * 1000);
        beganAt = std::min(beganAt, QDateTime::currentMSecsSinceEpoch() - length);
    }

    QTemporaryDir folder;
    QProcess daemon;
    QProcess recorder;
    SoundRecording recording;
    qint64 beganAt = 0;
    bool wasFrozen = false;
};
