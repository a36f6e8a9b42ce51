#include "db/FMDatabase.h"

#include "db/FMResultSet.h"
#include "db/FMStatement.h"
#include "platform/Log.h"

#include <QDateTime>
#include <QFile>
#include <QRandomGenerator>
#include <QScopedValueRollback>

#include <chrono>
#include <sqlite3.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

double secondsNow()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool isBusy(int code)
{
    return code == SQLITE_BUSY || code == SQLITE_LOCKED;
}

bool isNull(const QVariant &value)
{
    return !value.isValid() || value.typeId() == QMetaType::Nullptr;
}

void logArgument(const QVariant &value)
{
    if (value.typeId() == QMetaType::QByteArray)
        Log::write(u"data: %1 bytes"_s.arg(value.toByteArray().size()));
    else
        Log::write(u"obj: %1"_s.arg(isNull(value) ? u"<null>"_s : value.toString()));
}

int callResultBlock(void *block, int count, char **texts, char **names)
{
    QVariantHash row;
    for (int i = 0; i < count; ++i)
        row[QString::fromUtf8(names[i])] =
            texts[i] ? QVariant(QString::fromUtf8(texts[i])) : QVariant::fromValue(nullptr);
    return (*static_cast<const FMDatabase::ResultBlock *>(block))(row);
}

} // namespace

std::shared_ptr<FMDatabase> FMDatabase::databaseWithPath(const std::optional<QString> &path)
{
    return std::shared_ptr<FMDatabase>(new FMDatabase(path));
}

FMDatabase::FMDatabase(const std::optional<QString> &path) : _databasePath(path)
{
    if (!sqlite3_threadsafe())
        qFatal("SQLite is built without thread safety.");
}

FMDatabase::~FMDatabase()
{
    close();
}

QByteArray FMDatabase::sqlitePath() const
{
    return _databasePath ? QFile::encodeName(*_databasePath) : ":memory:"_ba;
}

bool FMDatabase::databaseExists() const
{
    if (!_isOpen)
        Log::write(u"The FMDatabase %1 is not open."_s.arg(description()));
    return _isOpen;
}

int FMDatabase::lastErrorCode() const
{
    return sqlite3_errcode(_db);
}

QString FMDatabase::lastErrorMessage() const
{
    return QString::fromUtf8(sqlite3_errmsg(_db));
}

bool FMDatabase::lastErrorIsBusy() const
{
    return isBusy(lastErrorCode());
}

FMError FMDatabase::errorWithMessage(const QString &message) const
{
    return FMError{lastErrorCode(), message};
}

void FMDatabase::setMaxBusyRetryTimeInterval(double seconds)
{
    constexpr auto retry = [](void *self, int calls) {
        return static_cast<FMDatabase *>(self)->waitForLock(calls) ? 1 : 0;
    };
    _maxBusyRetryTimeInterval = seconds;
    if (_db)
        sqlite3_busy_handler(_db, seconds > 0 ? +retry : nullptr, this);
}

bool FMDatabase::open()
{
    if (_isOpen)
        return true;
    if (_db)
        close();
    const int result = sqlite3_open(sqlitePath().constData(), &_db);
    if (result != SQLITE_OK) {
        Log::write(u"error opening!: %1"_s.arg(result));
        return false;
    }
    setMaxBusyRetryTimeInterval(_maxBusyRetryTimeInterval);
    _isOpen = true;
    return true;
}

bool FMDatabase::close()
{
    // The open result sets may hold the last references to this connection.
    const auto self = weak_from_this().lock();
    closeOpenResultSets();
    if (!_db)
        return true;
    int result = sqlite3_close(_db);
    if (isBusy(result) && finalizeLeakedStatements())
        result = sqlite3_close(_db);
    if (result != SQLITE_OK && !isBusy(result))
        Log::write(u"error closing!: %1"_s.arg(result));
    _db = nullptr;
    _isOpen = false;
    return true;
}

bool FMDatabase::executeStatements(const QString &sql, ResultBlock block)
{
    char *error = nullptr;
    const int result =
        sqlite3_exec(_db, sql.toUtf8().constData(), block ? &callResultBlock : nullptr, &block, &error);
    if (error && _logsErrors)
        Log::write(u"Error inserting batch: %1"_s.arg(QString::fromUtf8(error)));
    sqlite3_free(error);
    return result == SQLITE_OK;
}

std::shared_ptr<FMResultSet> FMDatabase::executeQuery(const QString &sql, const QVariantList &arguments)
{
    if (!databaseExists())
        return nullptr;
    if (_isExecutingStatement) {
        warnInUse();
        return nullptr;
    }
    const QScopedValueRollback executing(_isExecutingStatement, true);
    if (_traceExecution)
        Log::write(u"%1 executeQuery: %2"_s.arg(description(), sql));
    auto statement = prepare(sql);
    if (!statement || !bindStatement(statement->statement(), arguments))
        return nullptr;
    auto resultSet = FMResultSet::resultSetWithStatement(std::move(statement), shared_from_this(), true);
    resultSet->_query = sql;
    _openResultSets.insert(resultSet.get());
    resultSet->statement()->setUseCount(resultSet->statement()->useCount() + 1);
    return resultSet;
}

void FMDatabase::closeOpenResultSets()
{
    const auto resultSets = std::exchange(_openResultSets, {});
    for (FMResultSet *resultSet : resultSets) {
        resultSet->_parentDB = nullptr;
        resultSet->close();
    }
}

void FMDatabase::resultSetDidClose(FMResultSet *resultSet)
{
    _openResultSets.remove(resultSet);
}

void FMDatabase::warnInUse() const
{
    Log::write(u"The FMDatabase %1 is currently in use."_s.arg(description()));
}

QString FMDatabase::description() const
{
    return u"<FMDatabase: 0x%1>"_s.arg(quintptr(this), 0, 16);
}

std::unique_ptr<FMStatement> FMDatabase::prepare(const QString &sql)
{
    sqlite3_stmt *handle = nullptr;
    const int result = sqlite3_prepare_v2(_db, sql.toUtf8().constData(), -1, &handle, nullptr);
    auto statement = std::make_unique<FMStatement>(handle);
    if (result == SQLITE_OK)
        return statement;
    if (_logsErrors) {
        Log::write(u"DB Error: %1 \"%2\""_s.arg(lastErrorCode()).arg(lastErrorMessage()));
        Log::write(u"DB Query: %1"_s.arg(sql));
        Log::write(u"DB Path: %1"_s.arg(_databasePath.value_or(u"(null)"_s)));
    }
    return nullptr;
}

bool FMDatabase::bindStatement(sqlite3_stmt *statement, const QVariantList &arguments)
{
    const int parameters = sqlite3_bind_parameter_count(statement);
    for (int i = 0; i < parameters && i < arguments.size(); ++i) {
        if (_traceExecution)
            logArgument(arguments[i]);
        const int result = bindObject(arguments[i], i + 1, statement);
        if (result != SQLITE_OK) {
            Log::write(u"Error: unable to bind (%1, %2"_s.arg(result).arg(lastErrorMessage()));
            return false;
        }
    }
    if (arguments.size() >= parameters)
        return true;
    Log::write(u"Error: the bind count is not correct for the # of variables (executeQuery)"_s);
    return false;
}

int FMDatabase::bindObject(const QVariant &value, int column, sqlite3_stmt *statement)
{
    if (isNull(value))
        return sqlite3_bind_null(statement, column);
    switch (value.typeId()) {
    case QMetaType::QByteArray: {
        // QByteArray's data pointer is never null, even when empty: null would bind NULL, not an empty blob.
        const QByteArray bytes = value.toByteArray();
        return sqlite3_bind_blob64(statement, column, bytes.constData(), sqlite3_uint64(bytes.size()),
                                   SQLITE_TRANSIENT);
    }
    case QMetaType::QDateTime:
        return sqlite3_bind_double(statement, column, double(value.toDateTime().toMSecsSinceEpoch()) / 1000);
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Bool:
        return sqlite3_bind_int64(statement, column, value.toLongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return sqlite3_bind_double(statement, column, value.toDouble());
    default:
        return sqlite3_bind_text(statement, column, value.toString().toUtf8().constData(), -1,
                                 SQLITE_TRANSIENT);
    }
}

bool FMDatabase::waitForLock(int previousCalls)
{
    if (previousCalls == 0) {
        _startBusyRetryTime = secondsNow();
        return true;
    }
    if (secondsNow() - _startBusyRetryTime >= _maxBusyRetryTimeInterval)
        return false;
    const int requested = 50 + QRandomGenerator::global()->bounded(50);
    const int slept = sqlite3_sleep(requested);
    if (slept != requested)
        Log::write(u"WARNING: Requested sleep of %1 milliseconds, but SQLite returned %2. "
                   "Maybe SQLite wasn't built with HAVE_USLEEP=1?"_s.arg(requested)
                       .arg(slept));
    return true;
}

bool FMDatabase::finalizeLeakedStatements()
{
    bool foundAny = false;
    while (sqlite3_stmt *statement = sqlite3_next_stmt(_db, nullptr)) {
        Log::write(u"Closing leaked statement"_s);
        sqlite3_finalize(statement);
        foundAny = true;
    }
    return foundAny;
}
