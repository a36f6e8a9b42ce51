#include "sound/SoundPlayer.h"

#include "sound/SoundServer.h"
#include "sound/SoundStream.h"
#include "support/LogCapture.h"
#include "support/SoundFiles.h"
#include "support/SoundServerProcess.h"
#include "support/Table.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <limits>
#include <malloc.h>
#include <netdb.h>
#include <optional>

#ifdef __SANITIZE_ADDRESS__
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

using namespace Qt::StringLiterals;

// The name service for this program: it does not answer until it is released.
static QSemaphore nameService;
extern "C" Q_DECL_EXPORT int getaddrinfo(const char *, const char *, const addrinfo *, addrinfo **)
{
    return nameService.tryAcquire(1, 20'000) ? EAI_NONAME : EAI_AGAIN;
}

namespace {

class Finish final : public AVAudioPlayerDelegate
{
public:
    void audioPlayerDidFinishPlaying(AVAudioPlayer &, bool successfully) override
    {
        ++count;
        isSuccess = successfully;
    }

    int count = 0;
    bool isSuccess = false;
};

// Plays and takes nothing but what the test says.
class FakeOutput final : public AudioOutput
{
public:
    void open()
    {
        isReady = true;
        first.reset();
        Q_EMIT opened();
    }
    void play(qint64 frames) { Q_EMIT progressed(frames); }
    bool isConnected() const override { return isReady; }
    bool isOpen() const override { return isReady; }
    qint64 write(std::span<const SoundFrame> frames) override
    {
        const size_t count = isReady ? std::min(room, frames.size()) : 0;
        if (count > 0 && !first)
            first = frames[0];
        written += qint64(count);
        room -= count;
        return qint64(count);
    }
    void drain() override {}
    void requestTimingUpdate() override {}
    void finish() override {}
    void reopen() override {}

    bool isReady = false;
    size_t room = std::numeric_limits<size_t>::max();
    qint64 written = 0;
    std::optional<SoundFrame> first; // since it was opened
};

size_t allocatedBytes()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
#endif
}

} // namespace

class TestSoundPlayer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const auto tone = [this](const char *name, double seconds, int rate = 48000) {
            return SoundFiles::make(path(name), SoundFiles::tone(u"1000"_s, seconds, rate));
        };
        QVERIFY(tone("second.wav", 1) && tone("second.mp3", 1, 44100) && tone("half.wav", 0.5, 44100));
        QVERIFY(tone("click.wav", 0.03) && tone("three.wav", 3) && tone("long.wav", 30));
        // Each second is 3000 higher.
        QVERIFY(SoundFiles::make(path("ramp.wav"), u"aevalsrc=exprs='3000*t/32768':s=48000:d=10"_s));
        QVERIFY(server.start());
    }

    void init()
    {
        QVERIFY(server.ensureHealthy());
        log.emplace();
        finish = {};
        connection = std::make_shared<SoundServer>(server.address());
    }

    void cleanup()
    {
        connection.reset();
        qunsetenv("PULSE_LATENCY_MSEC");
        const QStringList unexpected = log->takeLines();
        log.reset();
        QCOMPARE(unexpected, QStringList());
    }

    void whatHasBeenPlayed_isReleased()
    {
        const auto sound = player("half.wav", true);
        sound->setNumberOfLoops(-1);
        QVERIFY(sound->play());
        fake->open();
        const size_t before = allocatedBytes();
        for (int played = 24000; played < 30 * 48000; played += 24000) {
            QTRY_VERIFY(fake->written > played + 48000);
            fake->play(played);
        }
        // Half a minute of sound has 5.7 MB.
        QVERIFY(allocatedBytes() < before + 3'000'000);
    }

    void device_isWaitedForAndFedWhenItAsks()
    {
        const auto sound = player("half.wav", true);
        QVERIFY(sound->play());
        fake->room = 1000;
        fake->open();
        QCOMPARE(fake->written, 1000);
        QTest::qWait(1000);
        QVERIFY(sound->isPlaying() && sound->currentTime() == 0);
        fake->room = 500;
        Q_EMIT fake->writable();
        QCOMPARE(fake->written, 1500);
        fake->play(100);
        QVERIFY(sound->currentTime() > 0);
        QTRY_COMPARE(finish.count, 1);
    }

    void outputThatComesLate_isInSync()
    {
        const auto sound = player("ramp.wav", true);
        sound->setCurrentTime(7);
        QVERIFY(sound->play());
        for (int time = 0; time < 2; ++time) {
            QTest::qWait(900);
            fake->open();
            QVERIFY(sound->currentTime() > 7.4);
            QVERIFY(std::abs(fake->first.value().left / 3000.0 - sound->currentTime()) < 0.1);
            fake->play(1);
        }
    }

    void file_isHeardFromItsFirstSampleToItsLastThoughDeleted_data()
    {
        columns<QByteArray, int, double, QByteArray>("name", "loops", "length", "latency");
        QTest::newRow("PCM") << QByteArray("second.wav") << 0 << 1.0 << QByteArray();
        QTest::newRow("MP3") << QByteArray("second.mp3") << 0 << 1.0 << QByteArray();
        QTest::newRow("shorter than any buffer") << QByteArray("click.wav") << 0 << 0.03 << QByteArray();
        QTest::newRow("repeated without a gap, in a small buffer")
            << QByteArray("half.wav") << 2 << 1.5 << QByteArray("450");
    }

    void file_isHeardFromItsFirstSampleToItsLastThoughDeleted()
    {
        QFETCH(const QByteArray, name);
        QFETCH(const int, loops);
        QFETCH(const double, length);
        QFETCH(const QByteArray, latency);
        if (!latency.isEmpty())
            qputenv("PULSE_LATENCY_MSEC", latency);
        QVERIFY(QFile::copy(path(name.constData()), path("bell")));
        const auto sound = player("bell");
        QVERIFY(std::abs(sound->duration() * (loops + 1) - length) < 0.05);
        sound->setNumberOfLoops(loops);
        const double start = listen();
        QVERIFY(sound->play());
        QVERIFY(sound->isPlaying());
        QVERIFY(QFile::remove(path("bell")));
        QTRY_COMPARE(finish.count, 1);
        QVERIFY(finish.isSuccess);
        QVERIFY(!sound->isPlaying());
        QCOMPARE(sound->currentTime(), 0.0);
        const SoundRecording recording = server.heard(start);
        const auto heard = onlySound(recording);
        QVERIFY2(std::abs(heard.length() - length) < 0.005, qPrintable(QString::number(heard.length())));
        QVERIFY2(heard.start < 2, qPrintable(QString::number(heard.start)));
        if (loops > 0)
            QVERIFY(recording.unevenness(heard.start + 0.01, heard.end - 0.01, 48) < 300);
    }

    void endOfTheSound_isImmediate()
    {
        for (const bool isStop : {true, false}) {
            auto sound = player("long.wav");
            const double start = server.seconds();
            QVERIFY(sound->play());
            QTRY_VERIFY(sound->currentTime() > 0.5);
            if (isStop) {
                sound->stop();
            } else {
                sound.reset();
                connection.reset();
            }
            const double stop = server.seconds() - start;
            QThread::msleep(400);
            const double ended = onlySound(server.heard(start)).end;
            QVERIFY2(ended < stop + 0.2, qPrintable(QString::number(ended - stop)));
            QCOMPARE(finish.count, 0);
        }
    }

    void heldMainThread_isNotHeard()
    {
        const auto sound = player("three.wav");
        const double start = listen();
        QVERIFY(sound->play());
        QTRY_VERIFY(sound->currentTime() > 0.2);
        QThread::msleep(2200);
        QVERIFY(std::abs(sound->currentTime() - 2.45) < 0.3);
        QTRY_COMPARE(finish.count, 1);
        const double length = onlySound(server.heard(start)).length();
        QVERIFY2(std::abs(length - 3) < 0.005, qPrintable(QString::number(length)));
    }

    void manyQuickStarts_leaveNothingBehind()
    {
        auto sound = player("long.wav");
        QVERIFY(sound->play());
        for (int i = 0; i < 40; ++i) {
            sound = player("long.wav");
            QVERIFY(sound->play());
            QTest::qWait(i % 5);
        }
        QTRY_COMPARE(server.streamCount(), 1);
        sound->stop();
        QTRY_COMPARE(server.streamCount(), 0);
    }

    // The last row lasts longer than libpulse waits for a name.
    void withoutServer_timeRunsInSilence_data()
    {
        columns<QByteArray, QByteArray, int>("address", "name", "length");
        QTest::newRow("none") << QByteArray("unix:/nonexistent") << QByteArray("second.wav") << 1000;
        QTest::newRow("silent name service")
            << QByteArray("tcp:bell.example") << QByteArray("long.wav") << 6000;
    }

    void withoutServer_timeRunsInSilence()
    {
        QFETCH(const QByteArray, address);
        QFETCH(const QByteArray, name);
        QFETCH(const int, length);
        connection = std::make_shared<SoundServer>(address);
        const auto sound = player(name.constData());
        sound->setCurrentTime(sound->duration() - length / 1000.0);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(sound->play());
        QTRY_COMPARE_WITH_TIMEOUT(finish.count, 1, 12'000);
        QVERIFY(timer.elapsed() >= length);
        QVERIFY(finish.isSuccess);
        const QStringList lines = log->takeLines();
        QVERIFY(lines.size() == 1 && lines[0].startsWith(u"No sound server"_s));
        connection.reset();
        QVERIFY(timer.elapsed() < 15'000);
        nameService.release();
    }

    void deviceThatDoesNotPlay_isNotDropped()
    {
        const auto sound = player("second.wav");
        server.suspend(true);
        QVERIFY(sound->play());
        QTest::qWait(4000);
        server.suspend(false);
        QTRY_COMPARE(finish.count, 1);
    }

    void serverThatComesBack_plays_data()
    {
        columns<bool, bool>("isFrozen", "isAtStart");
        QTest::newRow("after it was killed") << false << false;
        QTest::newRow("after it was frozen") << true << false;
        QTest::newRow("after it was frozen before its first use") << true << true;
    }

    void serverThatComesBack_plays()
    {
        QFETCH(const bool, isFrozen);
        QFETCH(const bool, isAtStart);
        const auto sound = player("long.wav");
        if (isAtStart)
            server.freeze();
        QElapsedTimer timer;
        timer.start();
        QVERIFY(sound->play());
        if (!isAtStart) {
            QVERIFY(waitUntil(true));
            isFrozen ? server.freeze() : server.kill();
        }
        QTRY_COMPARE_WITH_TIMEOUT(log->lines().size(), 1, 6000);
        if (isFrozen)
            server.thaw();
        else
            QVERIFY(server.start());
        QTRY_COMPARE_WITH_TIMEOUT(log->lines().size(), 2, 6000);
        QCOMPARE(log->takeLines()[1], u"Sound server is back"_s);
        QVERIFY(std::abs(sound->currentTime() - double(timer.elapsed()) / 1000) < 1);
        QVERIFY(waitUntil(true));
    }

    void sinkThatIsMovedOrRemoved_playsOn()
    {
        const auto sound = player("long.wav");
        QVERIFY(sound->play());
        QVERIFY(waitUntil(true));
        const QByteArray module = server.control(u"load-module module-null-sink sink_name=other"_s);
        const QByteArray stream = server.control(u"list short sink-inputs"_s).split('\t').front();
        server.control(u"move-sink-input "_s + QString::fromLatin1(stream) + u" other"_s);
        QVERIFY(waitUntil(false));
        server.control(u"unload-module "_s + QString::fromLatin1(module));
        QVERIFY(waitUntil(true));
    }

private:
    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
    std::unique_ptr<SoundPlayer> player(const char *name, bool isFake = false)
    {
        const auto makeOutput = [this, isFake]() -> std::unique_ptr<AudioOutput> {
            if (isFake)
                return std::unique_ptr<AudioOutput>(fake = new FakeOutput);
            return std::make_unique<SoundStream>(connection);
        };
        QString error;
        auto file = SoundFile::open(path(name), error);
        if (!file)
            qFatal("%s", qPrintable(error));
        auto made = std::make_unique<SoundPlayer>(std::move(file), makeOutput);
        made->setDelegate(&finish);
        return made;
    }

    // The moment from which on to listen for a sound that is yet to be played. The recorder may date it up to
    // 50 ms too early: the sink mixes so much in advance.
    double listen() const
    {
        const double now = server.seconds();
        QTest::qWait(50);
        return now;
    }

    // All that is heard, when that is one sound; else one of an impossible length.
    static SoundRecording::Sound onlySound(const SoundRecording &recording)
    {
        const auto heard = recording.sounds();
        return heard.size() == 1 ? heard[0] : SoundRecording::Sound{-1, HUGE_VAL};
    }

    bool isHeard() { return server.heard(server.seconds() - 0.1).sounds().size() == 1; }
    bool waitUntil(bool heard)
    {
        return QTest::qWaitFor([this, heard] { return isHeard() == heard; }, 15000);
    }

    QTemporaryDir folder;
    SoundServerProcess server;
    std::shared_ptr<SoundServer> connection;
    FakeOutput *fake = nullptr; // the newest
    Finish finish;
    std::optional<LogCapture> log;
};

QTEST_GUILESS_MAIN(TestSoundPlayer)
#include "TestSoundPlayer.moc"
