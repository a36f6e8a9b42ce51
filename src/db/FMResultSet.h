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
/// It stands before the first row: call next() before the first column is read and before every further
/// row, and read only while the last next() returned true. It holds no row itself, every read goes to
/// SQLite. It keeps its connection alive and closes itself behind the last row; closed, it has no
/// columns and no rows.
///
/// To read many rows, find the indices of the columns once: finding a column costs as much as reading it.
class FMResultSet final
{
    Q_DISABLE_COPY_MOVE(FMResultSet)

public:
    /// Lower-cased names of columns with their indices, counted from 0.
    using ColumnMap = QHash<QString, int>;

    /// A result set over `statement`, which must not be in use, of the connection `parentDB`. With
    /// `shouldAutoClose` the first step that yields no row closes it.
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

    /// All columns; of those with the same name the last.
    const ColumnMap &columnNameToIndexMap() const;

    /// The index of the column `name` in upper or lower case; -1, and a line in the log, when there is
    /// none.
    int columnIndexForName(const QString &name) const;

    /// The column as text, numbers in SQLite's decimal form. Nothing for NULL, for text that is not
    /// valid UTF-8 and for a column that does not exist.
    std::optional<QString> stringForColumn(const QString &name) const;
    std::optional<QString> stringForColumnIndex(int index) const;

    /// The column in its own type: `qlonglong`, `double`, QByteArray or QString. NULL, an empty blob and
    /// text that is not valid UTF-8 are the null marker, a QVariant of `nullptr`; a column that does not
    /// exist is an invalid QVariant.
    QVariant operator[](const QString &name) const { return objectForColumn(name); }
    QVariant objectForColumn(const QString &name) const;
    QVariant objectForColumnIndex(int index) const;

    /// The column as a number, converted as SQLite does; 0 for NULL. The column must exist.
    qint64 longLongIntForColumnIndex(int index) const;
    double doubleForColumnIndex(int index) const;

    /// A copy of the column's bytes. Nothing for NULL, an empty blob and a column that does not exist.
    std::optional<QByteArray> dataForColumnIndex(int index) const;

    /// Goes to the next row. Returns false when there is none and when the step failed, which the log
    /// tells. A failure is also described in `error`, when given, which is left alone otherwise.
    bool next() { return nextWithError(nullptr); }
    bool nextWithError(FMError *error);

    /// The same step, with SQLite's result code.
    int internalStepWithError(FMError *error);

    /// Lets go of the statement and the connection. Doing so again does nothing.
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
