#include "support/BelfryProcess.h"
#include "support/SoundFiles.h"
#include "support/SoundServerProcess.h"

#include <sys/resource.h>

using namespace Qt::StringLiterals;

// The installed program, with a sound server that records what it plays.
class TestEndToEnd final : public QObject
{
    Q_OBJECT

private:
    SoundServerProcess server;
    BelfryProcess belfry;
    const QString bell = belfry.home.filePath(u"Tom's 50% bell 铃.wav"_s);

    // The second of a moment of the recording, which is dated up to 50 ms too early: the sink mixes ahead.
    QString secondOf(double moment) const
    {
        return belfry.clockAt(server.began() + qint64(moment * 1000) + 50).toString(u"HH:mm:ss"_s);
    }

    bool startsAt(const QString &time)
    {
        belfry.setClock(u"07:59:00"_s);
        belfry.launch();
        const bool isReady = belfry.work({u"see|Bell"_s});
        belfry.setClock(time);
        return isReady;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(server.start());
        QVERIFY(SoundFiles::make({{bell, SoundFiles::tone(u"660"_s, 1)}}));
        belfry.set("PULSE_SERVER", QFile::decodeName(server.address()));
    }

    void firstStart_printsWhereTheTimetableIs()
    {
        belfry.launch();
        QVERIFY(belfry.work({u"see|Sample chime"_s}) && belfry.endsCleanly());
        QCOMPARE(belfry.takeOutput(), u"数据库不存在：%1\nbundleDbPath = %2/data.db\n"_s.arg(
                                          belfry.database, QStringLiteral(BELFRY_INSTALLED "/share/belfry")));
        belfry.makeBell(bell);
    }

    void bell_ringsOnTheSecondAndStopsOnTheSecond()
    {
        QVERIFY(startsAt(u"07:59:58"_s));
        QVERIFY(belfry.work({u"see|08:00:01"_s}));
        const SoundRecording begin = server.heard();
        QCOMPARE(begin.sounds().size(), size_t(1));
        const SoundRecording::Sound ring = begin.sounds().front();
        QCOMPARE(secondOf(ring.start), u"08:00:00"_s);
        QVERIFY(begin.unevenness(ring.start + 0.1, ring.end - 0.1, 800) < 300); // 11 waves of 660 Hz

        belfry.setClock(u"08:00:58"_s);
        const double resumed = server.seconds();
        QVERIFY(belfry.work({u"see|08:01:01"_s}));
        const SoundRecording finish = server.heard(resumed);
        QCOMPARE(finish.sounds().size(), size_t(1));
        QCOMPARE(secondOf(resumed + finish.sounds().front().end), u"08:01:00"_s);

        QVERIFY(belfry.endsCleanly());
        QCOMPARE(rowsIn(belfry.database, u"select title, begin, end from history"_s),
                 QStringList{u"Bell|2026-03-02 08:00:00|2026-03-02 08:01:00"_s});
        QCOMPARE(belfry.takeOutput(), QString());
        const QByteArray logged = belfry.readAllStandardError();
        QVERIFY2(logged.count('\n') == 1 && logged.contains(" belfry[") &&
                     logged.contains("Cannot inhibit idle suspend"),
                 logged.constData());
    }

    void endDuringABellAndWithAnOpenSheet_leavesTheLogEntryOpen()
    {
        QVERIFY(startsAt(u"07:59:58"_s));
        QVERIFY(
            belfry.work({u"see|08:00:01"_s, u"click|Edit"_s, u"click|Edit|Bell"_s, u"type|Title:|Tom"_s}));
        QVERIFY(belfry.endsCleanly());
        QCOMPARE(rowsIn(belfry.database, u"select end from history order by rowid desc limit 1"_s),
                 QStringList{u"NULL"_s});
        QCOMPARE(QDir(belfry.documents).entryList({u"data.db*"_s}), QStringList{u"data.db"_s});
    }

    void databaseThatFails_silencesNoBell_data()
    {
        QTest::addColumn<bool>("isLocked");
        QTest::newRow("locked by another program") << true;
        QTest::newRow("on a disk that takes no more") << false;
    }

    void databaseThatFails_silencesNoBell()
    {
        QFETCH(const bool, isLocked);
        QVERIFY(QFile::remove(belfry.database));
        belfry.makeBell(bell);
        const auto other = FMDatabase::databaseWithPath(belfry.database);
        QVERIFY(other->open());
        const auto setFailing = [&](bool fails) {
            if (isLocked)
                return other->executeStatements(fails ? u"begin exclusive"_s : u"commit"_s);
            const rlimit fileSize{fails ? 0 : RLIM_INFINITY, RLIM_INFINITY};
            return ::prlimit(pid_t(belfry.processId()), RLIMIT_FSIZE, &fileSize, nullptr) == 0;
        };
        const auto isHeard = [this] { return !server.heard(server.seconds() - 0.5).sounds().empty(); };
        belfry.setClock(u"07:59:00"_s);
        belfry.setChildProcessModifier([] { ::signal(SIGXFSZ, SIG_IGN); });
        belfry.launch();
        QVERIFY(setFailing(true) && belfry.work({u"click|Edit"_s}));
        QVERIFY(setFailing(false) && belfry.work({u"see|Bell"_s}));

        QVERIFY(setFailing(true));
        belfry.setClock(u"07:59:59"_s);
        QTRY_VERIFY_WITH_TIMEOUT(isHeard(), 20000);
        belfry.setClock(u"08:00:59"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!isHeard(), 20000);
        QVERIFY(belfry.work(
            {u"click|Add Plan"_s, u"type|Title:|Kept"_s, u"type|Music:|a.wav"_s, u"click|Add"_s}));
        QVERIFY(setFailing(false) && belfry.work({u"click|Add"_s, u"see|Kept"_s}) && belfry.endsCleanly());
        QCOMPARE(rowsIn(belfry.database, u"select title from plan union all select title from history"_s),
                 (QStringList{u"Bell"_s, u"Kept"_s}));
    }

    // A copy of the program with neither its resources nor its sound module, as after half an upgrade.
    void incompleteInstallation_isReported()
    {
        const QString program = belfry.home.filePath(u"bin/belfry"_s);
        QVERIFY(QDir(belfry.home.path()).mkdir(u"bin"_s));
        QVERIFY(QFile::copy(QStringLiteral(BELFRY_INSTALLED "/bin/belfry"), program));
        QVERIFY(QFile::remove(belfry.database));
        belfry.launch(program);
        QCOMPARE(belfry.awaitExit(), EXIT_FAILURE);

        QVERIFY(QFile::link(QStringLiteral(BELFRY_INSTALLED "/share"), belfry.home.filePath(u"share"_s)));
        belfry.makeBell(bell);
        belfry.takeOutput();
        belfry.set("LANGUAGE", u"de"_s);
        belfry.setClock(u"07:59:00"_s);
        belfry.launch(program);
        QVERIFY(belfry.work({u"see|Kein Ton"_s, u"click|OK"_s, u"see|Bell"_s}));
        belfry.setClock(u"07:59:58"_s);
        QVERIFY(belfry.work({u"see|08:00:01"_s}));
        QVERIFY(belfry.takeOutput().startsWith(u"错误: "_s));
        QVERIFY(belfry.endsCleanly());
    }
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "TestEndToEnd.moc"
