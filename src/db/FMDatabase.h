#pragma once

#include <QSet>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

class FMResultSet;
class FMStatement;
struct sqlite3;
struct sqlite3_stmt;

/// An SQLite error: its result code and message.
struct FMError
{
    int code = 0;
    QString description;
    QString domain = QStringLiteral("FMDatabase");
};

/// One connection to one SQLite database file.
///
/// Created by databaseWithPath() and owned by shared pointers: each open result set holds one, the connection
/// itself only lists them. Not thread-safe. A failure is a return value and a line in the log, and leaves the
/// connection usable. While another connection holds a lock on the file, a call waits up to
/// maxBusyRetryTimeInterval() seconds for it.
class FMDatabase final : public std::enable_shared_from_this<FMDatabase>
{
    Q_DISABLE_COPY_MOVE(FMDatabase)

public:
    /// Called for each row that a script yields, with its texts by column name; NULL is the null marker, a
    /// QVariant of `nullptr`. A result other than 0 aborts the script, which then fails. Must not throw.
    using ResultBlock = std::function<int(const QVariantHash &row)>;

    /// A closed connection to the file at `path`. Without a path the database is in memory, with an empty
    /// one in a temporary file.
    static std::shared_ptr<FMDatabase> databaseWithPath(const std::optional<QString> &path);
    /// Closes the connection.
    ~FMDatabase();

    const std::optional<QString> &databasePath() const { return _databasePath; }
    /// The file name as passed to SQLite.
    QByteArray sqlitePath() const;
    /// SQLite's handle; null before open() and after close().
    sqlite3 *sqliteHandle() const { return _db; }
    bool isOpen() const { return _isOpen; }
    /// The same as isOpen(), with a line in the log when it is not.
    bool databaseExists() const;
    bool hasOpenResultSets() const { return !_openResultSets.isEmpty(); }

    /// The result of SQLite's last call on the connection.
    int lastErrorCode() const;
    QString lastErrorMessage() const;
    /// Whether that call failed because another connection holds a lock on the file.
    bool lastErrorIsBusy() const;
    FMError lastError() const { return errorWithMessage(lastErrorMessage()); }
    /// The last error code with another description.
    FMError errorWithMessage(const QString &message) const;

    /// Whether failed queries and scripts are logged; true by default.
    bool logsErrors() const { return _logsErrors; }
    void setLogsErrors(bool logsErrors) { _logsErrors = logsErrors; }

    /// Whether each query and each of its arguments is logged; false by default.
    bool traceExecution() const { return _traceExecution; }
    void setTraceExecution(bool traceExecution) { _traceExecution = traceExecution; }

    /// The timeout, in seconds, for a call that finds the file locked; 2 by default. With 0 or less it fails
    /// at once.
    double maxBusyRetryTimeInterval() const { return _maxBusyRetryTimeInterval; }
    void setMaxBusyRetryTimeInterval(double seconds);

    /// Opens the file for reading and writing, and creates it if it is missing. Returns whether the
    /// connection is open; does nothing if it already was.
    bool open();

    /// Closes the open result sets, then the connection. Always returns true.
    bool close();

    /// Runs the statements of `sql` in order, up to the first that fails; those before it stay applied.
    /// Returns whether all ran.
    bool executeStatements(const QString &sql, ResultBlock block = {});

    /// Prepares the first statement of `sql` and binds `arguments` to its parameters in order; surplus
    /// arguments are ignored. An argument is absent (an invalid QVariant), the null marker, a number, a
    /// QByteArray, a QDateTime (bound as seconds since 1970) or anything that QVariant converts to text.
    ///
    /// Returns the rows, or null when the connection is closed or preparing another query, when `sql` does
    /// not compile, and when an argument is missing or cannot be bound.
    std::shared_ptr<FMResultSet> executeQuery(const QString &sql, const QVariantList &arguments);

    /// Closes the result sets of this connection that are still open.
    void closeOpenResultSets();

    /// Called by a result set that has closed.
    void resultSetDidClose(FMResultSet *resultSet);

    /// Logs that a query was started while another was being prepared.
    void warnInUse() const;

private:
    explicit FMDatabase(const std::optional<QString> &path);

    QString description() const;
    std::unique_ptr<FMStatement> prepare(const QString &sql);
    bool bindStatement(sqlite3_stmt *statement, const QVariantList &arguments);
    int bindObject(const QVariant &value, int column, sqlite3_stmt *statement);
    bool waitForLock(int previousCalls);
    bool finalizeLeakedStatements();

    sqlite3 *_db = nullptr;
    bool _isExecutingStatement = false;
    double _startBusyRetryTime = 0;
    QSet<FMResultSet *> _openResultSets;
    bool _traceExecution = false;
    bool _logsErrors = true;
    bool _isOpen = false;
    double _maxBusyRetryTimeInterval = 2.0;
    std::optional<QString> _databasePath;
};
