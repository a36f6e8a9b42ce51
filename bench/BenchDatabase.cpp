// The database layer against SQLite's bare C interface, QtSql and SQLiteCpp doing the same work, in one run:
// reading all rows of a plan table as texts, column by column, and writing plans one script each. All read by
// index; the stores find the indices by name, once a query.

#include "store/Records.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>
#include <QTime>

#include <SQLiteCpp/SQLiteCpp.h>
#include <array>
#include <benchmark/benchmark.h>
#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int readRows = 100000;
constexpr int writtenRows = 1000;
const QString readPlans = u"select * from plan order by begin"_s;

const QStringList columnNames{u"id"_s,      u"title"_s,  u"begin"_s,   u"end"_s,   u"music"_s,
                              u"content"_s, u"isloop"_s, u"ismusic"_s, u"week0"_s, u"week1"_s,
                              u"week2"_s,   u"week3"_s,  u"week4"_s,   u"week5"_s, u"week6"_s};
constexpr std::array indices = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};

QString insertPlan(int number)
{
    const QString minute = QTime(0, 0).addSecs(number % 1440 * 60).toString(u"HH:mm");
    return u"insert into plan (id, title, begin, end, music, content, isloop, ismusic, week0, week1, week2, "
           "week3, week4, week5, week6) values ('0A1B2C3D-4E5F-6789-ABCD-%1', 'Große Pause %1', '%2:00', "
           "'%2:30', 'Gong.mp3', '/home/school/Music/Gong.mp3', 'false', 'true', 'false', 'true', 'true', "
           "'true', 'true', 'true', 'false')"_s.arg(number, 12, 10, QChar(u'0'))
               .arg(minute);
}

QString createTable()
{
    return u"create table plan (%1 text)"_s.arg(columnNames.join(u" text, "));
}

// Has `run` execute the statements that make a table of so many plans.
template<typename Run>
void fill(int rows, Run &&run)
{
    run(createTable());
    for (int row = 0; row < rows; ++row)
        run(insertPlan(row));
}

std::shared_ptr<FMDatabase> planDatabase(int rows)
{
    auto db = FMDatabase::databaseWithPath(std::nullopt);
    db->open();
    fill(rows, [&db](const QString &sql) { db->executeStatements(sql); });
    return db;
}

QSqlDatabase sqlDatabase(int rows)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, QString::number(rows));
    db.setDatabaseName(u":memory:"_s);
    db.open();
    fill(rows, [&db](const QString &sql) { QSqlQuery(db).exec(sql); });
    return db;
}

std::unique_ptr<SQLite::Database> cppDatabase(int rows)
{
    auto db = std::make_unique<SQLite::Database>(":memory:", SQLite::OPEN_READWRITE);
    fill(rows, [&db](const QString &sql) { db->exec(sql.toUtf8().constData()); });
    return db;
}

FMDatabase &readDatabase()
{
    static const auto db = planDatabase(readRows);
    return *db;
}

const QSqlDatabase &readSqlDatabase()
{
    static const QSqlDatabase db = sqlDatabase(readRows);
    return db;
}

SQLite::Database &readCppDatabase()
{
    static const auto db = cppDatabase(readRows);
    return *db;
}

// The code that the stores read their tables with.
void readStores(benchmark::State &state)
{
    for (auto _ : state) {
        Records::readRows(readDatabase(), readPlans, columnNames, [](const Records::Row &row) {
            for (const int column : indices)
                benchmark::DoNotOptimize(row.text(column));
        });
    }
}

void readBare(benchmark::State &state)
{
    sqlite3 *db = readDatabase().sqliteHandle();
    for (auto _ : state) {
        sqlite3_stmt *statement = nullptr;
        sqlite3_prepare_v2(db, readPlans.toUtf8().constData(), -1, &statement, nullptr);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (const int column : indices) {
                const auto *bytes = sqlite3_column_text(statement, column);
                benchmark::DoNotOptimize(QString::fromUtf8(reinterpret_cast<const char *>(bytes)));
            }
        }
        sqlite3_finalize(statement);
    }
}

void readQtSql(benchmark::State &state)
{
    const QSqlDatabase &db = readSqlDatabase();
    for (auto _ : state) {
        QSqlQuery rows(db);
        rows.setForwardOnly(true);
        rows.exec(readPlans);
        while (rows.next()) {
            for (const int column : indices)
                benchmark::DoNotOptimize(rows.value(column).toString());
        }
    }
}

void readSQLiteCpp(benchmark::State &state)
{
    SQLite::Database &db = readCppDatabase();
    for (auto _ : state) {
        SQLite::Statement rows(db, readPlans.toStdString());
        while (rows.executeStep()) {
            for (const int column : indices)
                benchmark::DoNotOptimize(QString::fromUtf8(rows.getColumn(column).getText()));
        }
    }
}

// `make` gives a new database in memory, `write` has it execute a statement.
template<typename Make, typename Write>
void writeRows(benchmark::State &state, Make &&make, Write &&write)
{
    for (auto _ : state) {
        state.PauseTiming();
        const auto db = make();
        state.ResumeTiming();
        for (int row = 0; row < writtenRows; ++row)
            write(db, insertPlan(row));
    }
}

void writeLayer(benchmark::State &state)
{
    writeRows(
        state, [] { return planDatabase(0); },
        [](const auto &db, const QString &sql) { db->executeStatements(sql); });
}

void writeBare(benchmark::State &state)
{
    writeRows(
        state, [] { return planDatabase(0); },
        [](const auto &db, const QString &sql) {
            sqlite3_exec(db->sqliteHandle(), sql.toUtf8().constData(), nullptr, nullptr, nullptr);
        });
}

void writeQtSql(benchmark::State &state)
{
    static const QSqlDatabase written = sqlDatabase(0);
    const auto clear = [] {
        QSqlQuery(written).exec(u"delete from plan"_s);
        return &written;
    };
    writeRows(state, clear, [](const auto *db, const QString &sql) { QSqlQuery(*db).exec(sql); });
}

void writeSQLiteCpp(benchmark::State &state)
{
    writeRows(
        state, [] { return cppDatabase(0); },
        [](const auto &db, const QString &sql) { db->exec(sql.toUtf8().constData()); });
}

BENCHMARK(readBare)->Unit(benchmark::kMillisecond);
BENCHMARK(readStores)->Unit(benchmark::kMillisecond);
BENCHMARK(readQtSql)->Unit(benchmark::kMillisecond);
BENCHMARK(readSQLiteCpp)->Unit(benchmark::kMillisecond);
BENCHMARK(writeBare)->Unit(benchmark::kMillisecond);
BENCHMARK(writeLayer)->Unit(benchmark::kMillisecond);
BENCHMARK(writeQtSql)->Unit(benchmark::kMillisecond);
BENCHMARK(writeSQLiteCpp)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv); // For QtSql's plugin.
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
