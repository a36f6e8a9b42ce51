#pragma once

#include "db/FMDatabase.h"
#include "db/FMResultSet.h"
#include "db/NoBusyWait.h"
#include "platform/ObservableObject.h"
#include "store/LoadState.h"

#include <QList>
#include <QUuid>

#include <algorithm>
#include <optional>

/// What the three stores have in common: records with an `id` and an `isChecked`, in a published list
/// and in a table of the same database.
namespace Records {

/// A new id: a random UUID of 36 characters in upper case.
inline QString newId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

/// `text` with every "'" doubled, to stand between single quotes in a statement.
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

/// Sets the flags of `to` as they are in `from`.
template<typename Record>
void copyFlags(const Record &from, Record &to, std::initializer_list<bool Record::*> flags)
{
    for (const auto flag : flags)
        to.*flag = from.*flag;
}

/// One row of a query. Its columns are counted from 0, in the order in which load() was given their names.
class Row final
{
    Q_DISABLE_COPY_MOVE(Row)

public:
    Row(const FMResultSet &rows, const QList<int> &indices) : rows(rows), indices(indices) {}

    /// The text in a column; nothing for a NULL and for a column that does not exist.
    std::optional<QString> optionalText(qsizetype column) const
    {
        return rows.stringForColumnIndex(indices[column]);
    }

    /// The same, with an empty text for nothing: no write of ours produces that.
    QString text(qsizetype column) const { return optionalText(column).value_or(QString()); }

private:
    const FMResultSet &rows;
    const QList<int> &indices;
};

/// Reads every row of `query` with `read`, after opening the connection. Rows before one that cannot be read
/// are read. Waits for a locked file, unless the last call on the connection has waited for it in vain: so
/// the stores, which are created one after the other, wait once.
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

/// Fills the list with the rows of `query`, each of which `read` makes a record. When the list has entries
/// already (see LoadRetry), a failure leaves them, and they keep their `memoryOnlyFlags`.
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

/// Puts the records into ascending order of `begin`; those of equal begin keep their order.
template<typename Record>
void sortByBegin(QList<Record> &records)
{
    std::stable_sort(records.begin(), records.end(),
                     [](const Record &a, const Record &b) { return a.begin < b.begin; });
}

/// Runs the statement that stores a new record, then adds it to the list. Returns false, with the list as it
/// was, when the database refuses it.
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

/// Runs the statement that stores the fields of a record, then sets those of the entry with its id, if there
/// is one, but for its `memoryOnlyFlags`. Returns false, with the list as it was, when the
/// database refuses it.
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

/// Inverts the check of the record with that id, if there is one.
template<typename Record>
void toggleChecked(Published<QList<Record>> &list, const QString &id)
{
    list.modify([&id](QList<Record> &records) {
        if (const auto record = find(records, id); record != records.end())
            record->isChecked = !record->isChecked;
    });
}

/// Deletes the checked records from `table` and, one by one as that succeeds, from the list. Once the wait
/// for a locked file was in vain, the other records do not wait for it.
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
