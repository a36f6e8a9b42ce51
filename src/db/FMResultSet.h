#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

class FMDatabase;
class FMStatement;
struct FMError;
struct sqlite3_stmt;

/// A forward-only cursor over the rows of one query.
///
/// It starts before the first row: call next() before reading each row, and read columns only while the last
/// next() returned true. Rows are not buffered, every read goes to SQLite. It keeps its connection alive and
/// closes itself after the last row; once closed, it has no columns and no rows.
///
/// To read many rows, look the column indices up once: a look-up costs as much as reading the column.
class FMResultSet final
{
    Q_DISABLE_COPY_MOVE(FMResultSet)

public:
    /// From lower-cased column name to column index, counted from 0.
    using ColumnMap = QHash<QString, int>;

    /// A result set over `statement`, which must not be in use, of the connection `parentDB`. If
    /// `shouldAutoClose`, the first step that yields no row closes it.
    static std::shared_ptr<FMResultSet> resultSetWithStatement(std::unique_ptr<FMStatement> statement,
                                                               std::shared_ptr<FMDatabase> parentDB,
                                                               bool shouldAutoClose);
    ~FMResultSet();

    /// The SQL text of the query.
    const QString &query() const { return _query; }
    /// The statement and the connection; null once closed.
    FMStatement *statement() const { return _statement.get(); }
    std::shared_ptr<FMDatabase> parentDB() const { return _parentDB; }
    bool shouldAutoClose() const { return _shouldAutoClose; }

    int columnCount() const;

    /// All columns; where names are the same, the last column.
    const ColumnMap &columnNameToIndexMap() const;

    /// The index of the column `name`, regardless of case; -1, with a line in the log, if there is none.
    int columnIndexForName(const QString &name) const;

    /// The column as text, numbers in SQLite's decimal form. Empty for NULL, invalid UTF-8 and a column that
    /// does not exist.
    std::optional<QString> stringForColumn(const QString &name) const;
    std::optional<QString> stringForColumnIndex(int index) const;

    /// The column in its own type: `qlonglong`, `double`, QByteArray or QString. NULL, an empty blob and
    /// invalid UTF-8 give the null marker, a QVariant of `nullptr`; a column that does not exist gives an
    /// invalid QVariant.
    QVariant operator[](const QString &name) const { return objectForColumn(name); }
    QVariant objectForColumn(const QString &name) const;
    QVariant objectForColumnIndex(int index) const;

    /// The column as a number, converted by SQLite's rules; 0 for NULL. The column must exist.
    qint64 longLongIntForColumnIndex(int index) const;
    double doubleForColumnIndex(int index) const;

    /// A copy of the column's bytes. Empty for NULL, an empty blob and a column that does not exist.
    std::optional<QByteArray> dataForColumnIndex(int index) const;

    /// Steps to the next row. Returns false after the last row, and on failure with a line in the log; only
    /// a failure sets `error`, if given.
    bool next() { return nextWithError(nullptr); }
    bool nextWithError(FMError *error);

    /// The same, returning SQLite's result code.
    int internalStepWithError(FMError *error);

    /// Releases the statement and the connection. Has no effect when already closed.
    void close();

private:
    friend class FMDatabase;

    FMResultSet(std::unique_ptr<FMStatement> statement, std::shared_ptr<FMDatabase> parentDB,
                bool shouldAutoClose);

    sqlite3_stmt *handle() const;
    bool hasColumn(int index) const { return index >= 0 && index < columnCount(); }
    void logStepFailure(int code) const;
    FMError stepError() const;

    mutable ColumnMap _columnNameToIndexMap;
    bool _shouldAutoClose;
    std::shared_ptr<FMDatabase> _parentDB;
    QString _query;
    std::unique_ptr<FMStatement> _statement;
};
