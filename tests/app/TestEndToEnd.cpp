#include "support/BelfryProcess.h"
#include "support/SoundFiles.h"
#include "support/SoundServerProcess.h"

using namespace Qt::StringLiterals;

// How much too early the recorder may date a sound, in ms: the sink mixes so much in advance.
constexpr qint64 recorderError = 50;

// How late a sound may be, in ms. The second is what counts; within it a busy machine may be late.
constexpr qint64 second = 1000;

// The installed program, from outside, in a world as it should be.
class TestEndToEnd final : public QObject
{
    Q_OBJECT

private:
    SoundServerProcess server;
    BelfryProcess belfry{server.address()};

    void end()
    {
        belfry.process.terminate();
        QVERIFY(belfry.process.waitForFinished());
        if (belfry.process.exitCode() != 0)
            QFAIL(belfry.process.readAllStandardError().constData());
    }

    static QDateTime monday(const char *time) { return BelfryProcess::monday(time); }

private Q_SLOTS:
    void initTestCase() { QVERIFY(server.start()); }

    void firstStart_saysWhereTheTimetableIs()
    {
        belfry.clock.set(monday("07:00:00"));
        QVERIFY(belfry.start());
        QTRY_VERIFY_WITH_TIMEOUT(belfry.ticks().size() > 2, 20000);
        end();
        QCOMPARE(belfry.takeOutput(), u"数据库不存在：%1\nbundleDbPath = %2/data.db\n"_s.arg(
                                          belfry.database, QStringLiteral(BELFRY_INSTALLED "/share/belfry")));
        QVERIFY(QFile::exists(belfry.database));
    }

    // Else the connection to the display takes its place, and what is printed breaks that.
    void closedOutput_isReplaced()
    {
        QProcess shell;
        shell.setProcessEnvironment(belfry.environment());
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
        const QString bell = belfry.home.filePath(u"Tom's 50% bell 铃.wav"_s);
        QVERIFY(SoundFiles::make({{bell, SoundFiles::tone(u"660"_s, 1)}}));
        PlanStore(FMDatabase::databaseWithPath(belfry.database))
            .addPlan({.id = u"1"_s,
                      .title = u"Tom's bell"_s,
                      .begin = u"08:00"_s,
                      .end = u"08:01"_s,
                      .content = bell,
                      .isLoop = true,
                      .week1 = true});
        belfry.clock.set(monday("07:59:56"));
        QVERIFY(belfry.start());
        QVERIFY(belfry.waitUntil(monday("08:00:02")));
        const SoundRecording begin = server.heard();
        const QDateTime began = belfry.clock.at(server.began());
        belfry.clock.set(monday("08:00:57"));
        const double resumed = server.seconds();
        QVERIFY(belfry.waitUntil(monday("08:01:02")));
        const SoundRecording finish = server.heard(resumed);
        const QDateTime ended = belfry.clock.at(server.began() + qint64(resumed * 1000));
        end();

        QCOMPARE(begin.sounds().size(), size_t(1));
        const SoundRecording::Sound ring = begin.sounds().front();
        const qint64 late = monday("08:00:00").msecsTo(began.addMSecs(qint64(ring.start * 1000)));
        QVERIFY2(late > -recorderError && late < second,
                 qPrintable(u"rang %1 ms after the second"_s.arg(late)));
        QVERIFY(begin.unevenness(ring.start + 0.1, ring.end - 0.1, 800) < 300); // 11 waves

        QCOMPARE(finish.sounds().size(), size_t(1));
        const qint64 over =
            monday("08:01:00").msecsTo(ended.addMSecs(qint64(finish.sounds().front().end * 1000)));
        QVERIFY2(over > -recorderError && over < second,
                 qPrintable(u"stopped %1 ms after the second"_s.arg(over)));

        QCOMPARE(rowsIn(belfry.database, u"select title, begin, end from history"_s),
                 QStringList{u"Tom's bell|2026-03-02 08:00:00|2026-03-02 08:01:00"_s});
        QCOMPARE(belfry.takeOutput(), QString());
        const QByteArray logged = belfry.process.readAllStandardError();
        QVERIFY2(logged.count('\n') == 1 && logged.contains("Cannot inhibit idle suspend"),
                 logged.constData());
    }

    void endWhileASheetIsOpenAndABellPlays_leavesTheLogEntryOpen()
    {
        belfry.clock.set(monday("07:59:57"));
        QVERIFY(belfry.start());
        QVERIFY(belfry.waitUntil(monday("08:00:01")));
        QVERIFY(belfry.work({u"click|Edit"_s, u"click|Edit|Tom's bell"_s, u"read|Title:"_s}));
        end();
        QCOMPARE(rowsIn(belfry.database, u"select end from history order by rowid desc limit 1"_s),
                 QStringList{u"NULL"_s});
        QCOMPARE(QDir(belfry.documents).entryList({u"data.db*"_s}), QStringList{u"data.db"_s});
    }

    // A copy of the program beside which there is no module, as after half an upgrade.
    void missingSoundModule_isSaidAtTheStartAndAtEachBell()
    {
        const QString program = belfry.home.filePath(u"bin/belfry"_s);
        QVERIFY(QDir(belfry.home.path()).mkdir(u"bin"_s));
        QVERIFY(QFile::copy(QStringLiteral(BELFRY_INSTALLED "/bin/belfry"), program));
        QVERIFY(QFile::link(QStringLiteral(BELFRY_INSTALLED "/share"), belfry.home.filePath(u"share"_s)));
        belfry.takeOutput();
        belfry.clock.set(monday("07:59:57"));
        QVERIFY(belfry.start({u"sh"_s, u"-c"_s, u"exec \"$1\" \"$2\" \"$0\""_s, program}));
        QVERIFY(belfry.work({u"click|OK"_s}));
        QVERIFY(belfry.waitUntil(monday("08:00:02")));
        QVERIFY(belfry.takeOutput().startsWith(u"错误: "_s));
        end();
    }
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "TestEndToEnd.moc"
