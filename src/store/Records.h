#pragma once

#include "db/FMDatabase.h"
#include "db/FMResultSet.h"
#include "platform/ObservableObject.h"

#include <QList>
#include <QUuid>

#include <algorithm>

/// What the three stores have in common: records with an `id` and an `isChecked`, in a published list
/// and in a table of the same database.
namespace Records {

/// A new id: a random UUID of 36 characters in upper case.
inline QString newId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

/// `text` with every "'" doubled, to stand between single quotes in a statement.
inline QString quoted(QString text)
{
    return text.replace(u'\'', QStringLiteral("''"));
}

/// Hands every row of the query to `read`; opens the connection first. No row on any failure.
template<typename Read>
void load(FMDatabase &db, const QString &query, Read &&read)
{
    if (!db.open())
        return;
    const auto rows = db.executeQuery(query, {});
    while (rows && rows->next())
        read(*rows);
}

/// The text in a column; empty for a NULL, which no write of ours produces.
inline QString text(FMResultSet &row, const QString &column)
{
    return row.stringForColumn(column).value_or(QString());
}

/// The first record with that id, or the end of the list.
template<typename List>
auto find(List &list, const QString &id)
{
    return std::find_if(list.begin(), list.end(), [&id](const auto &record) { return record.id == id; });
}

/// Puts the records into ascending order of `begin`; those of equal begin keep their order.
template<typename Record>
void sortByBegin(Published<QList<Record>> &list)
{
    list.modify([](QList<Record> &records) {
        std::stable_sort(records.begin(), records.end(),
                         [](const Record &a, const Record &b) { return a.begin < b.begin; });
    });
}

/// Runs the statement that stores a new record, then adds it to the list. Returns false, with the list as it
/// was, when the database refuses it.
template<typename Record>
bool add(FMDatabase &db, const QString &statement, Published<QList<Record>> &list, const Record &record)
{
    if (!db.executeStatements(statement))
        return false;
    list.modify([&record](QList<Record> &records) { records.append(record); });
    sortByBegin(list);
    return true;
}

/// Runs the statement that stores the fields of a record, then sets those of the entry with its id, if there
/// is one, but for its `marks`, which live in memory only. Returns false, with the list as it was, when the
/// database refuses it.
template<typename Record>
bool update(FMDatabase &db, const QString &statement, Published<QList<Record>> &list, Record record,
            std::initializer_list<bool Record::*> marks)
{
    if (!db.executeStatements(statement))
        return false;
    list.modify([&record, marks](QList<Record> &records) {
        const auto entry = find(records, record.id);
        if (entry == records.end())
            return;
        for (const auto mark : marks)
            record.*mark = (*entry).*mark;
        *entry = record;
    });
    sortByBegin(list);
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

/// Deletes the checked records from `table` and, one by one as that succeeds, from the list.
template<typename Record>
void deleteChecked(FMDatabase &db, const QString &table, Published<QList<Record>> &list)
{
    for (qsizetype i = list->size() - 1; i >= 0; --i) {
        const Record &record = list->at(i);
        if (record.isChecked &&
            db.executeStatements(QStringLiteral(" delete from ") + table + QStringLiteral(" where id = '") +
                                 record.id + QStringLiteral("';")))
            list.modify([i](QList<Record> &records) { records.removeAt(i); });
    }
}

} // namespace Records
