#include "db/FMDatabase.h"
#include "db/FMResultSet.h"
#include "db/FMStatement.h"
#include "support/LogCapture.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <sqlite3.h>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

const QVariant nullMarker = QVariant::fromValue(nullptr);

// The type and the text of a value.
QString described(const QVariant &value)
{
    return QString::fromLatin1(value.typeName()) + u' ' + value.toString();
}

QStringList column(FMDatabase &db, const QString &sql)
{
    QStringList texts;
    const auto rows = db.executeQuery(sql, {});
    while (rows && rows->next())
        texts << rows->stringForColumnIndex(0).value_or(u"absent"_s);
    return texts;
}

} // namespace

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
        QVERIFY(!file->open() && !file->isOpen());
        QCOMPARE(log->takeLines(), {u"error opening!: 14"_s});
        QVERIFY(QDir(folder->path()).mkdir(u"later"_s));
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
        QCOMPARE(log->takeLines(), {u"The FMDatabase %1 is not open."_s.arg(description())});
    }

    void query_failure_isLoggedAndLeavesTheConnectionUsable()
    {
        const auto isRefused = [this](const QString &sql, const QVariantList &arguments) {
            return !db->executeQuery(sql, arguments) && !sqlite3_next_stmt(db->sqliteHandle(), nullptr) &&
                   column(*db, u"select 7"_s) == QStringList(u"7"_s);
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
        const auto read = [this](const QVariantList &arguments) {
            QStringList objects;
            for (const QVariant &argument : arguments) {
                const auto rows = db->executeQuery(u"select ?"_s, {argument});
                objects << (rows->next() ? described(rows->objectForColumnIndex(0)) : u"no row"_s);
            }
            return objects.join(u", "_s);
        };
        QCOMPARE(read({QVariant(), nullMarker, QByteArray()}),
                 u"std::nullptr_t , std::nullptr_t , std::nullptr_t "_s);
        QCOMPARE(read({true, -2147483647, 4294967295U, ~0ULL}),
                 u"qlonglong 1, qlonglong -2147483647, qlonglong 4294967295, qlonglong -1"_s);
        QCOMPARE(read({0.1F, 2.5, QDateTime::fromMSecsSinceEpoch(1500, Qt::UTC)}),
                 u"double 0.10000000149011612, double 2.5, double 1.5"_s);
        QCOMPARE(read({QByteArray("a\0b", 3)}), u"QByteArray a\0b"_s);
        QCOMPARE(column(*db, u"values (5), (2.5), (null), (''), (cast(x'efbbbf21' as text))"_s),
                 QStringList({u"5"_s, u"2.5"_s, u"absent"_s, u""_s, u"\uFEFF!"_s}));
        QCOMPARE(read({u"Schüler ♪ 𝄞 'x'"_s, u""_s, QDate(2024, 2, 29)}),
                 u"QString Schüler ♪ 𝄞 'x', QString , QString 2024-02-29"_s);
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
        for (const int index : {-1, 3}) {
            QVERIFY(!rows->objectForColumnIndex(index).isValid());
            QCOMPARE(rows->dataForColumnIndex(index), std::nullopt);
        }
    }

    void resultSet_closesBehindTheLastRow()
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

    void resultSet_stepFailure_isToldApart()
    {
        QVERIFY(db->executeStatements(u"create table t (a unique); insert into t values (1)"_s));
        const auto lineOf = [this](const QString &sql) {
            FMError error;
            const bool isTold = !db->executeQuery(sql, {})->nextWithError(&error) && !db->hasOpenResultSets();
            const QString line = log->takeLines().join(u'\n');
            return isTold && line.contains(error.description) ? line : u"not told"_s;
        };
        QCOMPARE(lineOf(u"select abs(-9223372036854775808)"_s),
                 u"Error calling sqlite3_step (1: integer overflow) rs"_s);
        QCOMPARE(lineOf(u"insert into t values (1)"_s),
                 u"Unknown error calling sqlite3_step (19: UNIQUE constraint failed: t.a) rs"_s);
    }

    void resultSet_keepsItsConnectionUntilEitherCloses()
    {
        const std::weak_ptr<FMDatabase> connection = db;
        const auto rows = db->executeQuery(u"values (1), (2)"_s, {});
        db = nullptr;
        QVERIFY(rows->next() && connection.lock().get()->close());
        QVERIFY(connection.expired() && !rows->next());
    }

    void script_stopsAtTheFirstFailureOrWhereTheBlockSays()
    {
        const QString sql = u"create table t (a); insert into t values ('ä'); insert into u values (1);"
                            "insert into t values (2)"_s;
        QVERIFY(!db->executeStatements(sql));
        QCOMPARE(log->takeLines(), {u"Error inserting batch: no such table: u"_s});
        db->setLogsErrors(false);
        QVERIFY(!db->executeStatements(sql));
        QCOMPARE(log->lines(), {});

        QList<QVariantHash> rows;
        const auto stopAtTheSecond = [&rows](const QVariantHash &row) {
            rows << row;
            return int(rows.size()) - 1;
        };
        QVERIFY(!db->executeStatements(u"select 1 as a, null as b; values ('ä'); delete from t"_s,
                                       stopAtTheSecond));
        QCOMPARE(rows,
                 (QList<QVariantHash>{{{u"a"_s, u"1"_s}, {u"b"_s, nullMarker}}, {{u"column1"_s, u"ä"_s}}}));
        QCOMPARE(column(*db, u"select a from t"_s), {u"ä"_s});
    }

    void lockedFile_isWaitedForAsLongAsSet()
    {
        const auto file = openFile(), other = openFile();
        QVERIFY(file->executeStatements(u"create table t (a)"_s));
        for (const double seconds : {2.0, 0.0}) {
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
            QVERIFY(other->executeStatements(u"commit"_s));
            QVERIFY(file->executeStatements(u"insert into t values (1)"_s));
        }
    }

    void lockedFile_releasedInTime_isWritten()
    {
        const auto file = openFile(), other = openFile();
        file->setMaxBusyRetryTimeInterval(60);
        QVERIFY(other->executeStatements(u"create table t (a); begin exclusive"_s));
        std::thread release([&other] {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            other->executeStatements(u"commit"_s);
        });
        const bool isWritten = file->executeStatements(u"insert into t values ('a')"_s);
        release.join();
        QVERIFY(isWritten);
        QCOMPARE(log->lines(), {});
        QCOMPARE(column(*file, u"select a from t"_s), {u"a"_s});
    }
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "TestDatabase.moc"
