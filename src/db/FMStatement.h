#pragma once

#include <QString>

#include <optional>

struct sqlite3_stmt;

/// The holder of one prepared SQLite statement, which it finalizes at its end.
class FMStatement final
{
    Q_DISABLE_COPY_MOVE(FMStatement)

public:
    /// Takes over `statement`, which may be null.
    explicit FMStatement(sqlite3_stmt *statement) : _statement(statement) {}
    ~FMStatement();

    /// The handle; null once closed.
    sqlite3_stmt *statement() const { return _statement; }
    /// The SQL text, where somebody has set one.
    const std::optional<QString> &query() const { return _query; }
    /// How many result sets were made from the statement.
    qint64 useCount() const { return _useCount; }
    /// True while an open result set steps the statement.
    bool inUse() const { return _inUse; }
    /// One line about the statement for the log.
    QString description() const;

    void setQuery(const QString &query) { _query = query; }
    void setUseCount(qint64 count) { _useCount = count; }
    void setInUse(bool inUse) { _inUse = inUse; }

    /// Goes back to before the first row and is no longer in use.
    void reset();

    /// Finalizes the handle. Doing so again does nothing.
    void close();

private:
    sqlite3_stmt *_statement;
    std::optional<QString> _query;
    qint64 _useCount = 0;
    bool _inUse = false;
};
