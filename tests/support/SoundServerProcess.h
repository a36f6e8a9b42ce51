#pragma once

#include "support/SoundRecording.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>
#include <limits>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

/// A sound server for tests, PulseAudio or (BELFRY_TEST_SOUND_SERVER=PipeWire) PipeWire, without hardware.
/// What its sink "ear" plays is recorded while the event loop runs.
///
/// It keeps its address, so that it can be killed and started again.
class SoundServerProcess final
{
    Q_DISABLE_COPY_MOVE(SoundServerProcess)

public:
    const bool isPipeWire = qgetenv("BELFRY_TEST_SOUND_SERVER") == "PipeWire";

    SoundServerProcess()
    {
        QObject::connect(&recorder, &QProcess::readyReadStandardOutput, &recorder, [this] { takeIn(); });
        environment.insert(u"PULSE_SERVER"_s, QFile::decodeName(address()));
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
        for (const char *name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME"})
            environment.insert(QString::fromLatin1(name), folder.path());
        // A sanitizer or a faked clock is for the program under test.
        environment.remove(u"LD_PRELOAD"_s);
        if (isPipeWire)
            configurePipeWire();
    }

    ~SoundServerProcess() { kill(); }

    /// For PULSE_SERVER.
    QByteArray address() const { return "unix:" + QFile::encodeName(path("pulse/native")); }

    /// Restarts the server and the recording, and returns whether both run.
    bool start()
    {
        kill();
        const QString listSinks = u"pactl list short sinks"_s;
        if (!isPipeWire) {
            // Without `norewinds` an idle sink plays in blocks of two seconds.
            const QString command = QStringLiteral(
                "pulseaudio -n --daemonize=no --use-pid-file=no --exit-idle-time=-1 --high-priority=no "
                "--realtime=no -L \"module-native-protocol-unix auth-anonymous=1 socket=%1\" "
                "-L \"module-null-sink sink_name=ear rate=48000 norewinds=1\"");
            return run(daemons[0], command.arg(path("pulse/native")), listSinks, "ear") && record();
        }
        // wireplumber connects streams with sinks. A stream that is there before the sink has its ports may
        // stay silent.
        launch(daemons[0], u"pipewire"_s);
        return run(daemons[1], u"wireplumber"_s, u"pw-link --input"_s, "ear:playback_FL") &&
               run(daemons[2], u"pipewire-pulse"_s, listSinks, "ear") && record();
    }

    /// Ends the server and the recorder, as a crash would.
    void kill()
    {
        for (QProcess *process : {&recorder, &daemons[0], &daemons[1], &daemons[2]}) {
            process->kill();
            process->waitForFinished();
        }
    }

    /// What `pactl` prints for a command to the server, such as "suspend-sink ear 1".
    QByteArray control(const QString &command) const { return output(u"pactl "_s + command); }

    /// Begins a new recording, and returns whether it has begun.
    bool record()
    {
        recorder.kill();
        recorder.waitForFinished();
        recording.samples.clear();
        beganAt = std::numeric_limits<qint64>::max();
        launch(recorder,
               QStringLiteral("parec --raw --device=ear.monitor --format=s16le --rate=48000 --channels=1 "
                              "--latency-msec=10"));
        return QTest::qWaitFor([this] { return !recording.samples.empty(); }, 10000);
    }

    /// Sends a signal to the server: SIGSTOP holds it up, as a deadlock would, until SIGCONT.
    void signal(int number) const
    {
        for (const QProcess &daemon : daemons) {
            if (daemon.state() == QProcess::Running)
                ::kill(pid_t(daemon.processId()), number);
        }
    }

    /// Waits until everything that has been played by now is recorded, and returns the recording from the
    /// moment `from` on.
    SoundRecording heard(double from = 0)
    {
        const double now = seconds();
        if (!QTest::qWaitFor([&] { return recording.length() > now; }, 10000))
            qWarning("The recorder does not go on.");
        const auto first =
            std::min(size_t(std::max(0.0, from) * SoundRecording::rate), recording.samples.size());
        return {{recording.samples.begin() + qsizetype(first), recording.samples.end()}};
    }

    /// The current time, in seconds of the recording.
    double seconds() const { return double(QDateTime::currentMSecsSinceEpoch() - beganAt) / 1000; }

    /// When the recording began, in ms since 1970.
    qint64 began() const { return beganAt; }

private:
    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }

    void launch(QProcess &process, const QString &command) const
    {
        process.setProcessEnvironment(environment);
        process.setChildProcessModifier(
            [] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }); // also when a test crashes
        process.setStandardErrorFile(QProcess::nullDevice());
        process.startCommand(command);
    }

    QByteArray output(const QString &command) const
    {
        QProcess process;
        launch(process, command);
        process.waitForFinished();
        return process.readAllStandardOutput().trimmed();
    }

    // Launches a daemon, and waits until `probe` prints `sign`.
    bool run(QProcess &daemon, const QString &command, const QString &probe, const QByteArray &sign) const
    {
        const auto isUp = [&] {
            // PipeWire's others end when nobody listens at its socket yet.
            if (daemon.state() == QProcess::NotRunning)
                launch(daemon, command);
            return output(probe).contains(sign);
        };
        return QTest::qWaitFor(isUp, 10000);
    }

    // Real-time scheduling may be missing: long cycles, which a busy machine does not miss. No real devices,
    // and nothing of the desktop, for wireplumber 0.4 and 0.5.
    void configurePipeWire() const
    {
        const std::pair<const char *, const char *> files[] = {
            {"pipewire/pipewire.conf.d/test.conf",
             "context.properties = { default.clock.quantum = 4096 default.clock.min-quantum = 4096 "
             "default.clock.max-quantum = 4096 } "
             "context.objects = [ { factory = adapter args = { factory.name = support.null-audio-sink "
             "node.name = ear media.class = Audio/Sink audio.position = [ FL FR ] } } ]"},
            {"wireplumber/main.lua.d/60-none.lua",
             "alsa_monitor.enabled = false v4l2_monitor.enabled = false libcamera_monitor.enabled = false "
             "default_access.properties[\"enable-flatpak-portal\"] = false"},
            {"wireplumber/bluetooth.lua.d/60-none.lua", "bluez_monitor.enabled = false"},
            {"wireplumber/wireplumber.conf.d/none.conf",
             "wireplumber.profiles = { main = { hardware.audio = disabled hardware.bluetooth = disabled "
             "hardware.video-capture = disabled support.portal-permissionstore = disabled } }"}};
        for (const auto &[name, text] : files) {
            QFile file(path(name));
            if (!QDir().mkpath(QFileInfo(file).path()) || !file.open(QIODevice::WriteOnly) ||
                file.write(text) < 0)
                qFatal("cannot configure PipeWire");
        }
    }

    // The earliest arrival tells best when the first sample was played.
    void takeIn()
    {
        const QByteArray bytes = recorder.readAllStandardOutput();
        const auto *samples = reinterpret_cast<const qint16 *>(bytes.constData());
        recording.samples.insert(recording.samples.end(), samples, samples + bytes.size() / 2);
        const auto length = qint64(recording.length() * 1000);
        beganAt = std::min(beganAt, QDateTime::currentMSecsSinceEpoch() - length);
    }

    const QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    std::array<QProcess, 3> daemons;
    QProcess recorder;
    SoundRecording recording;
    qint64 beganAt = 0;
};
