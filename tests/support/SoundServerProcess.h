#pragma once

#include "support/SoundRecording.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>
#include <limits>

/// A sound server of a test's own, PulseAudio or PipeWire without hardware, and a recorder of everything that
/// its sink "ear" plays.
///
/// It keeps its address, so that it can be killed and started again. The recording comes in by the event
/// loop.
class SoundServerProcess final
{
    Q_DISABLE_COPY_MOVE(SoundServerProcess)

public:
    SoundServerProcess()
    {
        QObject::connect(&recorder, &QProcess::readyReadStandardOutput, &recorder, [this]() { takeIn(); });
        QDir(folder.path()).mkdir(QStringLiteral("pulse"));
        if (isPipeWire)
            configurePipeWire();
    }

    ~SoundServerProcess() { kill(); }

    /// For PULSE_SERVER.
    QByteArray address() const { return "unix:" + QFile::encodeName(socket()); }

    /// Has a server run that has never been held up. False when that does not work.
    bool ensureHealthy() { return (daemons[0].state() == QProcess::Running && !wasFrozen) || start(); }

    /// Restarts the server and the recorder, and returns whether both run. The recording starts again.
    bool start()
    {
        kill();
        QFile::remove(socket());
        QFile::remove(path("pipewire-0"));
        wasFrozen = false;
        recording.samples.clear();
        beganAt = std::numeric_limits<qint64>::max();
        if (!(isPipeWire ? startPipeWire() : startPulseAudio()))
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
        recorder.setProcessEnvironment(environment());
        return QTest::qWaitFor(isRecording, 10000);
    }

    /// Ends the server and the recorder, as a crash would.
    void kill()
    {
        recorder.kill();
        recorder.waitForFinished();
        for (QProcess &daemon : daemons) {
            daemon.kill();
            daemon.waitForFinished();
        }
    }

    /// What `pactl` prints for a command to the server, such as "suspend-sink ear 1"; without the last
    /// newline.
    QByteArray control(const QString &command) const
    {
        QProcess pactl;
        pactl.setProcessEnvironment(environment());
        pactl.start(QStringLiteral("pactl"), command.split(u' '));
        pactl.waitForFinished();
        return pactl.readAllStandardOutput().trimmed();
    }

    /// Holds the server still, as a deadlock would; it does not answer until thaw().
    void freeze()
    {
        wasFrozen = true;
        signal(SIGSTOP);
    }

    void thaw() { signal(SIGCONT); }

    /// Has the sink of the server stop playing, or go on, as one that sleeps. Nothing more is recorded.
    void suspend(bool isSuspended)
    {
        wasFrozen = true;
        control(QStringLiteral("suspend-sink ear %1").arg(int(isSuspended)));
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
    qsizetype streamCount() const
    {
        const QByteArray list = control(QStringLiteral("list short sink-inputs"));
        return list.isEmpty() ? 0 : list.count('\n') + 1;
    }

private:
    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
    QString socket() const { return path("pulse/native"); }

    QProcessEnvironment environment() const
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME"})
            environment.insert(QString::fromLatin1(name), folder.path());
        environment.insert(QStringLiteral("PULSE_SERVER"), QFile::decodeName(address()));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=/nonexistent"));
        // A sanitizer or a faked clock is for the program under test.
        environment.remove(QStringLiteral("LD_PRELOAD"));
        return environment;
    }

    // Starts one program of the server.
    void run(QProcess &daemon, const char *program, const QStringList &arguments = {}) const
    {
        daemon.setProcessEnvironment(environment());
        daemon.setStandardErrorFile(path(program) + QStringLiteral(".log"));
        daemon.start(QString::fromLatin1(program), arguments);
    }

    static bool waitFor(const QString &socket)
    {
        return QTest::qWaitFor([&]() { return QFile::exists(socket); }, 10000);
    }

    bool startPulseAudio()
    {
        run(daemons[0], "pulseaudio",
            {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--use-pid-file=no"),
             QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--high-priority=no"),
             QStringLiteral("--realtime=no"), QStringLiteral("-L"),
             QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=") + socket(),
             QStringLiteral("-L"),
             QStringLiteral("module-null-sink sink_name=ear rate=48000 channels=2 norewinds=1")});
        return waitFor(socket());
    }

    // wireplumber connects streams with sinks; one that is there before the sink has its ports may stay
    // silent.
    bool startPipeWire()
    {
        run(daemons[0], "pipewire");
        if (!waitFor(path("pipewire-0")))
            return false;
        const auto hasPorts = [this] {
            // It ends when nobody listens at the socket yet.
            if (daemons[1].state() == QProcess::NotRunning)
                run(daemons[1], "wireplumber");
            QProcess ports;
            ports.setProcessEnvironment(environment());
            ports.start(QStringLiteral("pw-link"), {QStringLiteral("--input")});
            ports.waitForFinished();
            return ports.readAllStandardOutput().contains("ear:playback_FL");
        };
        if (!QTest::qWaitFor(hasPorts, 10000))
            return false;
        run(daemons[2], "pipewire-pulse");
        return waitFor(socket());
    }

    // Gives PipeWire the sink, and keeps its session manager (0.4, 0.5) from real devices and from the
    // desktop.
    void configurePipeWire() const
    {
        const auto write = [this](const char *name, const char *text) {
            QDir(folder.path()).mkpath(QFileInfo(path(name)).path());
            QFile file(path(name));
            if (!file.open(QIODevice::WriteOnly) || file.write(text) < 0)
                qFatal("cannot configure PipeWire");
        };
        // Without real-time priority a busy machine misses short cycles.
        write("pipewire/pipewire.conf.d/sink.conf",
              "context.properties = { default.clock.quantum = 4096 default.clock.min-quantum = 4096 "
              "default.clock.max-quantum = 4096 } "
              "context.objects = [ { factory = adapter args = { factory.name = support.null-audio-sink "
              "node.name = ear media.class = Audio/Sink audio.position = [ FL FR ] } } ]");
        write("wireplumber/main.lua.d/60-none.lua",
              "alsa_monitor.enabled = false v4l2_monitor.enabled = false libcamera_monitor.enabled = false "
              "default_access.properties[\"enable-flatpak-portal\"] = false");
        write("wireplumber/bluetooth.lua.d/60-none.lua", "bluez_monitor.enabled = false");
        write("wireplumber/wireplumber.conf.d/none.conf",
              "wireplumber.profiles = { main = { hardware.audio = disabled hardware.bluetooth = disabled "
              "hardware.video-capture = disabled support.portal-permissionstore = disabled } }");
    }

    void signal(int number)
    {
        for (const QProcess &daemon : daemons) {
            if (daemon.state() == QProcess::Running)
                ::kill(pid_t(daemon.processId()), number);
        }
    }

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
    const bool isPipeWire = qgetenv("BELFRY_TEST_SOUND_SERVER") == "PipeWire";
    std::array<QProcess, 3> daemons;
    QProcess recorder;
    SoundRecording recording;
    qint64 beganAt = 0;
    bool wasFrozen = false;
};
