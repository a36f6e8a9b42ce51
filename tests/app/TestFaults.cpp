// The installed program while it is killed, while its database is locked, and while the disk fails.
//
// BELFRY_LONG in the environment repeats the random cases more often.

#include "support/BelfryProcess.h"
#include "support/SoundFiles.h"
#include "support/SoundServerProcess.h"
#include "support/Table.h"

#include <QRandomGenerator>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

bool isLong()
{
    return qEnvironmentVariableIsSet("BELFRY_LONG");
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Another program that has locked the database.
class Lock final
{
    Q_DISABLE_COPY_MOVE(Lock)

public:
    explicit Lock(const QString &database) : database(database) {}

    void hold()
    {
        db = FMDatabase::databaseWithPath(database);
        if (!db->open() || !db->executeStatements(u"begin exclusive"_s))
            qFatal("cannot lock the database");
    }

    void release() { db.reset(); }

private:
    const QString database;
    std::shared_ptr<FMDatabase> db;
};

// The database as a crash has left it, in a copy: the next start finds it as it is.
class CrashCopy final
{
    Q_DISABLE_COPY_MOVE(CrashCopy)

public:
    explicit CrashCopy(const QString &original)
    {
        for (const QString &ending : {QString(), u"-journal"_s})
            QFile::copy(original + ending, database + ending);
    }

    QStringList rows(const QString &query) const { return rowsIn(database, query); }

private:
    const QTemporaryDir folder;
    const QString database = folder.filePath(u"data.db"_s);
};

// Edits of the timetable by hand, each with what the table of plans holds when it has been acknowledged.
class Edits final
{
public:
    // From what the table holds, sorted.
    Edits(const QStringList &titles, int number, const QString &sound) : states{titles}
    {
        const QString first = u"Edit %1"_s.arg(number);
        const QString later = first + u" later"_s;
        // Cards out of view would be out of reach.
        if (titles.size() > 3)
            add({u"click|Select|"_s + titles[0], u"click|Delete"_s, u"click|Delete"_s}, titles[0], {});
        add({u"click|Add Plan"_s, u"type|Title:|"_s + first, u"type|Music:|"_s + sound, u"click|Add"_s}, {},
            first);
        add({u"click|Edit|"_s + first, u"type|Title:|"_s + later, u"click|Modify"_s}, first, later);
        play = lines.size();
        played = later;
        lines += u"click|Play|"_s + later;
    }

    QStringList lines{u"click|Edit"_s};
    qsizetype play = 0; // the line that plays a plan
    QString played;     // and its title

    // What the table may hold when that many lines have been executed: what was acknowledged, or one change
    // more.
    QList<QStringList> possible(qsizetype executed) const
    {
        const auto done = std::count_if(lines.begin(), lines.begin() + executed,
                                        [](const QString &line) { return line == "closed"_L1; });
        return states.mid(done, 2);
    }

private:
    void add(const QStringList &actions, const QString &gone, const QString &come)
    {
        lines += actions + QStringList{u"closed"_s};
        QStringList next = states.last();
        next.removeAll(gone);
        if (!come.isEmpty())
            next += come;
        next.sort();
        states += next;
    }

    QList<QStringList> states;
};

// Plans that begin at the same time.
const QStringList due{u"Due 1"_s, u"Due 2"_s, u"Due 3"_s};

const QString editedTitles = u"select title from plan where title like 'Edit%' order by title"_s;

} // namespace

class TestFaults final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    const QString sound = folder.filePath(u"bell.wav"_s);
    SoundServerProcess server;

    static Plan plan(const QString &title, const QString &begin, const QString &end)
    {
        return {.title = title, .begin = begin, .end = end, .isLoop = true};
    }

    // Whether the window's clock shows three more seconds.
    static bool clockGoesOn(const BelfryProcess &belfry)
    {
        const qsizetype before = belfry.ticks().size();
        return QTest::qWaitFor([&] { return belfry.ticks().size() >= before + 3; }, 6000);
    }

    static bool shell(const QString &command, const QString &folder)
    {
        QProcess process;
        process.setWorkingDirectory(folder);
        process.start(u"sh"_s, {u"-c"_s, command});
        return process.waitForFinished() && process.exitCode() == 0;
    }

    bool isHeard(double from) { return !server.heard(from).sounds().empty(); }

    // A timetable with one bell, half a minute before it.
    void prepare(BelfryProcess &belfry) const
    {
        belfry.makeDatabase({plan(u"Bell"_s, u"08:00"_s, u"08:10"_s)}, sound);
        belfry.clock.set(BelfryProcess::monday("07:59:30"));
    }

    // Whether the sheet that is open still has the title "Kept".
    static bool isKept(BelfryProcess &belfry)
    {
        return belfry.work({u"read|Title:"_s}) && belfry.answers().last() == "read\tTitle:\tKept"_L1;
    }

    // Whether the database holds everything that was acknowledged, and no half of a change. Prints what it
    // holds if not.
    static bool isWhole(const CrashCopy &copy, const BelfryProcess &belfry, const Edits &edits,
                        const QDateTime &bell)
    {
        const QStringList integrity = copy.rows(u"pragma integrity_check"_s);
        const QStringList titles = copy.rows(editedTitles);
        const QStringList log =
            copy.rows(u"select title from history where begin like '%1%' order by title"_s.arg(
                bell.toString(u"yyyy-MM-dd"_s)));
        const QStringList rung = log.filter(u"Due"_s);
        const bool isBegun = belfry.ticks().contains(u"08:00:00"_s);
        const bool isPlayed = belfry.answers().size() > edits.play;
        const bool isWhole =
            integrity == QStringList{u"ok"_s} && edits.possible(belfry.answers().size()).contains(titles) &&
            rung == (isBegun ? due : due.mid(0, rung.size())) && (!isPlayed || log.contains(edits.played));
        if (!isWhole)
            qWarning() << integrity << titles << log << belfry.answers() << belfry.ticks();
        return isWhole;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(SoundFiles::make({{sound, SoundFiles::tone(u"660"_s, 20)}}));
        QVERIFY(server.start());
    }

    void killedAtAnyMoment_keepsWhatItAcknowledged()
    {
        const auto seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        BelfryProcess belfry;
        QList<Plan> plans{plan(u"Ends"_s, u"07:30"_s, u"08:00"_s)};
        for (const QString &title : due)
            plans += plan(title, u"08:00"_s, u"08:30"_s);
        belfry.makeDatabase(plans, sound);
        QStringList titles;
        for (int round = 0, rounds = isLong() ? 300 : 12; round < rounds; ++round) {
            const QDateTime bell = BelfryProcess::monday("08:00:00").addDays(round);
            const Edits edits(titles, round, sound);
            belfry.clock.set(bell.addMSecs(-random.bounded(500)));
            QVERIFY(belfry.start());
            belfry.tell(edits.lines);
            const qsizetype last = random.bounded(edits.lines.size() + 1);
            QVERIFY(round % 2 == 0 ? QTest::qWaitFor([&] { return belfry.answers().size() >= last; }, 30000)
                                   : belfry.waitUntil(bell));
            QThread::usleep(random.bounded(30'000));
            QVERIFY(belfry.kill());
            const CrashCopy copy(belfry.database);
            QVERIFY2(isWhole(copy, belfry, edits, bell),
                     qPrintable(u"seed %1, round %2"_s.arg(seed).arg(round)));
            titles = copy.rows(editedTitles);
        }
        QVERIFY(belfry.start() && belfry.work({u"click|Edit"_s}) && belfry.quit());
    }

    void killedInTheFirstStart_leavesTheWholeTemplateOrNoFile()
    {
        BelfryProcess belfry;
        for (int round = 0; round < (isLong() ? 100 : 5); ++round) {
            QDir(belfry.documents).removeRecursively();
            QVERIFY(belfry.start());
            QVERIFY(QTest::qWaitFor([&] { return QFile::exists(belfry.documents); }, 30000));
            QThread::usleep(QRandomGenerator::global()->bounded(2000));
            QVERIFY(belfry.kill());
            if (QFile::exists(belfry.database))
                QCOMPARE(rowsIn(belfry.database, u"select title from plan"_s),
                         QStringList{u"Sample chime"_s});
        }
        QVERIFY(belfry.start() && belfry.work({u"click|Edit"_s}) && belfry.quit());
    }

    void lockedDatabase_delaysTheClockOnly()
    {
        BelfryProcess belfry(server.address());
        prepare(belfry);
        Lock lock(belfry.database);
        QVERIFY(belfry.start());
        QVERIFY(belfry.work({u"click|Edit"_s, u"click|Edit|Bell"_s, u"type|Title:|Kept"_s}));

        belfry.clock.set(BelfryProcess::monday("07:59:59.500"));
        lock.hold();
        const double before = server.seconds();
        QTRY_VERIFY_WITH_TIMEOUT(isHeard(before), 7000);
        QVERIFY(clockGoesOn(belfry));
        QVERIFY(belfry.work({u"click|Modify"_s}) && isKept(belfry));
        QVERIFY(clockGoesOn(belfry));
        lock.release();
        QVERIFY(belfry.work({u"click|Modify"_s, u"closed"_s}));

        lock.hold();
        belfry.clock.set(BelfryProcess::monday("08:09:59.500"));
        QVERIFY(belfry.waitUntil(BelfryProcess::monday("08:10:01.500")));
        const double after = server.seconds();
        QVERIFY(clockGoesOn(belfry));
        QVERIFY(!isHeard(after));
        lock.release();
        QCOMPARE(rowsIn(belfry.database, u"select title from plan where begin = '08:00'"_s),
                 QStringList{u"Kept"_s});
        QVERIFY(belfry.process.readAllStandardError().contains("database is locked"));
    }

    // `before` and `after` the start, a shell command in the documents folder causes the fault;
    // `repair` undoes it, so that what is in the editor can be saved.
    void diskFault_isLoggedAndSurvived_data()
    {
        columns<QString, QString, QString, QString, QString>("wrapper", "before", "after", "repair", "log");
        const auto row = [](const char *name, const QString &wrapper, const char *before, const char *after,
                            const char *repair, const char *log) {
            QTest::newRow(name) << wrapper << QString::fromLatin1(before) << QString::fromLatin1(after)
                                << QString::fromLatin1(repair) << QString::fromLatin1(log);
        };
        row("full", u"unshare --map-root-user --mount"_s,
            "cp data.db .. && mount -t tmpfs -o size=100k none . && cd ../My* && cp ../data.db .",
            "! cat /dev/zero >filler", "rm filler", "database or disk is full");
        row("the file is removed", {}, ":", "rm data.db", "", "attempt to write a readonly database");
        row("garbage in the file's place", {}, "yes garbage | head -c 20000 >data.db", ":", "",
            "file is not a database");
    }
    void diskFault_isLoggedAndSurvived()
    {
        QFETCH(const QString, wrapper);
        QFETCH(const QString, before);
        QFETCH(const QString, after);
        QFETCH(const QString, repair);
        QFETCH(const QString, log);
        if (wrapper.startsWith(u"unshare"_s) && !shell(wrapper + u" mount -t tmpfs none ."_s, folder.path()))
            QSKIP("A small disk cannot be mounted here.");
        BelfryProcess belfry(server.address());
        prepare(belfry);
        belfry.process.setWorkingDirectory(belfry.documents);
        QVERIFY(belfry.start(wrapper.split(u' ', Qt::SkipEmptyParts) +
                             QStringList{u"sh"_s, u"-c"_s, before + u" && exec \"$@\""_s, u"sh"_s}));
        const QStringList values{u"click|Edit"_s, u"click|Add Plan"_s, u"type|Title:|Kept"_s,
                                 u"type|Music:|"_s + sound};
        QVERIFY(belfry.work(values));
        // As the program sees it.
        const QString documents = u"/proc/%1/root"_s.arg(belfry.process.processId()) + belfry.documents;
        QVERIFY(shell(after, documents));
        const QByteArray stored = contentOf(documents + u"/data.db"_s);

        belfry.clock.set(BelfryProcess::monday("07:59:59.500"));
        const double began = server.seconds();
        QVERIFY(clockGoesOn(belfry));
        QVERIFY(belfry.ticks().contains(u"08:00:00"_s));
        QCOMPARE(isHeard(began), !before.contains(u"garbage"_s));
        QVERIFY(belfry.work({u"click|Add"_s}) && isKept(belfry));
        QVERIFY(clockGoesOn(belfry));
        QCOMPARE(contentOf(documents + u"/data.db"_s), stored);
        const QString written = QString::fromUtf8(belfry.process.readAllStandardError());
        QVERIFY2(written.contains(log), qPrintable(written));
        if (repair.isEmpty())
            return;
        QVERIFY(shell(repair, documents));
        QVERIFY(belfry.work({u"click|Add"_s, u"closed"_s}));
        QVERIFY(contentOf(documents + u"/data.db"_s).contains("Kept"));
    }
};

QTEST_GUILESS_MAIN(TestFaults)
#include "TestFaults.moc"
