#include "sound/SoundPlayer.h"

#include "support/SoundFiles.h"
#include "support/Table.h"

#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <chrono>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// The steady clock of this program, with Qt's timers: it is ahead by what the tests skipped.
static thread_local std::chrono::nanoseconds skipped{};
extern "C" Q_DECL_EXPORT int clock_gettime(clockid_t id, timespec *time)
{
    const auto result = ::syscall(SYS_clock_gettime, id, time);
    if (id == CLOCK_MONOTONIC) {
        const auto shown = std::chrono::nanoseconds(time->tv_nsec) + skipped;
        time->tv_sec += shown / 1s;
        time->tv_nsec = (shown % 1s).count();
    }
    return int(result);
}

static bool diskIsGone = false;
extern "C" Q_DECL_EXPORT ssize_t pread(int file, void *buffer, size_t count, off_t offset)
{
    errno = EIO;
    return diskIsGone ? -1 : ::syscall(SYS_pread64, file, buffer, count, offset);
}

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
    }

    bool isConnected() const override { return hasServer; }
    bool isOpen() const override { return isReady; }
    qint64 write(std::span<const SoundFrame> frames) override
    {
        const size_t count = isReady ? std::min(frames.size(), 5 * second - queue.size()) : 0;
        queue.insert(queue.end(), frames.begin(), frames.begin() + qint64(count));
        return qint64(count);
    }
    void drain() override { isDrained = true; }
    void requestTimingUpdate() override
    {
        if (playedFrames > std::exchange(reportedFrames, playedFrames))
            Q_EMIT progressed(playedFrames);
    }
    void finish() override { isFinished = true; }
    void reopen() override
    {
        queue.clear();
        isReady = false;
        QMetaObject::invokeMethod(this, &FakeOutput::open, Qt::QueuedConnection);
    }

    bool hasServer = true;
    bool isDrained = false;
    bool isFinished = false;
    int opens = 0;
    std::vector<SoundFrame> queue;

private:
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

    void load(const char *name)
    {
        QString error;
        player = std::make_unique<SoundPlayer>(SoundFile::open(path(name), error), [this] {
            auto made = std::make_unique<FakeOutput>();
            output = made.get();
            return made;
        });
        player->setDelegate(this);
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

    // The position in the file from which on it was heard without a gap, or -1.
    double heardFrom() const
    {
        const double first = heard.empty() ? -1 : heard[0].left / 1000.0;
        for (size_t i = 0; i < heard.size(); ++i) {
            if (std::abs(heard[i].left - std::fmod(first + double(i) / second, 30) * 1000) > 2)
                return -1;
        }
        return first;
    }

private Q_SLOTS:
    void initTestCase()
    {
        // Each second is 1000 higher.
        const QString ramp = u"aevalsrc=exprs='1000*t/32768':s=48000:d=30"_s;
        QVERIFY(SoundFiles::make({{path("ramp.wav"), ramp},
                                  {path("truncated.wav"), ramp},
                                  {path("short.wav"), SoundFiles::tone(u"1000"_s, 0.03, 44100)},
                                  {path("damaged.m4a"), SoundFiles::tone(u"1000"_s, 2)}}));
        QFile file(path("damaged.m4a"));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() / 3));
        QVERIFY(file.write(QByteArray(file.size() / 3, 'x')) > 0);
    }

    void init()
    {
        heard.clear();
        finishes.clear();
        load("ramp.wav");
    }

    void loops_areHeardFromTheirFirstFrameToTheirLast()
    {
        player->setNumberOfLoops(1);
        QVERIFY(player->play() && player->isPlaying());
        output->open();
        QVERIFY(player->play());
        advance(32);
        QCOMPARE_LT(std::abs(player->currentTime() - 2), 0.2);
        QCOMPARE(player->duration(), 30.0);
        QVERIFY(player->isPlaying() && finishes.isEmpty() && !output->isFinished);
        QCOMPARE_GT(output->queue.size(), 3.4 * second);
        QPointer first = output;
        advance(28.6);
        QVERIFY(output == first && output->isDrained && output->isFinished);
        QCOMPARE(heard.size(), 60 * second);
        QCOMPARE(heardFrom(), 0.0);
        QCOMPARE(finishes, {true});
        QVERIFY(!player->isPlaying());
        QCOMPARE(player->currentTime(), 0.0);
        advance(2);
        QVERIFY(!output);
    }

    void playedFrames_areReleased()
    {
        player->setNumberOfLoops(-1);
        QVERIFY(player->play());
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

    void output_isWaitedForAtTheStart_andInSyncLater_data()
    {
        columns<bool, double>("hasServer", "seconds");
        QTest::newRow("server") << false << 0.5;
        QTest::newRow("device") << true << 10.0;
    }

    void output_isWaitedForAtTheStart_andInSyncLater()
    {
        QFETCH(const bool, hasServer);
        QFETCH(const double, seconds);
        QVERIFY(player->play());
        output->hasServer = hasServer;
        advance(seconds - 0.2);
        QVERIFY(player->isPlaying());
        QCOMPARE(player->currentTime(), 0.0);
        advance(3);
        output->open();
        const double now = player->currentTime();
        QCOMPARE_LT(std::abs(now - seconds - 2.8), 0.3);
        advance(1.5, false);
        advance(1);
        QCOMPARE(output->opens, 1);
        QCOMPARE_LT(std::abs(heardFrom() - now), 0.1);
        QCOMPARE_LT(std::abs(player->currentTime() - now - 1), 0.2);
    }

    void deviceThatStops_isHeardInSyncAfterwards_data()
    {
        columns<double>("seconds");
        QTest::newRow("a moment") << 0.5;
        QTest::newRow("less than the buffer") << 2.0;
        QTest::newRow("more than the buffer") << 8.0;
    }

    void deviceThatStops_isHeardInSyncAfterwards()
    {
        QFETCH(const double, seconds);
        QVERIFY(player->play());
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
        QCOMPARE_LT(std::abs(heardFrom() - now), 0.15);
    }

    void position_isKeptAndSet()
    {
        QVERIFY(player->play());
        output->open();
        advance(2);
        player->stop();
        QVERIFY(!output && !player->isPlaying());
        advance(2);
        QVERIFY(finishes.isEmpty());
        const double position = player->currentTime();
        QCOMPARE_LT(std::abs(position - 2), 0.2);
        heard.clear();
        QVERIFY(player->play());
        output->open();
        advance(1);
        QCOMPARE_LT(std::abs(heardFrom() - position), 0.002);
        player->setCurrentTime(7);
        output->open();
        heard.clear();
        advance(1);
        QCOMPARE(heardFrom(), 7.0);
        QCOMPARE_LT(std::abs(player->currentTime() - 8), 0.5);
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
    }

    void shortFile_isHeardWhole()
    {
        load("short.wav");
        QVERIFY(player->play());
        output->open();
        advance(1);
        QCOMPARE(heard.size(), 1440);
        QCOMPARE(finishes, {true});
    }

    void fileThatCannotBeReadOn_endsUnsuccessfully_data()
    {
        columns<bool>("isDiskGone");
        QTest::newRow("truncated.wav") << false;
        QTest::newRow("damaged.m4a") << false;
        QTest::newRow("ramp.wav") << true;
    }

    void fileThatCannotBeReadOn_endsUnsuccessfully()
    {
        QFETCH(const bool, isDiskGone);
        load(QTest::currentDataTag());
        player->setNumberOfLoops(isDiskGone ? 0 : 2);
        player->setCurrentTime(0.5);
        QVERIFY(player->play());
        output->open();
        advance(2);
        QVERIFY(QFile::resize(path("truncated.wav"), 0));
        diskIsGone = isDiskGone;
        advance(10);
        diskIsGone = false;
        QCOMPARE(finishes, {false});
        QCOMPARE_GT(heard.size(), 0);
        QCOMPARE(player->currentTime(), 0.0);
    }
};

QTEST_GUILESS_MAIN(TestSoundPlayer)
#include "TestSoundPlayer.moc"
