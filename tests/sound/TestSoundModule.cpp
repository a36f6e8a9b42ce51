#include "platform/SoundModule.h"

#include "support/LogCapture.h"
#include "support/SoundFiles.h"
#include "support/SoundServerProcess.h"
#include "support/SteadyClock.h"
#include "support/Table.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QThread>

#include <atomic>
#include <netdb.h>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// The name service for this program: it knows no name, and does not answer until it is released.
static QSemaphore nameService;
static std::atomic<int> lookups, timeouts;
extern "C" Q_DECL_EXPORT int getaddrinfo(const char *, const char *, const addrinfo *, addrinfo **)
{
    ++lookups;
    timeouts += !nameService.tryAcquire(1, 20'000);
    return EAI_NONAME;
}

using Action = std::function<void()>;

/// The sound as the program has it: the module, and a real sound server.
class TestSoundModule final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    SoundServerProcess server;
    std::optional<SoundModule> module;
    std::optional<LogCapture> log;

    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }

    void useServer(const QByteArray &address)
    {
        qputenv("PULSE_SERVER", address);
        module.emplace(SoundModule::pathOfApplication());
    }

    std::unique_ptr<AVAudioPlayer> playing(const char *name, int loops = 0)
    {
        QString error;
        auto player = module->makePlayer(path(name), error);
        player->setNumberOfLoops(loops);
        player->play();
        return player;
    }

    bool isHeard() { return !server.heard(server.seconds() - 0.1).sounds().empty(); }
    bool waitUntilHeard()
    {
        return QTest::qWaitFor([this] { return isHeard(); }, 15'000);
    }

    // Time passes ten times as fast on the steady clock.
    static void pass(int seconds)
    {
        QElapsedTimer timer;
        for (timer.start(); timer.elapsed() < seconds * 1000; QTest::qWait(10))
            skipped += 90ms;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QList<SoundFiles::Recipe> files;
        for (const auto &[name, seconds] :
             {std::pair("click.wav", 0.03), {"half.wav", 0.5}, {"held.wav", 2}, {"long.wav", 30}})
            files += {path(name), SoundFiles::tone(u"1000"_s, seconds)};
        QVERIFY(SoundFiles::make(files) && server.start());
    }

    void init()
    {
        log.emplace();
        useServer(server.address());
    }

    void cleanup()
    {
        module.reset();
        const QStringList unexpected = log->takeLines();
        log.reset();
        if (QTest::currentTestFailed())
            server.start();
        QVERIFY2(unexpected.isEmpty(), qPrintable(unexpected.join(u'\n')));
        QTRY_VERIFY(!isHeard());
    }

    void missingModule_isReported()
    {
        SoundModule missing(path("none.so"));
        QString error;
        QVERIFY(!missing.load(error) && error.contains(u"none.so"_s));
        QVERIFY(!missing.makePlayer(path("half.wav"), error));
    }

    void file_isHeardFromItsFirstFrameToItsLastThoughDeleted_data()
    {
        columns<int, double, int>("loops", "length", "heldMs");
        QTest::newRow("click.wav") << 0 << 0.03 << 0; // shorter than any buffer
        QTest::newRow("held.wav") << 0 << 2.0 << 1500;
        if (!server.isPipeWire)                         // which misses a cycle now and then
            QTest::newRow("half.wav") << 2 << 1.5 << 0; // in a small buffer
    }

    void file_isHeardFromItsFirstFrameToItsLastThoughDeleted()
    {
        QFETCH(const int, loops);
        QFETCH(const double, length);
        QFETCH(const int, heldMs);
        QVERIFY(QFile::copy(path(QTest::currentDataTag()), path("bell")));
        // The recorder may date the beginning up to 50 ms too early: the sink mixes so much in advance.
        const double start = server.seconds();
        QTest::qWait(50);
        qputenv("PULSE_LATENCY_MSEC", "800"); // The module ignores it,
        QString error;
        QVERIFY2(module->load(error), qPrintable(error));
        if (heldMs == 0)
            qputenv("PULSE_LATENCY_MSEC",
                    "800"); // but a server may grant so much, and wait until it is full.
        const auto player = playing("bell", loops);
        QVERIFY(player->isPlaying() && QFile::remove(path("bell")));
        QTRY_VERIFY(player->currentTime() > 0 || !player->isPlaying());
        QThread::msleep(heldMs);
        QTRY_VERIFY(!player->isPlaying());
        const SoundRecording recording = server.heard(start);
        const auto sounds = recording.sounds();
        QCOMPARE(sounds.size(), 1);
        // PipeWire cuts a cycle now and then when it has just started.
        QCOMPARE_LT(std::abs(sounds[0].length() - length), server.isPipeWire ? 0.09 : 0.005);
        QCOMPARE_LT(sounds[0].start, 2.0);
        if (!server.isPipeWire)
            QCOMPARE_LT(recording.unevenness(sounds[0].start + 0.01, sounds[0].end - 0.01, 48), 300);
    }

    void quickStarts_leaveOneStream_whichStopsAtOnce()
    {
        auto player = playing("long.wav");
        for (int i = 0; i < 40; ++i) {
            player = playing("long.wav");
            QTest::qWait(i % 5);
        }
        const auto streams = [this] { return server.control(u"list short sink-inputs"_s).count("s16le"); };
        QTRY_COMPARE(streams(), 1);
        QVERIFY(waitUntilHeard() && player->currentTime() < 5); // not when the buffer is full
        player->stop();
        const double stop = server.seconds();
        QThread::msleep(400);
        QVERIFY(server.heard(stop + 0.2).sounds().empty());
        QCOMPARE(streams(), 0);
        QVERIFY(server.start() && log->lines().isEmpty()); // A restart between two bells bothers nobody.
        QVERIFY(player->play() && waitUntilHeard());
        log->takeLines(); // PipeWire may end the first connection.
    }

    void withoutServer_timeRunsInSilence()
    {
        useServer("tcp:bell.example");
        auto player = playing("long.wav");
        pass(6); // longer than libpulse waits for a name
        QCOMPARE_LT(std::abs(player->currentTime() - 6), 0.5);
        QCOMPARE(log->takeLines(),
                 {u"No sound server (its name is not resolved); playback continues silently"_s});
        QCOMPARE(int(lookups), 1);
        nameService.release(100);
        pass(8); // with a try every two seconds
        QVERIFY(lookups > 3 && lookups < 8);
        player->setCurrentTime(29);
        pass(3);
        QVERIFY(!player->isPlaying() && player->play());
        player->stop();
        pass(1);
        const int before = lookups;
        pass(4);
        QCOMPARE(int(lookups), before);

        QVERIFY(nameService.tryAcquire(nameService.available()));
        QVERIFY(player->play());
        QTRY_VERIFY(lookups > before);
        player.reset();
        module.reset(); // does not wait
        QCOMPARE(int(timeouts), 0);

        nameService.release(100);
        useServer("tcp:bell.example");
        lookups = 0;
        player = playing("long.wav");
        pass(1); // The second try comes sooner.
        QTRY_COMPARE_WITH_TIMEOUT(int(lookups), 2, 500);
        log->takeLines();
    }

    void disturbedServer_isHeardAgain_data()
    {
        columns<Action, Action, bool, int>("disturb", "restore", "isAtStart", "lines");
        const Action kill = [this] { server.kill(); };
        const Action start = [this] { server.start(); };
        const Action freeze = [this] { server.signal(SIGSTOP); };
        const Action thaw = [this] { server.signal(SIGCONT); };
        const Action suspend = [this] { server.control(u"suspend-sink ear 1"_s); };
        const Action resume = [this] {
            server.control(u"suspend-sink ear 0"_s);
            server.record();
        };
        QTest::newRow("killed") << kill << start << false << 2;
        QTest::newRow("frozen") << freeze << thaw << false << 2;
        QTest::newRow("frozen before its first use") << freeze << thaw << true << 2;
        if (server.isPipeWire) // which wakes a sink, and holds a stream until there is one
            return;
        QTest::newRow("sink asleep") << suspend << resume << false << 0;
        QTest::newRow("sink asleep at the start") << suspend << resume << true << 0;
        const Action removeSink = [this] { server.control(u"unload-module module-null-sink"_s); };
        QTest::newRow("sink removed") << removeSink << start << false << 2;
    }

    void disturbedServer_isHeardAgain()
    {
        QFETCH(const Action, disturb);
        QFETCH(const Action, restore);
        QFETCH(const bool, isAtStart);
        QFETCH(const int, lines);
        if (isAtStart)
            disturb();
        const auto player = playing("long.wav");
        if (!isAtStart) {
            QVERIFY(waitUntilHeard());
            QTRY_VERIFY(player->currentTime() > 0);
            disturb();
        }
        const double before = player->currentTime();
        pass(4);
        QCOMPARE(log->lines().size(), lines / 2);
        const bool isWaiting = isAtStart && lines == 0;
        QCOMPARE_LT(std::abs(player->currentTime() - before - (isWaiting ? 0 : 4)), 1.0);
        restore();
        pass(2);
        QVERIFY(waitUntilHeard());
        QTRY_COMPARE(log->lines().size(), lines);
        QVERIFY(log->takeLines().mid(1) == QStringList(lines / 2, u"Sound server is back"_s));
    }

    void movedSound_isHeardAgainWhenItsSinkIsRemoved()
    {
        const auto player = playing("long.wav");
        QVERIFY(waitUntilHeard());
        const QByteArray sink = server.control(u"load-module module-null-sink sink_name=other rate=48000"_s);
        const QByteArray stream = server.control(u"list short sink-inputs"_s).split('\t').front();
        const QByteArray properties = server.control(u"list sink-inputs"_s);
        QVERIFY(properties.contains("media.role = \"alarm\"") && properties.contains("icon_name"));
        const auto isMoved = [&] { // PipeWire overlooks it now and then.
            server.control(u"move-sink-input %1 other"_s.arg(QString::fromLatin1(stream)));
            return !isHeard();
        };
        QVERIFY(QTest::qWaitFor(isMoved, 15'000));
        if (!server.isPipeWire) // The device buffers one request, not the whole stream.
            QVERIFY(server.control(u"list sinks"_s).contains("configured 100000 usec"));
        server.control(u"unload-module "_s + QString::fromLatin1(sink));
        QVERIFY(waitUntilHeard());
    }
};

QTEST_GUILESS_MAIN(TestSoundModule)
#include "TestSoundModule.moc"
