// The database layer against SQLite's bare C interface doing the same work, in one run:
// reading all rows of a plan table as texts, column by column, and writing plans one script each.
#include "db/FMDatabase.h"
#include "db/FMResultSet.h"

#include <QStringList>
#include <QTime>

#include <array>
#include <benchmark/benchmark.h>
#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int readRows = 100000;
constexpr int writtenRows = 1000;
const QString readPlans = u"select * from plan order by begin"_s;

const std::array<QString, 15> columnNames = {u"id"_s,      u"title"_s,  u"begin"_s,   u"end"_s,   u"music"_s,
                                             u"content"_s, u"isloop"_s, u"ismusic"_s, u"week0"_s, u"week1"_s,
                                             u"week2"_s,   u"week3"_s,  u"week4"_s,   u"week5"_s, u"week6"_s};

QString insertPlan(int number)
{
    const QString minute = QTime(0, 0).addSecs(number % 1440 * 60).toString(u"HH:mm");
    return u"insert into plan (id, title, begin, end, music, content, isloop, ismusic, week0, week1, week2, "
           "week3, week4, week5, week6) values ('0A1B2C3D-4E5F-6789-ABCD-%1', 'Große Pause %1', '%2:00', "
           "'%2:30', 'Gong.mp3', '/home/school/Music/Gong.mp3', 'false', 'true', 'false', 'true', 'true', "
           "'true', 'true', 'true', 'false')"_s.arg(number, 12, 10, QChar(u'0'))
               .arg(minute);
}

std::shared_ptr<FMDatabase> planDatabase(int rows)
{
    auto db = FMDatabase::databaseWithPath(std::nullopt);
    db->open();
    db->executeStatements(u"create table plan (%1 text)"_s.arg(
        QStringList(columnNames.begin(), columnNames.end()).join(u" text, ")));
    for (int row = 0; row < rows; ++row)
        db->executeStatements(insertPlan(row));
    return db;
}

FMDatabase &readDatabase()
{
    static const auto db = planDatabase(readRows);
    return *db;
}

void readLayer(benchmark::State &state)
{
    FMDatabase &db = readDatabase();
    for (auto _ : state) {
        const auto rows = db.executeQuery(readPlans, {});
        while (rows->next()) {
            for (const QString &name : columnNames)
                benchmark::DoNotOptimize(rows->stringForColumn(name));
        }
    }
}

void readLayerObjects(benchmark::State &state)
{
    FMDatabase &db = readDatabase();
    for (auto _ : state) {
        const auto rows = db.executeQuery(readPlans, {});
        while (rows->next()) {
            for (const QString &name : columnNames)
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
            for (int column = 0; column < int(columnNames.size()); ++column) {
                const auto *text = sqlite3_column_text(statement, column);
                benchmark::DoNotOptimize(QString::fromUtf8(reinterpret_cast<const char *>(text)));
            }
        }
        sqlite3_finalize(statement);
    }
}

template<typename Write>
void writeRows(benchmark::State &state, Write &&write)
{
    for (auto _ : state) {
        state.PauseTiming();
        const auto db = planDatabase(0);
        state.ResumeTiming();
        for (int row = 0; row < writtenRows; ++row)
            write(*db, insertPlan(row));
    }
}

void writeLayer(benchmark::State &state)
{
    writeRows(state, [](FMDatabase &db, const QString &sql) { db.executeStatements(sql); });
}

void writeBare(benchmark::State &state)
{
    writeRows(state, [](FMDatabase &db, const QString &sql) {
        sqlite3_exec(db.sqliteHandle(), sql.toUtf8().constData(), nullptr, nullptr, nullptr);
    });
}

} // namespace

BENCHMARK(readBare)->Unit(benchmark::kMillisecond);
BENCHMARK(readLayer)->Unit(benchmark::kMillisecond);
BENCHMARK(readLayerObjects)->Unit(benchmark::kMillisecond);
BENCHMARK(writeBare)->Unit(benchmark::kMillisecond);
BENCHMARK(writeLayer)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
