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

/// What went wrong, in SQLite's words.
struct FMError
{
    int code = 0;
    QString description;
    QString domain = QStringLiteral("FMDatabase");
};

/// One connection to one SQLite database file.
///
/// Owned by a `std::shared_ptr`, which databaseWithPath() makes: its result sets keep it alive, while it only
/// knows which of them are open. It is used from one thread. Failures come back as return values, with a line
/// in the log, and leave the connection usable. While another connection locks the file, a call waits
/// maxBusyRetryTimeInterval() seconds for it at the most.
class FMDatabase final : public std::enable_shared_from_this<FMDatabase>
{
    Q_DISABLE_COPY_MOVE(FMDatabase)

public:
    /// Is given each row of a script as texts by column name, with the null marker (a QVariant of
    /// `nullptr`) for NULL. Anything but 0 ends the script, which then has failed. Must not throw.
    using ResultBlock = std::function<int(const QVariantHash &row)>;

    /// A closed connection to the file at `path`: no path is a database in memory, an empty one a
    /// temporary file.
    static std::shared_ptr<FMDatabase> databaseWithPath(const std::optional<QString> &path);
    /// Closes the connection.
    ~FMDatabase();

    const std::optional<QString> &databasePath() const { return _databasePath; }
    /// The name that SQLite is given for the file.
    QByteArray sqlitePath() const;
    /// SQLite's connection; null when there is none.
    sqlite3 *sqliteHandle() const { return _db; }
    bool isOpen() const { return _isOpen; }
    /// True when the connection is open; false, and a line in the log, when it is not.
    bool databaseExists() const;
    bool hasOpenResultSets() const { return !_openResultSets.isEmpty(); }

    /// The outcome of SQLite's last call on the connection.
    int lastErrorCode() const;
    QString lastErrorMessage() const;
    /// Whether that call gave up because another connection has locked the file.
    bool lastErrorIsBusy() const;
    FMError lastError() const;
    /// The last error code under another description.
    FMError errorWithMessage(const QString &message) const;

    /// Whether failed queries and scripts are logged: true from the start.
    bool logsErrors() const { return _logsErrors; }
    void setLogsErrors(bool logsErrors) { _logsErrors = logsErrors; }

    /// Whether each query and each of its arguments is logged: false from the start.
    bool traceExecution() const { return _traceExecution; }
    void setTraceExecution(bool traceExecution) { _traceExecution = traceExecution; }

    /// How many seconds a call waits for a locked file: 2 from the start. With 0 or less it does not
    /// wait at all.
    double maxBusyRetryTimeInterval() const { return _maxBusyRetryTimeInterval; }
    void setMaxBusyRetryTimeInterval(double seconds);

    /// Opens the file for reading and writing and creates it when it is missing. Returns whether the
    /// connection is open, true at once when it already was.
    bool open();

    /// Closes the open result sets, then the connection. Returns true.
    bool close();

    /// Runs the statements of `sql` in order, up to the first that fails; those before it stay applied.
    /// Returns whether all ran.
    bool executeStatements(const QString &sql, ResultBlock block = {});

    /// Prepares the first statement of `sql` and binds its parameters to `arguments` in order, of which
    /// there may be too many. An argument is absent (an invalid QVariant), the null marker (`nullptr`),
    /// a number, a QByteArray, a QDateTime or whatever has a text.
    ///
    /// Returns the rows, or null when the connection is closed or is preparing another query, when
    /// `sql` does not compile and when the arguments do not fit.
    std::shared_ptr<FMResultSet> executeQuery(const QString &sql, const QVariantList &arguments);

    /// Closes every result set of the connection that is still open.
    void closeOpenResultSets();

    /// Called by a result set that has closed.
    void resultSetDidClose(FMResultSet *resultSet);

    /// Logs that a query is started while another one is being prepared.
    void warnInUse() const;

private:
    explicit FMDatabase(const std::optional<QString> &path);

    static int retryWhenBusy(void *connection, int count);

    QString description() const;
    std::unique_ptr<FMStatement> prepare(const QString &sql);
    bool bindStatement(sqlite3_stmt *statement, const QVariantList &arguments);
    int bindObject(const QVariant &value, int column, sqlite3_stmt *statement);
    bool waitForLock(int count);
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
