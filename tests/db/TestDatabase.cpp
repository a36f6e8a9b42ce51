#include "db/FMDatabase.h"
#include "db/FMResultSet.h"
#include "db/FMStatement.h"
#include "support/LogCapture.h"
#include "support/Table.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <sqlite3.h>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;

using OptionalString = std::optional<QString>;
Q_DECLARE_METATYPE(OptionalString)

namespace {

const QVariant nullMarker = QVariant::fromValue(nullptr);
const QString misuse = u"Error calling sqlite3_step (21: out of memory) rs"_s;

QStringList column(FMDatabase &db, const QString &sql)
{
    QStringList texts;
    const auto rows = db.executeQuery(sql, {});
    while (rows && rows->next())
        texts << rows->stringForColumnIndex(0).value_or(u"absent"_s);
    return texts;
}

// What SQLite's next close is to answer, for the failures that cannot be brought about; the linker puts the
// function below in place of SQLite's own.
int nextClose = SQLITE_OK;

// A system whose sleeps are over at once.
int sleepNotAtAll(sqlite3_vfs *, int)
{
    return 0;
}

} // namespace

extern "C" int __real_sqlite3_close(sqlite3 *connection);
extern "C" int __wrap_sqlite3_close(sqlite3 *connection)
{
    const int closed = __real_sqlite3_close(connection);
    return nextClose == SQLITE_OK ? closed : std::exchange(nextClose, SQLITE_OK);
}

// Each test begins with an open database in memory, `db`, and an empty log.
class TestDatabase final : public QObject
{
    Q_OBJECT

private:
    std::shared_ptr<FMDatabase> db;
    std::unique_ptr<LogCapture> log;
    std::unique_ptr<QTemporaryDir> folder;

    QString description() const { return u"<FMDatabase: 0x%1>"_s.arg(quintptr(db.get()), 0, 16); }
    QString filePath() const { return folder->filePath(u"Schüler 'A' 100%1 数据 ♪.db"_s); }

    std::shared_ptr<FMDatabase> openFile() const
    {
        auto file = FMDatabase::databaseWithPath(filePath());
        return file->open() ? file : nullptr;
    }

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        log = std::make_unique<LogCapture>();
        db = FMDatabase::databaseWithPath(std::nullopt);
        QVERIFY(db->open());
    }
    void cleanup() { log = nullptr; }

    void open_failsUntilTheFolderIsThere_thenKeepsTheConnection()
    {
        const auto file = FMDatabase::databaseWithPath(folder->filePath(u"later/data.db"_s));
        QVERIFY(!file->open());
        QVERIFY(!file->isOpen());
        QCOMPARE(log->takeLines(), {u"error opening!: 14"_s});
        QVERIFY(QDir(folder->path()).mkdir(u"later"_s));
        QVERIFY(file->open() && file->isOpen());
        QVERIFY(file->executeStatements(u"create temporary table t (a)"_s));
        QVERIFY(file->open() && file->executeStatements(u"insert into t values (1)"_s));
        QCOMPARE(log->lines(), {});
    }

    void open_fileThatIsNoDatabase_leavesItUnchanged()
    {
        const QByteArray content = QByteArray("These are no plans. ").repeated(100);
        QFile file(filePath());
        QVERIFY(file.open(QFile::ReadWrite));
        file.write(content);
        file.seek(0);
        db = openFile();
        QVERIFY(!db->executeStatements(u"create table t (a)"_s));
        QVERIFY(!db->executeQuery(u"select * from t"_s, {}));
        QCOMPARE(log->lines(), QStringList({u"Error inserting batch: file is not a database"_s,
                                            u"DB Error: 26 \"file is not a database\""_s,
                                            u"DB Query: select * from t"_s, u"DB Path: "_s + filePath()}));
        QCOMPARE(file.readAll(), content);
    }

    void close_finalizesLeakedStatementsAndRefusesQueries()
    {
        sqlite3_stmt *leaked = nullptr;
        for (int i = 0; i < 2; ++i)
            QCOMPARE(sqlite3_prepare_v2(db->sqliteHandle(), "select 1", -1, &leaked, nullptr), SQLITE_OK);
        QVERIFY(db->close());
        QCOMPARE(log->takeLines(), QStringList(2, u"Closing leaked statement"_s));
        QVERIFY(!db->isOpen() && !db->sqliteHandle());
        QVERIFY(db->close());
        QVERIFY(!db->executeQuery(u"select 1"_s, {}));
        QCOMPARE(log->lines(), {u"The FMDatabase %1 is not open."_s.arg(description())});
        QVERIFY(!db->executeStatements(u"select 1"_s));
    }

    void close_failure_isLoggedAndCloses()
    {
        nextClose = SQLITE_IOERR;
        QVERIFY(db->close());
        QCOMPARE(log->lines(), {u"error closing!: 10"_s});
        QVERIFY(!db->isOpen() && !db->sqliteHandle());
    }

    void query_failure_isLoggedAndLeavesTheConnectionUsable_data()
    {
        columns<QString, QVariantList, bool, QStringList>("sql", "arguments", "logsErrors", "lines");
        const QString select = u"select * from t"_s;
        QTest::newRow("missing table") << select << QVariantList() << true
                                       << QStringList{u"DB Error: 1 \"no such table: t\""_s,
                                                      u"DB Query: select * from t"_s, u"DB Path: (null)"_s};
        QTest::newRow("missing table, unlogged") << select << QVariantList() << false << QStringList();
        QTest::newRow("too few arguments")
            << u"select ?, ?"_s << QVariantList{1} << true
            << QStringList{u"Error: the bind count is not correct for the # of variables (executeQuery)"_s};
        QTest::newRow("argument over the length limit")
            << u"select ?"_s << QVariantList{QByteArray(200, 'x')} << true
            << QStringList{u"Error: unable to bind (18, string or blob too big"_s};
    }
    void query_failure_isLoggedAndLeavesTheConnectionUsable()
    {
        QFETCH(QString, sql);
        QFETCH(QVariantList, arguments);
        QFETCH(bool, logsErrors);
        sqlite3_limit(db->sqliteHandle(), SQLITE_LIMIT_LENGTH, 100);
        db->setLogsErrors(logsErrors);
        QVERIFY(!db->executeQuery(sql, arguments));
        QTEST(log->lines(), "lines");
        QVERIFY(!sqlite3_next_stmt(db->sqliteHandle(), nullptr));
        QCOMPARE(column(*db, u"select 7"_s), {u"7"_s});
    }

    void query_withinAnother_isRefused()
    {
        QStringList lines;
        Log::setSink([&](const QString &line) {
            lines << line;
            if (lines.size() == 1 && db->executeQuery(u"select 2"_s, {}))
                lines << u"ran"_s;
        });
        db->setTraceExecution(true);
        const QVariantList arguments = {u"a"_s, QByteArray("abc"), nullMarker, 5, u"one too many"_s};
        const auto rows = db->executeQuery(u"select ?, ?, ?, ?"_s, arguments);
        QVERIFY(rows && rows->next());
        QCOMPARE(lines, QStringList({description() + u" executeQuery: select ?, ?, ?, ?"_s,
                                     u"The FMDatabase %1 is currently in use."_s.arg(description()),
                                     u"obj: a"_s, u"data: 3 bytes"_s, u"obj: <null>"_s, u"obj: 5"_s}));
    }

    void query_argumentsReachTheRow_data()
    {
        columns<QString, QVariant, QVariant, OptionalString>("sql", "argument", "object", "text");
        const auto row = [](const char *name, const QVariant &argument, const QVariant &object,
                            const OptionalString &text, const QString &sql = u"select ? as a"_s) {
            QTest::newRow(name) << sql << argument << object << text;
        };
        row("absent", QVariant(), nullMarker, std::nullopt);
        row("null marker", nullMarker, nullMarker, std::nullopt);
        row("signed char", QVariant::fromValue<signed char>(-128), -128LL, u"-128"_s);
        row("plain char", QVariant::fromValue<char>(65), 65LL, u"65"_s);
        row("unsigned char", QVariant::fromValue<uchar>(255), 255LL, u"255"_s);
        row("short", QVariant::fromValue<short>(-32768), -32768LL, u"-32768"_s);
        row("unsigned short", QVariant::fromValue<ushort>(65535), 65535LL, u"65535"_s);
        row("int", -2147483647 - 1, -2147483648LL, u"-2147483648"_s);
        row("unsigned int", 4294967295U, 4294967295LL, u"4294967295"_s);
        row("long", QVariant::fromValue(-9000000000L), -9000000000LL, u"-9000000000"_s);
        row("unsigned long", QVariant::fromValue(~0UL), -1LL, u"-1"_s);
        row("long long", 9223372036854775807LL, 9223372036854775807LL, u"9223372036854775807"_s);
        row("unsigned long long", ~0ULL, -1LL, u"-1"_s);
        row("float", 0.1F, double(0.1F), u"0.100000001490116"_s);
        row("double", 2.5, 2.5, u"2.5"_s);
        row("boolean true", true, 1LL, u"1"_s);
        row("bytes", QByteArray("a\0b", 3), QByteArray("a\0b", 3), u"a"_s);
        row("no bytes", QByteArray(), nullMarker, u""_s);
        row("moment", QDateTime::fromMSecsSinceEpoch(1500, Qt::UTC), 1.5, u"1.5"_s);
        row("text", u"Schüler ♪ 𝄞 'x'"_s, u"Schüler ♪ 𝄞 'x'"_s, u"Schüler ♪ 𝄞 'x'"_s);
        row("empty text", u""_s, u""_s, u""_s);
        row("anything with a text", QDate(2024, 2, 29), u"2024-02-29"_s, u"2024-02-29"_s);
        const auto textRow = [&row](const char *name, const QByteArray &bytes, const OptionalString &text) {
            row(name, bytes, text ? QVariant(*text) : nullMarker, text, u"select cast(? as text) as a"_s);
        };
        textRow("stray byte", "A\xFF", std::nullopt);
        textRow("letter cut off at the end", "A\xC3", std::nullopt);
        textRow("lone surrogate", "\xED\xA0\x80", std::nullopt);
        textRow("real replacement character", "A\xEF\xBF\xBD", u"A\uFFFD"_s);
        textRow("byte order mark", "\xEF\xBB\xBF!", u"\uFEFF!"_s);
    }
    void query_argumentsReachTheRow()
    {
        QFETCH(QString, sql);
        QFETCH(QVariant, argument);
        QFETCH(QVariant, object);
        QFETCH(OptionalString, text);
        const auto rows = db->executeQuery(sql, {argument});
        QVERIFY(rows && rows->next());
        const QVariant read = (*rows)[u"a"_s];
        QCOMPARE(read.typeId(), object.typeId());
        QCOMPARE(read, object);
        QCOMPARE(rows->stringForColumn(u"a"_s), text);
    }

    void query_findsColumnsByNameInAnyCase_elseTheyAreAbsent()
    {
        const auto rows = db->executeQuery(u"select 'a' as Title, 'b' as ÄRA, 'c' as tITLE"_s, {});
        QVERIFY(rows && rows->next());
        QCOMPARE(rows->columnNameToIndexMap(), (FMResultSet::ColumnMap{{u"ära"_s, 1}, {u"title"_s, 2}}));
        QCOMPARE(rows->stringForColumn(u"TITLE"_s), u"c"_s);
        QCOMPARE(rows->stringForColumn(u"Ära"_s), u"b"_s);
        QCOMPARE(log->takeLines(), {});
        QCOMPARE(rows->columnIndexForName(u"Begin %1"_s), -1);
        QCOMPARE(rows->stringForColumn(u"Begin %1"_s), std::nullopt);
        QVERIFY(!(*rows)[u"Begin %1"_s].isValid());
        QCOMPARE(log->lines(), QStringList(3, u"Warning: I could not find the column named 'begin %1'."_s));
        for (const int index : {-1, 3}) {
            QVERIFY(!rows->objectForColumnIndex(index).isValid());
            QCOMPARE(rows->dataForColumnIndex(index), std::nullopt);
        }
    }

    void resultSet_closesBehindTheLastRow()
    {
        const auto rows = db->executeQuery(u"values (1), (2), (3)"_s, {});
        for (int i = 0; i < 3; ++i)
            QVERIFY(rows->next());
        rows->statement()->setQuery(u"values"_s);
        QVERIFY(rows->statement()->description().endsWith(u" 1 hit(s) for query values"_s));
        QVERIFY(rows->statement()->inUse() && db->hasOpenResultSets());
        QVERIFY(!rows->next());
        QVERIFY(!rows->statement() && !rows->parentDB() && !db->hasOpenResultSets());
        QCOMPARE(log->lines(), {});

        FMError error;
        QVERIFY(!rows->nextWithError(&error));
        QCOMPARE(log->lines(), {misuse});
        QCOMPARE(error.domain, u"FMDatabase"_s);
        QCOMPARE(error.code, SQLITE_MISUSE);
        QCOMPARE(error.description, u"parentDB does not exist"_s);
        QCOMPARE(rows->stringForColumnIndex(0), std::nullopt);
    }

    void resultSet_stepFailure_isToldApart()
    {
        QVERIFY(db->executeStatements(u"create table t (a unique); insert into t values (1)"_s));
        for (const auto &sql : {u"select abs(-9223372036854775808)"_s, u"insert into t values (1)"_s}) {
            FMError error;
            QVERIFY(!db->executeQuery(sql, {})->nextWithError(&error));
            QVERIFY(!db->hasOpenResultSets());
            QVERIFY(log->lines().last().contains(error.description));
        }
        QCOMPARE(
            log->lines(),
            QStringList({u"Error calling sqlite3_step (1: integer overflow) rs"_s,
                         u"Unknown error calling sqlite3_step (19: UNIQUE constraint failed: t.a) rs"_s}));
    }

    void resultSet_keepsItsConnectionUntilEitherCloses()
    {
        const std::weak_ptr<FMDatabase> connection = db;
        const auto rows = db->executeQuery(u"values (1), (2)"_s, {});
        db = nullptr;
        QVERIFY(rows->next());
        FMDatabase &kept = *connection.lock();
        QVERIFY(kept.close());
        QVERIFY(connection.expired());
        QVERIFY(!rows->next());
        QCOMPARE(log->lines(), {misuse});
    }

    void script_stopsAtTheFirstFailure()
    {
        const QString sql = u"create table t (a); insert into t values ('ä'); insert into u values (1);"
                            "insert into t values (2)"_s;
        QVERIFY(!db->executeStatements(sql));
        QCOMPARE(log->takeLines(), {u"Error inserting batch: no such table: u"_s});
        db->setLogsErrors(false);
        QVERIFY(!db->executeStatements(sql));
        QCOMPARE(log->lines(), {});
        QCOMPARE(column(*db, u"select a from t"_s), {u"ä"_s});
    }

    void script_handsItsRowsToTheBlock()
    {
        QList<QVariantHash> rows;
        const auto keep = [&rows](const QVariantHash &row) {
            rows << row;
            return row.contains(u"stop"_s) ? 1 : 0;
        };
        QVERIFY(db->executeStatements(u"select 1 as a, null as b; values ('ä')"_s, keep));
        QCOMPARE(rows,
                 QList<QVariantHash>({{{u"a"_s, u"1"_s}, {u"b"_s, nullMarker}}, {{u"column1"_s, u"ä"_s}}}));
        QVERIFY(!db->executeStatements(u"select 1 as stop; create table t (a)"_s, keep));
        QCOMPARE(column(*db, u"select count(*) from sqlite_master"_s), {u"0"_s});
    }

    void lockedFile_isWaitedForAsLongAsSet()
    {
        const auto file = openFile(), other = openFile();
        QVERIFY(file->executeStatements(u"create table t (a)"_s));
        for (const double seconds : {2.0, 0.2, 0.0}) {
            if (seconds != file->maxBusyRetryTimeInterval())
                file->setMaxBusyRetryTimeInterval(seconds);
            const auto rows = file->executeQuery(u"select * from t"_s, {});
            QVERIFY(other->executeStatements(u"begin exclusive"_s));

            FMError error;
            QElapsedTimer waited;
            waited.start();
            QVERIFY(!rows->nextWithError(&error));
            QVERIFY(waited.elapsed() >= qint64(seconds * 1000));
            QCOMPARE(error.code, SQLITE_BUSY);
            const QString line = u"-[FMResultSet internalStepWithError:]:186 Database busy (%1)"_s;
            QCOMPARE(log->takeLines(), QStringList({line.arg(filePath()), u"Database busy"_s}));
            QVERIFY(!file->hasOpenResultSets());
            QVERIFY(other->executeStatements(u"commit"_s));
            QVERIFY(file->executeStatements(u"insert into t values (1)"_s));
        }
    }

    void lockedFile_onASystemThatDoesNotSleep_isLogged()
    {
        const auto file = openFile(), other = openFile();
        file->setMaxBusyRetryTimeInterval(0.001);
        QVERIFY(other->executeStatements(u"create table t (a); begin exclusive"_s));
        sqlite3_vfs *usual = sqlite3_vfs_find(nullptr);
        sqlite3_vfs sleepless = *usual;
        sleepless.zName = "sleepless";
        sleepless.xSleep = sleepNotAtAll;
        sqlite3_vfs_register(&sleepless, 1);
        QVERIFY(!file->executeStatements(u"insert into t values (1)"_s));
        sqlite3_vfs_register(usual, 1);
        sqlite3_vfs_unregister(&sleepless);
        const QRegularExpression warning(
            u"^WARNING: Requested sleep of [5-9]\\d milliseconds, but SQLite returned 0\\. "
            "Maybe SQLite wasn't built with HAVE_USLEEP=1\\?$"_s);
        QVERIFY2(warning.match(log->lines().value(0)).hasMatch(), qPrintable(log->lines().value(0)));
    }

    void lockedFile_releasedInTime_isWritten()
    {
        const auto file = openFile(), other = openFile();
        file->setMaxBusyRetryTimeInterval(60);
        QVERIFY(other->executeStatements(u"create table t (a); begin exclusive"_s));
        std::thread release([&other] {
            sqlite3_sleep(200);
            other->executeStatements(u"commit"_s);
        });
        const bool isWritten = file->executeStatements(u"insert into t values ('a')"_s);
        release.join();
        QVERIFY(isWritten);
        QCOMPARE(column(*file, u"select a from t"_s), {u"a"_s});
    }
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "TestDatabase.moc"
