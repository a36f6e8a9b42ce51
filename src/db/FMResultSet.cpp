#include "db/FMResultSet.h"

#include "db/FMDatabase.h"
#include "db/FMStatement.h"
#include "platform/Log.h"

#include <functional>
#include <numeric>
#include <sqlite3.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

bool isAscii(QByteArrayView bytes)
{
    // Without an early exit the loop can be vectorised.
    return (std::accumulate(bytes.begin(), bytes.end(), '\0', std::bit_or<char>()) & 0x80) == 0;
}

std::optional<QString> decodeUtf8(QByteArrayView bytes)
{
    if (isAscii(bytes))
        return QString::fromLatin1(bytes);
    if (!bytes.isValidUtf8())
        return std::nullopt;
    QString text = QString::fromUtf8(bytes);
    // fromUtf8() drops a leading byte order mark; here it is part of the text.
    if (bytes.startsWith("\xEF\xBB\xBF"))
        text.prepend(QChar::ByteOrderMark);
    return text;
}

} // namespace

std::shared_ptr<FMResultSet> FMResultSet::resultSetWithStatement(std::unique_ptr<FMStatement> statement,
                                                                 std::shared_ptr<FMDatabase> parentDB,
                                                                 bool shouldAutoClose)
{
    return std::shared_ptr<FMResultSet>(
        new FMResultSet(std::move(statement), std::move(parentDB), shouldAutoClose));
}

FMResultSet::FMResultSet(std::unique_ptr<FMStatement> statement, std::shared_ptr<FMDatabase> parentDB,
                         bool shouldAutoClose)
    : _shouldAutoClose(shouldAutoClose)
    , _parentDB(std::move(parentDB))
    , _statement(std::move(statement))
{
    Q_ASSERT(!_statement->inUse());
    _statement->setInUse(true);
}

FMResultSet::~FMResultSet()
{
    close();
}

int FMResultSet::columnCount() const
{
    return sqlite3_column_count(handle());
}

const FMResultSet::ColumnMap &FMResultSet::columnNameToIndexMap() const
{
    if (_columnNameToIndexMap.isEmpty()) {
        for (int i = 0, count = columnCount(); i < count; ++i)
            _columnNameToIndexMap[QString::fromUtf8(sqlite3_column_name(handle(), i)).toLower()] = i;
    }
    return _columnNameToIndexMap;
}

int FMResultSet::columnIndexForName(const QString &name) const
{
    const QString lowerCased = name.toLower();
    const int index = columnNameToIndexMap().value(lowerCased, -1);
    if (index < 0)
        Log::write(u"Warning: I could not find the column named '%1'."_s.arg(lowerCased));
    return index;
}

std::optional<QString> FMResultSet::stringForColumn(const QString &name) const
{
    return stringForColumnIndex(columnIndexForName(name));
}

std::optional<QString> FMResultSet::stringForColumnIndex(int index) const
{
    if (!hasColumn(index))
        return std::nullopt;
    // Null for NULL, so that the column's type need not be read.
    const unsigned char *text = sqlite3_column_text(handle(), index);
    return text ? decodeUtf8(QByteArrayView(text)) : std::nullopt;
}

QVariant FMResultSet::objectForColumn(const QString &name) const
{
    return objectForColumnIndex(columnIndexForName(name));
}

QVariant FMResultSet::objectForColumnIndex(int index) const
{
    const auto orNull = [](const auto &value) {
        return value ? QVariant(*value) : QVariant::fromValue(nullptr);
    };
    if (!hasColumn(index))
        return {};
    switch (sqlite3_column_type(handle(), index)) {
    case SQLITE_INTEGER:
        return longLongIntForColumnIndex(index);
    case SQLITE_FLOAT:
        return doubleForColumnIndex(index);
    case SQLITE_BLOB:
        return orNull(dataForColumnIndex(index));
    default:
        return orNull(stringForColumnIndex(index));
    }
}

qint64 FMResultSet::longLongIntForColumnIndex(int index) const
{
    return sqlite3_column_int64(handle(), index);
}

double FMResultSet::doubleForColumnIndex(int index) const
{
    return sqlite3_column_double(handle(), index);
}

std::optional<QByteArray> FMResultSet::dataForColumnIndex(int index) const
{
    if (!hasColumn(index))
        return std::nullopt;
    const auto *bytes = static_cast<const char *>(sqlite3_column_blob(handle(), index));
    if (!bytes)
        return std::nullopt;
    return QByteArray(bytes, sqlite3_column_bytes(handle(), index));
}

bool FMResultSet::nextWithError(FMError *error)
{
    return internalStepWithError(error) == SQLITE_ROW;
}

int FMResultSet::internalStepWithError(FMError *error)
{
    const int code = sqlite3_step(handle());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        logStepFailure(code);
        if (error)
            *error = stepError();
    }
    if (code != SQLITE_ROW && _shouldAutoClose)
        close();
    return code;
}

void FMResultSet::close()
{
    if (_statement)
        _statement->reset();
    _statement = nullptr;
    if (const auto parent = std::exchange(_parentDB, nullptr))
        parent->resultSetDidClose(this);
}

sqlite3_stmt *FMResultSet::handle() const
{
    return _statement ? _statement->statement() : nullptr;
}

void FMResultSet::logStepFailure(int code) const
{
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
        const auto path = _parentDB ? _parentDB->databasePath() : std::nullopt;
        Log::write(u"-[FMResultSet internalStepWithError:]:186 Database busy (%1)"_s.arg(
            path.value_or(u"(null)"_s)));
        Log::write(u"Database busy"_s);
        return;
    }
    const auto *message = sqlite3_errmsg(_parentDB ? _parentDB->sqliteHandle() : nullptr);
    const bool isKnown = code == SQLITE_ERROR || code == SQLITE_MISUSE;
    Log::write(u"%1 calling sqlite3_step (%2: %3) rs"_s.arg(
        isKnown ? u"Error"_s : u"Unknown error"_s, QString::number(code), QString::fromUtf8(message)));
}

FMError FMResultSet::stepError() const
{
    if (_parentDB)
        return _parentDB->lastError();
    return FMError{SQLITE_MISUSE, u"parentDB does not exist"_s};
}
