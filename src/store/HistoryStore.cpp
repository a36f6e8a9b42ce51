#include "store/HistoryStore.h"

#include "core/TimeText.h"
#include "platform/Clock.h"
#include "store/NewId.h"
#include "store/Records.h"

using namespace Qt::StringLiterals;

namespace {

// The `end` of an unfinished entry; NULL in the table.
const QString unfinished = u"------"_s;

const QStringList columns{u"id"_s, u"title"_s, u"begin"_s, u"end"_s};

History readHistory(const Records::Row &row)
{
    return {.id = row.text(0),
            .title = row.text(1),
            .begin = row.text(2),
            .end = row.optionalText(3).value_or(unfinished)};
}

QString insertStatement(const History &history)
{
    const QString separator = u"',\n        '"_s;
    return u"        insert into history(\n"
           "        id,\n"
           "        title,\n"
           "        begin\n"
           "       ) values (\n"
           "        '"_s +
           history.id + separator + Records::escaped(history.title) + separator + history.begin +
           u"'\n       )"_s;
}

} // namespace

HistoryStore::HistoryStore(std::shared_ptr<FMDatabase> db, const Clock &clock, QObject *parent)
    : ObservableObject(parent)
    , db(std::move(db))
    , clock(clock)
{
    loadHistory();
}

void HistoryStore::addHistory(const QString &title)
{
    curId = newId();
    const History entry{.id = curId,
                        .title = title,
                        .begin = TimeText::formatDate(clock.now(), TimeText::timestampPattern),
                        .end = unfinished};
    if (!db->executeStatements(insertStatement(entry)))
        return;
    historys.modify([&entry](QList<History> &list) {
        list.append(entry);
        std::stable_sort(list.begin(), list.end(),
                         [](const History &a, const History &b) { return a.begin > b.begin; });
    });
}

void HistoryStore::finishHistory()
{
    if (curId->isEmpty())
        return;
    const QString end = TimeText::formatDate(clock.now(), TimeText::timestampPattern);
    if (!db->executeStatements(u"       update history\n       set    end = '"_s + end +
                               u"'\n       where  id = '"_s + curId.value() + u'\''))
        return;
    if (Records::find(historys.value(), curId) == historys->end())
        return;
    historys.modify([this, &end](QList<History> &list) { Records::find(list, curId)->end = end; });
    curId = QString();
}

void HistoryStore::deleteOldHistory()
{
    const QString today = TimeText::formatDate(clock.now(), TimeText::datePattern);
    if (!db->executeStatements(u" delete from history\n where begin not like '"_s + today + u"%'"_s))
        return;
    historys.modify([&today](QList<History> &list) {
        list.removeIf([&today](const History &entry) { return !entry.begin.startsWith(today); });
    });
}

void HistoryStore::deleteCheckedHistory()
{
    Records::deleteChecked(*db, u"history"_s, historys);
}

void HistoryStore::toggleChecked(const History &history)
{
    Records::toggleChecked(historys, history.id);
}

void HistoryStore::loadHistory()
{
    state = Records::load(*db, u"select *\nfrom history\norder by begin desc"_s, columns, historys,
                          {&History::isChecked}, readHistory);
}
