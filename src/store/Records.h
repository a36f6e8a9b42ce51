#pragma once

#include "db/FMDatabase.h"
#include "db/FMResultSet.h"
#include "db/NoBusyWait.h"
#include "platform/ObservableObject.h"
#include "store/LoadState.h"

#include <QList>

#include <algorithm>
#include <optional>

/// What the three stores have in common: records with an `id` and an `isChecked`, held in a published list
/// and in a table of the same database.
namespace Records {

/// `text` with every "'" doubled, for use between single quotes in SQL.
inline QString escaped(QString text)
{
    return text.replace(u'\'', QStringLiteral("''"));
}

/// The first record with that id, or the end of the list.
template<typename List>
auto find(List &list, const QString &id)
{
    return std::find_if(list.begin(), list.end(), [&id](const auto &record) { return record.id == id; });
}

/// Copies the given flags from `from` to `to`.
template<typename Record>
void copyFlags(const Record &from, Record &to, std::initializer_list<bool Record::*> flags)
{
    for (const auto flag : flags)
        to.*flag = from.*flag;
}

/// One row of a query. Columns are counted from 0, in the order of the names given to load().
class Row final
{
    Q_DISABLE_COPY_MOVE(Row)

public:
    Row(const FMResultSet &rows, const QList<int> &indices) : rows(rows), indices(indices) {}

    /// The text in a column; empty for NULL and for a column that the table does not have.
    std::optional<QString> optionalText(qsizetype column) const
    {
        return rows.stringForColumnIndex(indices[column]);
    }

    /// The same, as an empty text where there is none: Belfry itself writes no such row.
    QString text(qsizetype column) const { return optionalText(column).value_or(QString()); }

private:
    const FMResultSet &rows;
    const QList<int> &indices;
};

/// Opens the connection and calls `read` with every row of `query`, up to the first that cannot be read.
/// Waits for a locked file, unless the last call on the connection has timed out waiting for it: so the
/// stores, which are created one after the other, wait once in all.
template<typename Read>
LoadState readRows(FMDatabase &db, const QString &query, const QStringList &columns, Read &&read)
{
    if (!db.open())
        return LoadState::Failed;
    std::optional<NoBusyWait> noWait;
    if (db.lastErrorIsBusy())
        noWait.emplace(db);
    const auto rows = db.executeQuery(query, {});
    FMError error{rows ? 0 : db.lastErrorCode(), {}};
    QList<int> indices;
    while (rows && rows->nextWithError(&error)) {
        for (qsizetype i = indices.size(); i < columns.size(); ++i)
            indices += rows->columnIndexForName(columns[i]);
        read(Row(*rows, indices));
    }
    if (error.code == 0)
        return LoadState::Loaded;
    return db.lastErrorIsBusy() ? LoadState::Locked : LoadState::Failed;
}

/// Fills the list with the rows of `query`, each converted by `read`. If entries were added before the table
/// could be read (see LoadRetry), they keep their `memoryOnlyFlags`, and a failure leaves the list as it was.
template<typename Record>
LoadState load(FMDatabase &db, const QString &query, const QStringList &columns,
               Published<QList<Record>> &list, std::initializer_list<bool Record::*> memoryOnlyFlags,
               Record (*read)(const Row &))
{
    QList<Record> loaded;
    const LoadState state =
        readRows(db, query, columns, [&loaded, read](const Row &row) { loaded += read(row); });
    if (state != LoadState::Loaded && !list->isEmpty())
        return state;
    for (const Record &entry : list.value()) {
        if (const auto record = find(loaded, entry.id); record != loaded.end())
            copyFlags(entry, *record, memoryOnlyFlags);
    }
    list = loaded;
    return state;
}

/// Sorts by `begin`, ascending and stable.
template<typename Record>
void sortByBegin(QList<Record> &records)
{
    std::stable_sort(records.begin(), records.end(),
                     [](const Record &a, const Record &b) { return a.begin < b.begin; });
}

/// Runs the statement that inserts a record, then adds it to the list. Returns false, with the list as it
/// was, if the database rejects it.
template<typename Record>
bool add(FMDatabase &db, const QString &statement, Published<QList<Record>> &list, const Record &record)
{
    if (!db.executeStatements(statement))
        return false;
    list.modify([&record](QList<Record> &records) {
        records.append(record);
        sortByBegin(records);
    });
    return true;
}

/// Runs the statement that updates a record, then replaces the entry with its id, if there is one, except for
/// its `memoryOnlyFlags`. Returns false, with the list as it was, if the database rejects it.
template<typename Record>
bool update(FMDatabase &db, const QString &statement, Published<QList<Record>> &list, Record record,
            std::initializer_list<bool Record::*> memoryOnlyFlags)
{
    if (!db.executeStatements(statement))
        return false;
    list.modify([&record, memoryOnlyFlags](QList<Record> &records) {
        if (const auto entry = find(records, record.id); entry != records.end()) {
            copyFlags(*entry, record, memoryOnlyFlags);
            *entry = record;
        }
        sortByBegin(records);
    });
    return true;
}

/// Toggles isChecked of the record with that id, if there is one.
template<typename Record>
void toggleChecked(Published<QList<Record>> &list, const QString &id)
{
    list.modify([&id](QList<Record> &records) {
        if (const auto record = find(records, id); record != records.end())
            record->isChecked = !record->isChecked;
    });
}

/// Deletes the checked records from `table`, and each that is deleted there from the list. After one timeout
/// for a locked file the remaining records do not wait for it.
template<typename Record>
void deleteChecked(FMDatabase &db, const QString &table, Published<QList<Record>> &list)
{
    std::optional<NoBusyWait> noWait;
    for (qsizetype i = list->size() - 1; i >= 0; --i) {
        const Record &record = list->at(i);
        if (!record.isChecked)
            continue;
        if (db.executeStatements(QStringLiteral(" delete from ") + table + QStringLiteral(" where id = '") +
                                 record.id + QStringLiteral("';")))
            list.modify([i](QList<Record> &records) { records.removeAt(i); });
        else if (!noWait && db.lastErrorIsBusy())
            noWait.emplace(db);
    }
}

} // namespace Records
