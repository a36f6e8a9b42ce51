#include "sound/SoundPlayer.h"

#include "support/SoundFiles.h"
#include "support/SteadyClock.h"

#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int second = 48000;

// A server and its device, which play when the test says so.
class FakeOutput final : public AudioOutput
{
public:
    void open()
    {
        isReady = true;
        ++opens;
        playedFrames = reportedFrames = 0;
        Q_EMIT opened();
    }
    void play(qint64 frames, std::vector<SoundFrame> &heard)
    {
        const auto end = queue.begin() + std::min(frames, qint64(queue.size()));
        playedFrames += end - queue.begin();
        heard.insert(heard.end(), queue.begin(), end);
        queue.erase(queue.begin(), end);
        Q_EMIT writable();
    }

    bool isConnected() const override { return hasServer; }
    bool isOpen() const override { return isReady; }
    qint64 write(std::span<const SoundFrame> frames) override
    {
        if (frames.size() > 5 * second)
            qFatal("more frames than are decoded in advance");
        const size_t count = isReady ? std::min(frames.size(), capacity - queue.size()) : 0;
        queue.insert(queue.end(), frames.begin(), frames.begin() + qint64(count));
        return qint64(count);
    }
    void drain() override { isDrained = true; }
    void requestTimingUpdate() override
    {
        if (playedFrames > std::exchange(reportedFrames, playedFrames))
            Q_EMIT progressed(playedFrames, 10ms);
    }
    void finish() override { isFinished = true; }
    void reopen() override
    {
        queue.clear();
        isReady = false;
        QMetaObject::invokeMethod(this, &FakeOutput::open, Qt::QueuedConnection);
    }

    size_t capacity = 5 * second;
    bool hasServer = true;
    bool isDrained = false;
    bool isFinished = false;
    int opens = 0;

private:
    std::vector<SoundFrame> queue;
    bool isReady = false;
    qint64 playedFrames = 0;
    qint64 reportedFrames = 0;
};

} // namespace

class TestSoundPlayer final : public QObject, private AVAudioPlayerDelegate
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    std::vector<SoundFrame> heard;
    QPointer<FakeOutput> output;
    std::unique_ptr<SoundPlayer> player;
    QList<bool> finishes; // whether they were successful

    void audioPlayerDidFinishPlaying(AVAudioPlayer &, bool successfully) override
    {
        finishes += successfully;
    }

    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }

    // Plays a file on an output that is not open yet.
    void start(int loops = 0, double from = 0, const char *name = "ramp.wav")
    {
        QString error;
        heard.clear();
        finishes.clear();
        player = std::make_unique<SoundPlayer>(SoundFile::open(path(name), error), [this] {
            auto made = std::make_unique<FakeOutput>();
            output = made.get();
            return made;
        });
        player->setDelegate(this);
        player->setNumberOfLoops(loops);
        player->setCurrentTime(from);
        QVERIFY(player->play() && player->isPlaying());
    }

    void advance(double seconds, bool plays = true)
    {
        for (int step = 0; step < seconds * 10; ++step) {
            skipped += 100ms;
            if (output && plays)
                output->play(second / 10, heard);
            for (int turn = 0; turn < 10; ++turn)
                QCoreApplication::processEvents();
        }
    }

    bool isAt(double seconds) const { return std::abs(player->currentTime() - seconds) < 0.5; }

    // Whether the file was heard without a gap, from near that position on.
    bool isHeardFrom(double seconds, double tolerance = 0.15) const
    {
        const double first = heard.empty() ? -1 : heard[0].left / 1000.0;
        int odd = 0; // The step at a repeat rings when it is resampled.
        for (size_t i = 0; i < heard.size(); ++i)
            odd += std::abs(heard[i].left - std::fmod(first + double(i) / second, 30) * 1000) > 8;
        return odd < 50 && std::abs(first - seconds) < tolerance;
    }

private Q_SLOTS:
    void initTestCase()
    {
        // Each second is 1000 higher.
        const QString ramp = u"aevalsrc=exprs='1000*t/32768':s=44100:d=30"_s;
        QVERIFY(SoundFiles::make({{path("ramp.wav"), ramp},
                                  {path("truncated.wav"), ramp},
                                  {path("damaged.m4a"), SoundFiles::tone(u"1000"_s, 2)}}));
        QFile file(path("damaged.m4a"));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() / 3));
        QVERIFY(file.write(QByteArray(file.size() / 3, 'x')) > 0);
    }

    void loops_areHeardFromTheirFirstFrameToTheirLast()
    {
        for (const size_t capacity : {5 * second, second / 10}) {
            start(1);
            output->capacity = capacity;
            output->open();
            QVERIFY(player->play());
            advance(32);
            Q_EMIT output->progressed(second, 1s); // too late to be true
            QVERIFY(isAt(2) && player->isPlaying() && finishes.isEmpty() && !output->isFinished);
            QCOMPARE(player->duration(), 30.0);
            const QPointer first = output;
            advance(27);
            while (player->isPlaying())
                advance(0.1);
            advance(0.1);
            QCOMPARE(finishes, {true});
            advance(0.3);
            QVERIFY(output == first && output->opens == 1 && output->isDrained && output->isFinished);
            QCOMPARE(heard.size(), 60 * second);
            QVERIFY(isHeardFrom(0));
            QCOMPARE(player->currentTime(), 0.0);
            advance(2);
            QVERIFY(!output);
        }
    }

    void playedFrames_areReleased()
    {
        start(-1);
        output->open();
        rusage before = {};
        getrusage(RUSAGE_SELF, &before);
        for (int minute = 0; minute < 10; ++minute) {
            advance(60);
            heard.clear();
        }
        rusage after = {};
        getrusage(RUSAGE_SELF, &after);
        QCOMPARE_LT(after.ru_maxrss - before.ru_maxrss, 30'000); // of 115,000
    }

    void output_isWaitedForAtTheStart_andInSyncLater()
    {
        for (const bool hasServer : {false, true}) {
            start();
            output->hasServer = hasServer;
            const double wait = hasServer ? 10 : 0.5;
            advance(wait - 0.2);
            QVERIFY(player->isPlaying());
            QCOMPARE(player->currentTime(), 0.0);
            advance(3);
            output->open();
            const double now = player->currentTime();
            QVERIFY(isAt(wait + 2.8));
            advance(1.5, false);
            advance(1);
            QCOMPARE(output->opens, 1);
            QVERIFY(isHeardFrom(now) && isAt(now + 1));
        }
    }

    void deviceThatStops_isHeardInSyncAfterwards()
    {
        for (const double seconds : {0.5, 3.2, 8.0}) { // The buffer has five.
            start();
            output->open();
            advance(2);
            advance(seconds, false);
            QVERIFY(player->isPlaying());
            QCOMPARE(output->opens > 1, seconds > 5);
            advance(1);
            QCOMPARE(output->opens > 1, seconds > 1);
            heard.clear();
            const double now = player->currentTime();
            advance(1);
            QVERIFY(isHeardFrom(now));
        }
    }

    void heldThread_doesNotEndThePlayback()
    {
        start(1, 20);
        output->hasServer = false;
        advance(0.8);
        QCOMPARE(player->currentTime(), 20.0); // What lies before has to be decoded first.
        output->open();
        advance(8);
        const double before = player->currentTime();
        skipped += 8s;
        QVERIFY(player->isPlaying() && isAt(before + 8 - 30));
        skipped += 30s; // The end is after 40.
        QVERIFY(!player->isPlaying());
    }

    void position_isKeptAndSet()
    {
        start();
        output->open();
        advance(2);
        player->stop();
        QVERIFY(!output && !player->isPlaying());
        advance(2);
        QVERIFY(isAt(2) && finishes.isEmpty());
        const double position = player->currentTime();
        heard.clear();
        QVERIFY(player->play());
        output->open();
        advance(1);
        QVERIFY(isHeardFrom(position, 0.002));
        player->setCurrentTime(7);
        output->open();
        heard.clear();
        advance(1);
        QVERIFY(isHeardFrom(7, 0.002) && isAt(8));
        player->setNumberOfLoops(1); // begins to count here
        QVERIFY(player->isPlaying());
        output->open();
        advance(30);
        QVERIFY(player->isPlaying());
        player->stop();
        for (const auto &[seconds, expected] :
             {std::pair(-1.0, 0.0), {40.0, 30.0}, {qQNaN(), 0.0}, {4.0, 4.0}}) {
            player->setCurrentTime(seconds);
            QCOMPARE(player->currentTime(), expected);
        }
        start(1, 30);
        output->open();
        advance(35);
        QCOMPARE(finishes, {true});
    }

    void damagedFile_isHeardAsFarAsItIsWhole()
    {
        for (const char *name : {"truncated.wav", "damaged.m4a"}) {
            start(2, 0.5, name);
            output->open();
            advance(2);
            QVERIFY(QFile::resize(path("truncated.wav"), 0));
            advance(10);
            QCOMPARE(finishes, {false});
            QVERIFY(!heard.empty());
            QCOMPARE(player->currentTime(), 0.0);
            QCOMPARE(player->play(), QByteArray(name) == "damaged.m4a");
        }
    }
};

QTEST_GUILESS_MAIN(TestSoundPlayer)
#include "TestSoundPlayer.moc"
