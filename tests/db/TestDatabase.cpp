#include "db/FMDatabase.h"
#include "db/FMResultSet.h"
#include "db/FMStatement.h"
#include "support/LogCapture.h"
#include "support/TemplateDatabase.h"

#include <QDateTime>
#include <QDir>
#include <QTest>

#include <sqlite3.h>
#include <thread>

using namespace Qt::StringLiterals;

// Each test begins with an open database in memory, `db`, and an empty log.
class TestDatabase final : public QObject
{
    Q_OBJECT

private:
    std::shared_ptr<FMDatabase> db;
    std::unique_ptr<LogCapture> log;

private Q_SLOTS:
    void init()
    {
        log = std::make_unique<LogCapture>();
        db = FMDatabase::databaseWithPath(std::nullopt);
        QVERIFY(db->open());
    }
    void cleanup() { log = nullptr; }

    void open_failsUntilTheFolderIsThere_thenKeepsTheConnection()
    {
        const QTemporaryDir folder;
        const auto file = FMDatabase::databaseWithPath(folder.filePath(u"später 'A'/100%1 数据 ♪.db"_s));
        QVERIFY(!file->open() && !file->isOpen());
        QCOMPARE(log->takeLines(), {u"error opening!: 14"_s});
        QVERIFY(QDir(folder.path()).mkdir(u"später 'A'"_s));
        QVERIFY(file->open() && file->isOpen() && file->executeStatements(u"create temporary table t (a)"_s));
        QVERIFY(file->open() && file->executeStatements(u"insert into t values (1)"_s));
        QCOMPARE(log->lines(), {});
    }

    void close_dropsTheConnectionWhateverHappens()
    {
        sqlite3_stmt *leaked = nullptr;
        for (int i = 0; i < 2; ++i)
            QCOMPARE(sqlite3_prepare_v2(db->sqliteHandle(), "select 1", -1, &leaked, nullptr), SQLITE_OK);
        QVERIFY(db->close());
        QCOMPARE(log->takeLines(), QStringList(2, u"Closing leaked statement"_s));
        QVERIFY(db->close() && !db->isOpen() && !db->executeStatements(u"select 1"_s));
        QVERIFY(!db->executeQuery(u"select 1"_s, {}));
        QCOMPARE(log->lines(),
                 {u"The FMDatabase <FMDatabase: 0x%1> is not open."_s.arg(quintptr(db.get()), 0, 16)});
    }

    void query_failure_isLoggedAndLeavesTheConnectionUsable()
    {
        const auto isRefused = [this](const QString &sql, const QVariantList &arguments) {
            return !db->executeQuery(sql, arguments) && !sqlite3_next_stmt(db->sqliteHandle(), nullptr) &&
                   rowsOf(*db, u"select 7"_s) == QStringList(u"7"_s);
        };
        sqlite3_limit(db->sqliteHandle(), SQLITE_LIMIT_LENGTH, 100);
        QVERIFY(isRefused(u"select * from t"_s, {}));
        QCOMPARE(log->takeLines(), (QStringList{u"DB Error: 1 \"no such table: t\""_s,
                                                u"DB Query: select * from t"_s, u"DB Path: (null)"_s}));
        QVERIFY(isRefused(u"select ?, ?"_s, {1}));
        QCOMPARE(log->takeLines(),
                 {u"Error: the bind count is not correct for the # of variables (executeQuery)"_s});
        QVERIFY(isRefused(u"select ?"_s, {QByteArray(200, 'x')}));
        QCOMPARE(log->takeLines(), {u"Error: unable to bind (18, string or blob too big"_s});
        db->setLogsErrors(false);
        QVERIFY(isRefused(u"select * from t"_s, {}));
        QCOMPARE(log->lines(), {});
    }

    void query_argumentsReachTheRow()
    {
        const QDateTime moment = QDateTime::fromMSecsSinceEpoch(1500, Qt::UTC);
        const QList<std::pair<QVariant, QString>> cases{
            {QVariant(), u"null std::nullptr_t "_s},
            {QByteArray(), u"blob std::nullptr_t "_s},
            {QByteArray("a\0b", 3), u"blob QByteArray a\0b"_s},
            {true, u"integer qlonglong 1"_s},
            {~0ULL, u"integer qlonglong -1"_s},
            {0.1F, u"real double 0.10000000149011612"_s},
            {moment, u"real double 1.5"_s},
            {u"♪ 𝄞 'x'"_s, u"text QString ♪ 𝄞 'x'"_s},
            {u""_s, u"text QString "_s},
            {QDate(2024, 2, 29), u"text QString 2024-02-29"_s},
        };
        for (const auto &[argument, read] : cases) {
            const auto rows = db->executeQuery(u"select typeof(?1), ?1"_s, {argument, u"surplus"_s});
            QVERIFY(rows->next());
            const QVariant object = rows->objectForColumnIndex(1);
            QCOMPARE(*rows->stringForColumnIndex(0) + u' ' + QString::fromLatin1(object.typeName()) + u' ' +
                         object.toString(),
                     read);
        }
        QCOMPARE(rowsOf(*db, u"values (5), (2.5), (null), (''), (cast(x'efbbbf21' as text))"_s),
                 QStringList({u"5"_s, u"2.5"_s, u"NULL"_s, u""_s, u"\uFEFF!"_s}));
    }

    void columns_areFoundByNameInAnyCase_elseTheyAreAbsent()
    {
        const auto rows = db->executeQuery(u"select 'a' as Title, 'b' as ÄRA, 'c' as tITLE"_s, {});
        QVERIFY(rows && rows->next());
        QCOMPARE(rows->stringForColumn(u"TITLE"_s), u"c"_s);
        QCOMPARE((*rows)[u"Ära"_s], u"b"_s);
        QCOMPARE(log->takeLines(), {});
        QCOMPARE(rows->stringForColumn(u"Begin %1"_s), std::nullopt);
        QVERIFY(!(*rows)[u"Begin %1"_s].isValid());
        QCOMPARE(log->lines(), QStringList(2, u"Warning: I could not find the column named 'begin %1'."_s));
        QVERIFY(!rows->objectForColumnIndex(3).isValid());
    }

    void resultSet_closesAfterTheLastRow()
    {
        const auto rows = db->executeQuery(u"values (1), (2)"_s, {});
        QVERIFY(rows->next() && rows->next());
        QVERIFY(rows->statement()->inUse() && db->hasOpenResultSets());
        QVERIFY(!rows->next());
        QVERIFY(!rows->statement() && !rows->parentDB() && !db->hasOpenResultSets());
        QCOMPARE(log->lines(), {});

        FMError error;
        QVERIFY(!rows->nextWithError(&error));
        QCOMPARE(log->lines(), {u"Error calling sqlite3_step (21: out of memory) rs"_s});
        QCOMPARE(error.domain + QString::number(error.code) + error.description,
                 u"FMDatabase21parentDB does not exist"_s);
        QCOMPARE(rows->stringForColumnIndex(0), std::nullopt);
    }

    void resultSet_stepFailure_isLoggedWithItsReason()
    {
        QVERIFY(db->executeStatements(u"create table t (a unique); insert into t values (1)"_s));
        FMError error;
        QVERIFY(!db->executeQuery(u"select abs(-9223372036854775808)"_s, {})->nextWithError(&error));
        QCOMPARE(error.description, u"integer overflow"_s);
        QVERIFY(!db->executeQuery(u"insert into t values (1)"_s, {})->next() && !db->hasOpenResultSets());
        QCOMPARE(
            log->lines(),
            (QStringList{u"Error calling sqlite3_step (1: integer overflow) rs"_s,
                         u"Unknown error calling sqlite3_step (19: UNIQUE constraint failed: t.a) rs"_s}));
    }

    void resultSet_keepsItsConnectionUntilEitherCloses()
    {
        const std::weak_ptr<FMDatabase> watch = db;
        FMDatabase *const connection = db.get();
        const auto rows = db->executeQuery(u"values (1), (2)"_s, {});
        db = nullptr;
        QVERIFY(rows->next() && connection->close());
        QVERIFY(watch.expired() && !rows->next());
    }

    void script_stopsAtTheFirstFailureOrWhereTheBlockSays()
    {
        const QString sql = u"create table t (a); insert into t values ('ä'); insert into u values (1);"
                            "insert into t values (2)"_s;
        QVERIFY(!db->executeStatements(sql));
        db->setLogsErrors(false);
        QVERIFY(!db->executeStatements(sql));
        QCOMPARE(log->lines(), {u"Error inserting batch: no such table: u"_s});
        QList<QVariantHash> rows;
        const auto stopAtTheSecond = [&rows](const QVariantHash &row) {
            rows << row;
            return int(rows.size()) - 1;
        };
        QVERIFY(!db->executeStatements(u"select 'ä' as a, null as b; select 1; delete from t"_s,
                                       stopAtTheSecond));
        QCOMPARE(rows.value(0), (QVariantHash{{u"a"_s, u"ä"_s}, {u"b"_s, QVariant::fromValue(nullptr)}}));
        QCOMPARE(rowsOf(*db, u"select a from t"_s), {u"ä"_s});
    }

    void lockedFile_isWaitedForAsLongAsSet()
    {
        const TemplateDatabase base;
        QCOMPARE(base.db->maxBusyRetryTimeInterval(), 2.0);
        const auto other = FMDatabase::databaseWithPath(base.path());
        const auto rows = base.db->executeQuery(u"select * from plan"_s, {});
        QVERIFY(other->open() && other->executeStatements(u"begin exclusive"_s));
        base.db->setMaxBusyRetryTimeInterval(0.2);
        QVERIFY(!rows->next() && base.db->lastErrorIsBusy());
        const QString line = u"-[FMResultSet internalStepWithError:]:186 Database busy (%1)"_s;
        QCOMPARE(log->lines(), QStringList({line.arg(base.path()), u"Database busy"_s}));

        base.db->setMaxBusyRetryTimeInterval(60);
        std::thread release([&other] {
            std::this_thread::sleep_for(std::chrono::milliseconds(400));
            other->executeStatements(u"commit"_s);
        });
        const bool isWritten = base.db->executeStatements(u"delete from plan"_s);
        release.join();
        QVERIFY(isWritten);
    }
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "TestDatabase.moc"
