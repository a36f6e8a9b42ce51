// What it takes to begin a playback. Needs the ffmpeg program; the last one also needs a sound server, the
// user's own or that of PULSE_SERVER, with nothing else playing on it, and parec.

#include "platform/SoundPlayer.h"
#include "platform/SoundServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

// A file of a tone, made once.
QString tone(const QString &name, int seconds)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(name);
    if (!QFile::exists(path))
        QProcess::execute(u"ffmpeg"_s,
                          {u"-v"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                           u"sine=frequency=1000:sample_rate=44100:duration=%1"_s.arg(seconds), path});
    return path;
}

std::unique_ptr<SoundPlayer> player(const QString &path, const std::shared_ptr<SoundServer> &server)
{
    QString error;
    auto made = SoundPlayer::create(path, server, error);
    if (!made)
        qFatal("%s: %s", qUtf8Printable(path), qUtf8Printable(error));
    return made;
}

void createForAnHour(benchmark::State &state)
{
    const QString path = tone(u"hour.mp3"_s, 3600);
    const auto server = std::make_shared<SoundServer>();
    for (auto _ : state)
        benchmark::DoNotOptimize(player(path, server));
}
BENCHMARK(createForAnHour)->Unit(benchmark::kMillisecond);

void playAnHour(benchmark::State &state)
{
    const QString path = tone(u"hour.mp3"_s, 3600);
    const auto server = std::make_shared<SoundServer>();
    for (auto _ : state) {
        state.PauseTiming();
        const auto sound = player(path, server);
        state.ResumeTiming();
        sound->play();
    }
}
BENCHMARK(playAnHour)->Unit(benchmark::kMillisecond)->Iterations(50);

// From play() until a recorder of the loudspeaker has the first sample: its own delay is in it.
void playUntilHeard(benchmark::State &state)
{
    const bool isConnected = state.range(0) != 0;
    const QString path = tone(u"click.wav"_s, 1);
    QProcess recorder;
    recorder.start(u"parec"_s,
                   {u"--raw"_s, u"--device=@DEFAULT_MONITOR@"_s, u"--format=s16le"_s, u"--latency-msec=5"_s});
    bool isLoud = false;
    QObject::connect(&recorder, &QProcess::readyReadStandardOutput, &recorder, [&]() {
        const QByteArray bytes = recorder.readAllStandardOutput();
        const auto *samples = reinterpret_cast<const qint16 *>(bytes.constData());
        isLoud = std::any_of(samples, samples + bytes.size() / 2,
                             [](qint16 sample) { return std::abs(sample) > 50; });
    });
    const auto waitUntil = [](const auto &condition, int atLeast) {
        QElapsedTimer timer;
        timer.start();
        while ((!condition() || timer.elapsed() < atLeast) && timer.elapsed() < 3000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    };
    auto server = std::make_shared<SoundServer>();
    player(path, server)->play();
    for (auto _ : state) {
        if (!isConnected)
            server = std::make_shared<SoundServer>();
        waitUntil([&]() { return !isLoud; }, 300 + std::rand() % 100);
        const auto sound = player(path, server);
        QElapsedTimer timer;
        timer.start();
        sound->play();
        waitUntil([&]() { return isLoud; }, 0);
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
    }
    recorder.kill();
    recorder.waitForFinished();
}
BENCHMARK(playUntilHeard)
    ->ArgName("connected")
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(30)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
