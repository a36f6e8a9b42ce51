#include "db/FMDatabase.h"
#include "db/FMResultSet.h"
#include "store/PlanStore.h"
#include "support/SoundFiles.h"
#include "support/SoundServerProcess.h"
#include "support/WallClockFile.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// How much too early the recorder may date a sound, in ms: the sink mixes so much in advance.
constexpr qint64 recorderError = 50;

// The installed program, as a user has it: its own home, a sound server, a wall clock.
class TestEndToEnd final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir home;
    const QString documents = home.filePath(u"My Documents"_s);
    const QString database = documents + u"/data.db"_s;
    SoundServerProcess server;
    WallClockFile clock;
    QProcess belfry;

    QProcessEnvironment environment() const
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, home.path());
        environment.insert(u"XDG_CONFIG_HOME"_s, home.filePath(u".config"_s));
        environment.insert(u"XDG_RUNTIME_DIR"_s, home.path());
        environment.remove(u"XDG_DOCUMENTS_DIR"_s);
        environment.insert(u"PULSE_SERVER"_s, QFile::decodeName(server.address()));
        return environment;
    }

    void start()
    {
        auto withClock = environment();
        clock.addTo(withClock);
        belfry.setProcessEnvironment(withClock);
        belfry.start(QStringLiteral(BELFRY_INSTALLED "/bin/belfry"), QStringList());
        QVERIFY(belfry.waitForStarted());
    }

    void end()
    {
        belfry.terminate();
        QVERIFY(belfry.waitForFinished());
    }

    static QDateTime monday(const char *time)
    {
        return {QDate(2026, 3, 2), QTime::fromString(QString::fromLatin1(time), u"HH:mm:ss"_s)};
    }

    void waitUntil(const QDateTime &moment)
    {
        QVERIFY(QTest::qWaitFor([&] { return clock.now() >= moment; }, 30000));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QDir().mkpath(home.filePath(u".config"_s));
        QFile userDirs(home.filePath(u".config/user-dirs.dirs"_s));
        QVERIFY(userDirs.open(QIODevice::WriteOnly));
        userDirs.write("XDG_DOCUMENTS_DIR=\"$HOME/My Documents\"\n");
        QVERIFY(server.start());
    }

    void firstStart_saysWhereTheTimetableIs()
    {
        clock.set(monday("07:00:00"));
        start();
        QByteArray lines;
        QTRY_VERIFY_WITH_TIMEOUT((lines += belfry.readAllStandardOutput()).count('\n') == 2, 20000);
        waitUntil(clock.now().addSecs(2));
        end();
        lines += belfry.readAllStandardOutput();
        QCOMPARE(QString::fromUtf8(lines), u"数据库不存在：%1\nbundleDbPath = %2/data.db\n"_s.arg(
                                               database, QStringLiteral(BELFRY_INSTALLED "/share/belfry")));
        QVERIFY(QFile::exists(database));
    }

    // Else the connection to the display takes its place, and what is printed breaks that.
    void closedOutput_isReplaced()
    {
        QProcess shell;
        shell.setProcessEnvironment(environment());
        shell.start(u"/bin/sh"_s,
                    {u"-c"_s, u"exec \"$0\" <&- >&- 2>&-"_s, QStringLiteral(BELFRY_INSTALLED "/bin/belfry")});
        QVERIFY(shell.waitForStarted());
        for (int descriptor = 0; descriptor < 3; ++descriptor)
            QTRY_COMPARE(QFile::symLinkTarget(u"/proc/%1/fd/%2"_s.arg(shell.processId()).arg(descriptor)),
                         u"/dev/null"_s);
        shell.terminate();
        QVERIFY(shell.waitForFinished());
    }

    void aPlan_ringsOnTheSecondAndStopsOnTheSecond()
    {
        const QString bell = home.filePath(u"Tom's 50% bell 铃.wav"_s);
        QVERIFY(SoundFiles::make(bell, SoundFiles::tone(u"660"_s, 1)));
        PlanStore(FMDatabase::databaseWithPath(database))
            .addPlan({.id = u"1"_s,
                      .title = u"Tom's bell"_s,
                      .begin = u"08:00"_s,
                      .end = u"08:01"_s,
                      .content = bell,
                      .isLoop = true,
                      .week1 = true});
        clock.set(monday("07:59:56"));
        start();
        waitUntil(monday("08:00:02"));
        const SoundRecording begin = server.heard();
        const QDateTime began = clock.at(server.began());
        clock.set(monday("08:00:57"));
        const double resumed = server.seconds();
        waitUntil(monday("08:01:02"));
        const SoundRecording finish = server.heard(resumed);
        const QDateTime ended = clock.at(server.began() + qint64(resumed * 1000));
        end();

        QCOMPARE(begin.sounds().size(), size_t(1));
        const SoundRecording::Sound ring = begin.sounds().front();
        const qint64 late = monday("08:00:00").msecsTo(began.addMSecs(qint64(ring.start * 1000)));
        QVERIFY2(late > -recorderError && late < 250, qPrintable(u"rang %1 ms after the second"_s.arg(late)));
        QVERIFY(qAbs(begin.pitch(ring.start + 0.1, ring.end - 0.1) - 660) < 1);

        QCOMPARE(finish.sounds().size(), size_t(1));
        const qint64 over =
            monday("08:01:00").msecsTo(ended.addMSecs(qint64(finish.sounds().front().end * 1000)));
        QVERIFY2(over > -recorderError && over < 250,
                 qPrintable(u"stopped %1 ms after the second"_s.arg(over)));

        const auto rows = FMDatabase::databaseWithPath(database);
        QVERIFY(rows->open());
        const auto history = rows->executeQuery(u"select title, begin, end from history"_s, {});
        QVERIFY(history && history->next());
        QCOMPARE(history->stringForColumnIndex(0), u"Tom's bell"_s);
        QCOMPARE(history->stringForColumnIndex(1), u"2026-03-02 08:00:00"_s);
        QCOMPARE(history->stringForColumnIndex(2), u"2026-03-02 08:01:00"_s);
        QVERIFY(!history->next());
        QCOMPARE(QString::fromUtf8(belfry.readAllStandardOutput()), QString());
        QCOMPARE(QString::fromUtf8(belfry.readAllStandardError()), QString());
    }

    void cleanupTestCase() { belfry.kill(); }
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "TestEndToEnd.moc"
