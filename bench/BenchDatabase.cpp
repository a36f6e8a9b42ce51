// The database layer against SQLite's bare C interface, QtSql and SQLiteCpp doing the same work, in one run:
// reading all rows of a plan table as texts, column by column, and writing plans one script each. The stores
// find their columns by name; the bare interface has no names.

#include "db/FMDatabase.h"
#include "db/FMResultSet.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>
#include <QTime>

#include <SQLiteCpp/SQLiteCpp.h>
#include <array>
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int readRows = 100000;
constexpr int writtenRows = 1000;
const QString readPlans = u"select * from plan order by begin"_s;

constexpr std::array columnNames = {"id",      "title",  "begin",   "end",   "music",
                                    "content", "isloop", "ismusic", "week0", "week1",
                                    "week2",   "week3",  "week4",   "week5", "week6"};

std::vector<QString> namesForQt()
{
    std::vector<QString> names;
    for (const char *name : columnNames)
        names.push_back(QString::fromLatin1(name));
    return names;
}

const std::vector<QString> qtNames = namesForQt();
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
    return u"create table plan (%1 text)"_s.arg(QStringList(qtNames.begin(), qtNames.end()).join(u" text, "));
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

std::optional<QString> text(const FMResultSet &rows, const QString &name)
{
    return rows.stringForColumn(name);
}

std::optional<QString> text(const FMResultSet &rows, int index)
{
    return rows.stringForColumnIndex(index);
}

// `columns` are the names or the indices of the columns, as the library takes them.
template<typename Columns>
void readLayer(benchmark::State &state, const Columns &columns)
{
    FMDatabase &db = readDatabase();
    for (auto _ : state) {
        const auto rows = db.executeQuery(readPlans, {});
        while (rows->next()) {
            for (const auto &column : columns)
                benchmark::DoNotOptimize(text(*rows, column));
        }
    }
}

void readLayerValues(benchmark::State &state)
{
    FMDatabase &db = readDatabase();
    for (auto _ : state) {
        const auto rows = db.executeQuery(readPlans, {});
        while (rows->next()) {
            for (const QString &name : qtNames)
                benchmark::DoNotOptimize((*rows)[name].toString());
        }
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

template<typename Columns>
void readQtSql(benchmark::State &state, const Columns &columns)
{
    const QSqlDatabase &db = readSqlDatabase();
    for (auto _ : state) {
        QSqlQuery rows(db);
        rows.setForwardOnly(true);
        rows.exec(readPlans);
        while (rows.next()) {
            for (const auto &column : columns)
                benchmark::DoNotOptimize(rows.value(column).toString());
        }
    }
}

template<typename Columns>
void readSQLiteCpp(benchmark::State &state, const Columns &columns)
{
    SQLite::Database &db = readCppDatabase();
    for (auto _ : state) {
        SQLite::Statement rows(db, readPlans.toStdString());
        while (rows.executeStep()) {
            for (const auto &column : columns)
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
BENCHMARK_CAPTURE(readLayer, name, qtNames)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readLayer, index, indices)->Unit(benchmark::kMillisecond);
BENCHMARK(readLayerValues)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readQtSql, name, qtNames)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readQtSql, index, indices)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readSQLiteCpp, name, columnNames)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readSQLiteCpp, index, indices)->Unit(benchmark::kMillisecond);
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
