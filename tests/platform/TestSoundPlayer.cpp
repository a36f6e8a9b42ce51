#include "platform/SoundPlayer.h"

#include "platform/SoundServer.h"
#include "platform/SoundStream.h"
#include "support/FakeOutput.h"
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

#include <functional>
#include <netdb.h>
#include <optional>

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
        // Ten seconds, each of its own pitch: 400 Hz and 100 Hz more every second.
        QVERIFY(SoundFiles::make(path("stairs.wav"), SoundFiles::tone(u"400+100*floor(t)"_s, 10)));
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
        FakeOutput *output = nullptr;
        const auto sound = player("half.wav", FakeOutput::factory(output));
        sound->setNumberOfLoops(-1);
        QVERIFY(sound->play());
        output->open();
        QTRY_VERIFY(output->written > 48000);
        const size_t before = FakeOutput::allocatedBytes();
        for (qint64 second = 1; second < 60; ++second) {
            output->play(24000);
            QTRY_VERIFY(output->written > output->played + 48000);
        }
        // Half a minute of sound has 5.7 MB.
        QVERIFY(FakeOutput::allocatedBytes() < before + 3'000'000);
    }

    void deviceThatWakes_isWaitedFor()
    {
        FakeOutput *output = nullptr;
        const auto sound = player("half.wav", FakeOutput::factory(output));
        QVERIFY(sound->play());
        output->open();
        QTest::qWait(1000);
        QVERIFY(sound->isPlaying());
        QCOMPARE(sound->currentTime(), 0.0);
        QCOMPARE(output->written, 24000);
        output->play(1000);
        QVERIFY(sound->currentTime() > 0);
        QTRY_COMPARE(finish.count, 1);
    }

    void requestOfTheServer_isMetAtOnce()
    {
        FakeOutput *output = nullptr;
        const auto sound = player("long.wav", FakeOutput::factory(output));
        QVERIFY(sound->play());
        output->room = 1000;
        output->open();
        QCOMPARE(output->written, 1000);
        output->grant(500);
        QCOMPARE(output->written, 1500);
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
        QVERIFY2(heard.start < 0.5, qPrintable(QString::number(heard.start)));
        if (loops > 0)
            QVERIFY(recording.unevenness(heard.start + 0.01, heard.end - 0.01, 48) < 300);
    }

    void endOfTheSound_isImmediate()
    {
        const std::function<void(std::unique_ptr<SoundPlayer> &)> ways[]{
            [](auto &sound) { sound->stop(); },
            [this](auto &sound) { sound = player("click.wav"); },
            [this](auto &sound) {
                sound.reset();
                connection.reset();
            },
        };
        for (const auto &end : ways) {
            auto sound = player("long.wav");
            const double start = server.seconds();
            QVERIFY(sound->play());
            QTRY_VERIFY(sound->currentTime() > 0.5);
            end(sound);
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
            << QByteArray("tcp:bell.example") << QByteArray("stairs.wav") << 6000;
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

    void serverThatComesBack_playsInStep_data()
    {
        columns<bool, bool>("isFrozen", "isAtStart");
        QTest::newRow("after it was killed") << false << false;
        QTest::newRow("after it was frozen") << true << false;
        QTest::newRow("after it was frozen before its first use") << true << true;
    }

    void serverThatComesBack_playsInStep()
    {
        QFETCH(const bool, isFrozen);
        QFETCH(const bool, isAtStart);
        const auto sound = player("stairs.wav");
        sound->setNumberOfLoops(100);
        sound->setCurrentTime(7);
        if (isAtStart)
            server.freeze();
        QElapsedTimer timer;
        timer.start();
        QVERIFY(sound->play());
        QVERIFY(timer.elapsed() < 200);
        if (!isAtStart) {
            QTRY_COMPARE(placeHeard().value_or(0), 7.0);
            isFrozen ? server.freeze() : server.kill();
        }
        QTRY_COMPARE_WITH_TIMEOUT(log->lines().size(), 1, 6000);
        if (isFrozen)
            server.thaw();
        else
            QVERIFY(server.start());
        QTRY_COMPARE_WITH_TIMEOUT(log->lines().size(), 2, 6000);
        QCOMPARE(log->takeLines()[1], u"Sound server is back"_s);
        const double place = std::fmod(7 + double(timer.elapsed()) / 1000, 10);
        QVERIFY2(std::abs(sound->currentTime() - place) < 0.4,
                 qPrintable(u"%1 %2"_s.arg(sound->currentTime()).arg(place)));
        QTRY_VERIFY(isHeardInStep(*sound));
    }

private:
    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
    std::unique_ptr<SoundPlayer> player(const char *name)
    {
        return player(name, [this] { return std::make_unique<SoundStream>(connection); });
    }
    std::unique_ptr<SoundPlayer> player(const char *name, AudioOutputFactory makeOutput)
    {
        QString error;
        auto made = SoundPlayer::create(path(name), std::move(makeOutput), error);
        if (!made)
            qFatal("%s", qPrintable(error));
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

    // The second of "stairs.wav", told by its pitch, that is heard now; none in silence.
    std::optional<double> placeHeard()
    {
        const SoundRecording recording = server.heard(server.seconds() - 0.1);
        const double pitch = recording.pitch(0, recording.length());
        return pitch > 350 ? std::optional(std::round((pitch - 400) / 100)) : std::nullopt;
    }
    bool isHeardInStep(const SoundPlayer &stairs)
    {
        const auto heard = placeHeard();
        return heard && std::abs(*heard + 0.5 - stairs.currentTime()) < 0.8;
    }

    QTemporaryDir folder;
    SoundServerProcess server;
    std::shared_ptr<SoundServer> connection;
    Finish finish;
    std::optional<LogCapture> log;
};

QTEST_GUILESS_MAIN(TestSoundPlayer)
#include "TestSoundPlayer.moc"
