#include "platform/SoundPlayer.h"

#include "platform/SoundServer.h"
#include "support/LogCapture.h"
#include "support/SoundFiles.h"
#include "support/SoundServerProcess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <optional>

using namespace Qt::StringLiterals;

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
    void initTestCase();
    void init();
    void cleanup();

    void file_isHeardFromItsFirstSampleToItsLastThoughDeleted_data();
    void file_isHeardFromItsFirstSampleToItsLastThoughDeleted();
    void repeats_followWithoutGap();
    void endOfTheSound_isImmediate_data();
    void endOfTheSound_isImmediate();
    void heldMainThread_isNotHeard();
    void heldMainThreadForTooLong_soundComesBackInStep();
    void position_isKeptSetAndClamped();
    void damagedFile_endsThePlayback();
    void manyQuickStarts_leaveNothingBehind();
    void withoutServer_timeRunsInSilence_data();
    void withoutServer_timeRunsInSilence();
    void serverThatComesBack_playsInStep_data();
    void serverThatComesBack_playsInStep();
    void serverRestartedBetweenPlaybacks_plays();

private:
    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
    std::unique_ptr<SoundPlayer> player(const char *name)
    {
        auto made = SoundPlayer::create(path(name), connection, error);
        if (made)
            made->setDelegate(&finish);
        return made;
    }
    std::optional<double> placeHeard();

    QTemporaryDir folder;
    QString error;
    SoundServerProcess server;
    std::shared_ptr<SoundServer> connection;
    Finish finish;
    std::optional<LogCapture> log;
};

// The second of "stairs.wav", told by its pitch, that is heard now; none in silence.
std::optional<double> TestSoundPlayer::placeHeard()
{
    const SoundRecording recording = server.heard(server.seconds() - 0.1);
    const double pitch = recording.pitch(0, recording.length());
    return pitch > 350 ? std::optional(std::round((pitch - 400) / 100)) : std::nullopt;
}

void TestSoundPlayer::initTestCase()
{
    QVERIFY(SoundFiles::make(path("second.wav"), SoundFiles::tone(u"1000"_s, 1)));
    QVERIFY(SoundFiles::make(path("second.mp3"), SoundFiles::tone(u"1000"_s, 1, 44100)));
    QVERIFY(SoundFiles::make(path("click.wav"), SoundFiles::tone(u"1000"_s, 0.03)));
    QVERIFY(SoundFiles::make(path("half.wav"), SoundFiles::tone(u"1000"_s, 0.5, 44100)));
    QVERIFY(SoundFiles::make(path("four.wav"), SoundFiles::tone(u"1000"_s, 4)));
    QVERIFY(SoundFiles::make(path("long.wav"), SoundFiles::tone(u"1000"_s, 30)));
    QVERIFY(SoundFiles::make(path("five.wav"), SoundFiles::tone(u"1000"_s, 5)));
    QVERIFY(SoundFiles::make(path("five.m4a"), SoundFiles::tone(u"1000"_s, 5), {u"-c:a"_s, u"alac"_s}));
    // Ten seconds, each of its own pitch: 400 Hz and 100 Hz more every second.
    QVERIFY(SoundFiles::make(path("stairs.wav"), SoundFiles::tone(u"400+100*floor(t)"_s, 10)));
    QVERIFY(server.start());
}

void TestSoundPlayer::init()
{
    QVERIFY(server.ensureHealthy());
    log.emplace();
    finish = {};
    connection = std::make_shared<SoundServer>(server.address());
}

void TestSoundPlayer::cleanup()
{
    connection.reset();
    log.reset();
}

void TestSoundPlayer::file_isHeardFromItsFirstSampleToItsLastThoughDeleted_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<double>("length");
    QTest::newRow("PCM") << QByteArray("second.wav") << 1.0;
    QTest::newRow("MP3") << QByteArray("second.mp3") << 1.0;
    QTest::newRow("shorter than any buffer") << QByteArray("click.wav") << 0.03;
    QTest::newRow("longer than any buffer") << QByteArray("five.wav") << 5.0;
}

void TestSoundPlayer::file_isHeardFromItsFirstSampleToItsLastThoughDeleted()
{
    QFETCH(const QByteArray, name);
    QFETCH(const double, length);
    QVERIFY(QFile::copy(path(name.constData()), path("bell")));
    const auto sound = player("bell");
    QVERIFY2(sound, qUtf8Printable(error));
    QVERIFY(std::abs(sound->duration() - length) < 0.05);
    const double start = server.seconds();
    QVERIFY(sound->play());
    QVERIFY(sound->isPlaying());
    QVERIFY(QFile::remove(path("bell")));
    QVERIFY(!player("bell"));
    QTRY_COMPARE_WITH_TIMEOUT(finish.count, 1, 10000);
    QVERIFY(finish.isSuccess);
    QVERIFY(!sound->isPlaying());
    QCOMPARE(sound->currentTime(), 0.0);
    const auto heard = server.heard(start).sounds();
    QCOMPARE(heard.size(), size_t(1));
    QVERIFY2(std::abs(heard[0].length() - length) < 0.005, qPrintable(QString::number(heard[0].length())));
    QVERIFY2(heard[0].start < 0.25, qPrintable(QString::number(heard[0].start)));
    QCOMPARE(log->lines(), QStringList());
}

void TestSoundPlayer::repeats_followWithoutGap()
{
    const auto sound = player("half.wav");
    QVERIFY2(sound, qUtf8Printable(error));
    sound->setNumberOfLoops(3);
    const double start = server.seconds();
    QVERIFY(sound->play());
    QTRY_VERIFY(sound->currentTime() > 0.4);
    QTRY_VERIFY(sound->currentTime() < 0.3);
    QTRY_COMPARE(finish.count, 1);
    const SoundRecording recording = server.heard(start);
    const auto heard = recording.sounds();
    QCOMPARE(heard.size(), size_t(1));
    QVERIFY2(std::abs(heard[0].length() - 2) < 0.005, qPrintable(QString::number(heard[0].length())));
    QVERIFY(recording.unevenness(heard[0].start + 0.01, heard[0].end - 0.01, 48) < 300);
}

void TestSoundPlayer::endOfTheSound_isImmediate_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("stopped") << 0;
    QTest::newRow("released") << 1;
    QTest::newRow("replaced by another one") << 2;
    QTest::newRow("the connection goes as well") << 3;
}

void TestSoundPlayer::endOfTheSound_isImmediate()
{
    QFETCH(const int, way);
    auto sound = player("long.wav");
    QVERIFY2(sound, qUtf8Printable(error));
    const double start = server.seconds();
    QVERIFY(sound->play());
    QTRY_VERIFY(sound->currentTime() > 0.5);
    if (way == 0)
        sound->stop();
    else if (way == 2)
        sound = player("click.wav");
    else
        sound.reset();
    if (way == 3)
        connection.reset();
    const double stop = server.seconds();
    QThread::msleep(700);
    const auto heard = server.heard(start).sounds();
    QCOMPARE(heard.size(), size_t(1));
    QVERIFY2(heard[0].end < stop - start + 0.2, qPrintable(QString::number(heard[0].end - stop + start)));
    QCOMPARE(finish.count, 0);
}

void TestSoundPlayer::heldMainThread_isNotHeard()
{
    const auto sound = player("five.wav");
    QVERIFY2(sound, qUtf8Printable(error));
    const double start = server.seconds();
    QVERIFY(sound->play());
    QTRY_VERIFY(sound->currentTime() > 0.2);
    QThread::msleep(2000);
    QVERIFY(std::abs(sound->currentTime() - 2.25) < 0.3);
    QTest::qWait(100);
    QThread::msleep(2200);
    QVERIFY(sound->isPlaying());
    QTRY_COMPARE(finish.count, 1);
    const auto heard = server.heard(start).sounds();
    QCOMPARE(heard.size(), size_t(1));
    QVERIFY2(std::abs(heard[0].length() - 5) < 0.005, qPrintable(QString::number(heard[0].length())));
    QCOMPARE(log->lines(), QStringList());
}

void TestSoundPlayer::heldMainThreadForTooLong_soundComesBackInStep()
{
    const auto sound = player("stairs.wav");
    QVERIFY2(sound, qUtf8Printable(error));
    QVERIFY(sound->play());
    QTRY_VERIFY(sound->currentTime() > 0.2);
    QThread::msleep(5500);
    QVERIFY(std::abs(sound->currentTime() - 5.75) < 0.3);
    QTRY_VERIFY(placeHeard() && std::abs(*placeHeard() + 0.5 - sound->currentTime()) < 0.8);
    QVERIFY(sound->currentTime() < 8);
    QCOMPARE(log->lines(), QStringList());
}

void TestSoundPlayer::position_isKeptSetAndClamped()
{
    const auto sound = player("stairs.wav");
    QVERIFY2(sound, qUtf8Printable(error));
    QCOMPARE(sound->currentTime(), 0.0);
    sound->setCurrentTime(99);
    QCOMPARE(sound->currentTime(), 10.0);
    sound->setCurrentTime(-1);
    QCOMPARE(sound->currentTime(), 0.0);

    sound->setCurrentTime(4);
    QVERIFY(sound->play());
    QTRY_COMPARE(placeHeard().value_or(0), 4.0);
    sound->setCurrentTime(7);
    QVERIFY(sound->isPlaying());
    QTRY_COMPARE(placeHeard().value_or(0), 7.0);
    sound->stop();
    const double stopped = sound->currentTime();
    QVERIFY(stopped > 7 && stopped < 8.5);
    QVERIFY(!sound->isPlaying());
    QTRY_VERIFY(!placeHeard());
    QCOMPARE(sound->currentTime(), stopped);
    sound->setCurrentTime(0);
    QVERIFY(sound->play());
    QTRY_COMPARE(placeHeard().value_or(-1), 0.0);
    QCOMPARE(finish.count, 0);
}

void TestSoundPlayer::damagedFile_endsThePlayback()
{
    QFile file(path("five.m4a"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    // Of the five seconds, three in the middle are lost.
    file.seek(file.size() / 5);
    file.write(QByteArray(file.size() * 3 / 5, '\x55'));
    file.close();
    const auto sound = player("five.m4a");
    QVERIFY2(sound, qUtf8Printable(error));
    sound->setNumberOfLoops(100);
    QVERIFY(sound->play());
    QTRY_COMPARE(finish.count, 1);
    QVERIFY(!finish.isSuccess);
    QVERIFY(!sound->isPlaying());
}

void TestSoundPlayer::manyQuickStarts_leaveNothingBehind()
{
    auto sound = player("long.wav");
    QVERIFY(sound->play());
    for (int i = 0; i < 40; ++i) {
        sound = player("long.wav");
        QVERIFY(sound->play());
        QTest::qWait(i % 5);
    }
    const double start = server.seconds();
    QTRY_COMPARE(server.streamCount(), 1);
    QTRY_VERIFY(sound->currentTime() > 0.2);
    QVERIFY(!server.heard(start).sounds().empty());
    sound->stop();
    QTRY_COMPARE(server.streamCount(), 0);
}

void TestSoundPlayer::withoutServer_timeRunsInSilence_data()
{
    QTest::addColumn<bool>("isFrozen");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("length");
    QTest::newRow("there is none") << false << QByteArray("second.wav") << 1000;
    QTest::newRow("it was frozen before its first use") << true << QByteArray("four.wav") << 4000;
}

void TestSoundPlayer::withoutServer_timeRunsInSilence()
{
    QFETCH(const bool, isFrozen);
    QFETCH(const QByteArray, name);
    QFETCH(const int, length);
    connection = std::make_shared<SoundServer>(isFrozen ? server.address() : QByteArray("unix:/nonexistent"));
    if (isFrozen)
        server.freeze();
    const auto sound = player(name.constData());
    QVERIFY2(sound, qUtf8Printable(error));
    QElapsedTimer timer;
    timer.start();
    QVERIFY(sound->play());
    QVERIFY(timer.elapsed() < 200);
    QTRY_VERIFY(sound->currentTime() > length / 2000.0);
    QVERIFY(timer.elapsed() >= length / 2);
    QTRY_COMPARE(finish.count, 1);
    QVERIFY(timer.elapsed() >= length);
    QVERIFY(finish.isSuccess);
    QCOMPARE(log->lines().size(), 1);
    QVERIFY(log->lines()[0].startsWith(u"No sound server plays"_s));
}

void TestSoundPlayer::serverThatComesBack_playsInStep_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::newRow("after it was killed") << QByteArray("killed");
    QTest::newRow("after it was frozen") << QByteArray("frozen");
    QTest::newRow("after it was away at the start") << QByteArray("away");
}

void TestSoundPlayer::serverThatComesBack_playsInStep()
{
    QFETCH(const QByteArray, fault);
    if (fault == "away")
        server.kill();
    const auto sound = player("stairs.wav");
    QVERIFY2(sound, qUtf8Printable(error));
    sound->setNumberOfLoops(100);
    sound->setCurrentTime(7);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(sound->play());
    if (fault != "away")
        QTRY_COMPARE(placeHeard().value_or(0), 7.0);
    if (fault == "killed")
        server.kill();
    else if (fault == "frozen")
        server.freeze();
    QTRY_COMPARE_WITH_TIMEOUT(log->lines().size(), 1, 6000);
    QTRY_VERIFY(sound->currentTime() > 7.8);
    if (fault == "frozen")
        server.thaw();
    else
        QVERIFY(server.start());
    QTRY_COMPARE_WITH_TIMEOUT(log->lines().size(), 2, 6000);
    QCOMPARE(log->lines()[1], u"The sound server plays again."_s);

    const double place = std::fmod(7 + double(timer.elapsed()) / 1000, 10);
    QVERIFY2(std::abs(sound->currentTime() - place) < 0.4,
             qPrintable(u"%1 %2"_s.arg(sound->currentTime()).arg(place)));
    const auto isInStep = [&]() {
        const auto heard = placeHeard();
        return heard && std::abs(*heard + 0.5 - sound->currentTime()) < 0.8;
    };
    QTRY_VERIFY(isInStep());
}

void TestSoundPlayer::serverRestartedBetweenPlaybacks_plays()
{
    const auto sound = player("half.wav");
    QVERIFY2(sound, qUtf8Printable(error));
    QVERIFY(sound->play());
    QTRY_COMPARE(finish.count, 1);
    server.kill();
    QVERIFY(server.start());
    const double start = server.seconds();
    QVERIFY(sound->play());
    QTRY_COMPARE(finish.count, 2);
    const auto heard = server.heard(start).sounds();
    QCOMPARE(heard.size(), size_t(1));
    QVERIFY(std::abs(heard[0].length() - 0.5) < 0.005);
    QCOMPARE(log->lines(), QStringList());
}

QTEST_GUILESS_MAIN(TestSoundPlayer)
#include "TestSoundPlayer.moc"
