#pragma once

#include <QString>

#include <optional>

struct sqlite3_stmt;

/// Owns one prepared SQLite statement and finalizes it on destruction.
class FMStatement final
{
    Q_DISABLE_COPY_MOVE(FMStatement)

public:
    /// Takes ownership of `statement`, which may be null.
    explicit FMStatement(sqlite3_stmt *statement) : _statement(statement) {}
    ~FMStatement();

    /// The handle; null once closed.
    sqlite3_stmt *statement() const { return _statement; }
    /// The SQL text, if setQuery() was called.
    const std::optional<QString> &query() const { return _query; }
    /// The number of result sets made from the statement.
    qint64 useCount() const { return _useCount; }
    /// Whether an open result set uses the statement.
    bool inUse() const { return _inUse; }
    /// Address, use count and SQL text, for the log.
    QString description() const;

    void setQuery(const QString &query) { _query = query; }
    void setUseCount(qint64 count) { _useCount = count; }
    void setInUse(bool inUse) { _inUse = inUse; }

    /// Rewinds to before the first row and marks the statement as not in use.
    void reset();

    /// Finalizes the handle. Has no effect when already closed.
    void close();

private:
    sqlite3_stmt *_statement;
    std::optional<QString> _query;
    qint64 _useCount = 0;
    bool _inUse = false;
};
