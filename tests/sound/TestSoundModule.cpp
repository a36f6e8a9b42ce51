#include "platform/SoundModule.h"

#include "support/LogCapture.h"
#include "support/SoundFiles.h"
#include "support/SoundServerProcess.h"
#include "support/Table.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QThread>

#include <netdb.h>
#include <optional>

using namespace Qt::StringLiterals;

// The name service for this program: it does not answer until it is released.
static QSemaphore nameService;
extern "C" Q_DECL_EXPORT int getaddrinfo(const char *, const char *, const addrinfo *, addrinfo **)
{
    return nameService.tryAcquire(1, 20'000) ? EAI_NONAME : EAI_AGAIN;
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

    void loadModule(const QByteArray &address)
    {
        QString error;
        qputenv("PULSE_SERVER", address);
        module.emplace(SoundModule::pathOfApplication());
        QVERIFY2(module->load(error), qPrintable(error));
    }

    std::unique_ptr<AVAudioPlayer> playing(const char *name, int loops = 0)
    {
        QString error;
        auto player = module->makePlayer(path(name), error);
        player->setNumberOfLoops(loops);
        player->play();
        return player;
    }

    bool waitUntilHeard()
    {
        const auto isHeard = [this] { return !server.heard(server.seconds() - 0.1).sounds().empty(); };
        return QTest::qWaitFor(isHeard, 15'000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QList<SoundFiles::Recipe> files;
        for (const auto &[name, seconds] :
             {std::pair("click", 0.03), {"half", 0.5}, {"two", 2}, {"long", 30}})
            files += {path(name), SoundFiles::tone(u"1000"_s, seconds), {u"-f"_s, u"wav"_s}};
        QVERIFY(SoundFiles::make(files));
    }

    void init()
    {
        QVERIFY(server.start());
        log.emplace();
        loadModule(server.address());
    }

    void cleanup()
    {
        module.reset();
        const QStringList unexpected = log->takeLines();
        log.reset();
        QCOMPARE(unexpected, QStringList());
    }

    void missingModule_isReported()
    {
        SoundModule missing(path("none.so"));
        QString error;
        QVERIFY(!missing.load(error) && error.contains(u"none.so"_s));
        QVERIFY(!missing.makePlayer(path("half"), error));
    }

    void file_isHeardFromItsFirstFrameToItsLastThoughDeleted_data()
    {
        columns<QByteArray, int, double, int>("name", "loops", "length", "heldMs");
        QTest::newRow("shorter than any buffer") << QByteArray("click") << 0 << 0.03 << 0;
        QTest::newRow("while the main thread is held") << QByteArray("two") << 0 << 2.0 << 1500;
        if (!server.isPipeWire) // which misses a cycle now and then
            QTest::newRow("repeated, in a small buffer") << QByteArray("half") << 2 << 1.5 << 0;
    }

    void file_isHeardFromItsFirstFrameToItsLastThoughDeleted()
    {
        QFETCH(const QByteArray, name);
        QFETCH(const int, loops);
        QFETCH(const double, length);
        QFETCH(const int, heldMs);
        QVERIFY(QFile::copy(path(name.constData()), path("bell")));
        // The recorder may date the beginning up to 50 ms too early: the sink mixes so much in advance.
        const double start = server.seconds();
        QTest::qWait(50);
        qputenv("PULSE_LATENCY_MSEC", "800"); // the module ignores it,
        loadModule(server.address());
        if (loops > 0)
            qputenv("PULSE_LATENCY_MSEC", "800"); // but a server may grant so much.
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
        if (loops > 0)
            QCOMPARE_LT(recording.unevenness(sounds[0].start + 0.01, sounds[0].end - 0.01, 48), 300);
    }

    void stop_isImmediate()
    {
        const double start = server.seconds();
        const auto player = playing("long");
        QTRY_VERIFY(player->currentTime() > 0.5);
        player->stop();
        const double stop = server.seconds() - start;
        QThread::msleep(400);
        const auto sounds = server.heard(start).sounds();
        QCOMPARE(sounds.size(), 1);
        QCOMPARE_LT(sounds[0].end, stop + 0.2);
    }

    void manyQuickStarts_leaveNothingBehind()
    {
        auto player = playing("long");
        for (int i = 0; i < 40; ++i) {
            player = playing("long");
            QTest::qWait(i % 5);
        }
        const auto streams = [this] { return server.control(u"list short sink-inputs"_s).count("s16le"); };
        QTRY_COMPARE(streams(), 1);
        player->stop();
        QTRY_COMPARE(streams(), 0);
    }

    // The first row lasts longer than libpulse waits for a name.
    void withoutServer_timeRunsInSilence_data()
    {
        columns<QByteArray, int>("address", "seconds");
        QTest::newRow("silent name service") << QByteArray("tcp:bell.example") << 6;
        QTest::newRow("none") << QByteArray("unix:/nonexistent") << 1;
    }

    void withoutServer_timeRunsInSilence()
    {
        QFETCH(const QByteArray, address);
        QFETCH(const int, seconds);
        loadModule(address);
        QElapsedTimer timer;
        timer.start();
        const auto player = playing("long");
        player->setCurrentTime(30 - seconds);
        QTRY_VERIFY_WITH_TIMEOUT(!player->isPlaying(), 12'000);
        QVERIFY(timer.elapsed() >= seconds * 1000);
        const QStringList lines = log->takeLines();
        QVERIFY(lines.size() == 1 && lines[0].startsWith(u"No sound server"_s));
        module.reset();
        QVERIFY(timer.elapsed() < 15'000);
        nameService.release();
    }

    void disturbedServer_isHeardAgain_data()
    {
        columns<Action, Action, bool, int>("disturb", "restore", "isAtStart", "lines");
        const Action kill = [this] { server.kill(); };
        const Action start = [this] { server.start(); };
        const Action freeze = [this] { server.signal(SIGSTOP); };
        const Action thaw = [this] { server.signal(SIGCONT); };
        const Action suspend = [this] { server.suspend(true); };
        const Action resume = [this] { server.suspend(false); };
        QTest::newRow("killed") << kill << start << false << 2;
        QTest::newRow("frozen") << freeze << thaw << false << 2;
        QTest::newRow("frozen before its first use") << freeze << thaw << true << 2;
        QTest::newRow("sink asleep") << suspend << resume << false << 0;
        if (!server.isPipeWire) // which wakes it
            QTest::newRow("sink asleep at the start") << suspend << resume << true << 0;
    }

    void disturbedServer_isHeardAgain()
    {
        QFETCH(const Action, disturb);
        QFETCH(const Action, restore);
        QFETCH(const bool, isAtStart);
        QFETCH(const int, lines);
        if (isAtStart)
            disturb();
        QElapsedTimer timer;
        timer.start();
        const auto player = playing("long");
        if (!isAtStart) {
            QVERIFY(waitUntilHeard());
            disturb();
        }
        QTest::qWait(4000);
        QCOMPARE(log->lines().size(), lines / 2);
        const bool isWaiting = isAtStart && lines == 0;
        QCOMPARE_LT(std::abs(player->currentTime() - (isWaiting ? 0 : double(timer.elapsed()) / 1000)), 1.0);
        restore();
        QTRY_COMPARE(log->lines().size(), lines);
        QVERIFY(waitUntilHeard());
        QVERIFY(log->takeLines().mid(1) == QStringList(lines / 2, u"Sound server is back"_s));
    }

    void movedSound_isHeardAgainWhenItsSinkIsRemoved()
    {
        const auto player = playing("long");
        QVERIFY(waitUntilHeard());
        const QByteArray sink = server.addSink(u"other"_s);
        const QByteArray stream = server.control(u"list short sink-inputs"_s).split('\t').front();
        server.control(u"move-sink-input %1 other"_s.arg(QString::fromLatin1(stream)));
        QTest::qWait(500);
        server.control(u"unload-module "_s + QString::fromLatin1(sink));
        QVERIFY(waitUntilHeard());
    }
};

QTEST_GUILESS_MAIN(TestSoundModule)
#include "TestSoundModule.moc"
