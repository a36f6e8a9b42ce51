#include "store/PlanStore.h"

#include "store/Records.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

// The flags and their columns, in table order.
const std::array<std::pair<bool Plan::*, QString>, 9> flags{{{&Plan::isLoop, u"isloop"_s},
                                                             {&Plan::isMusic, u"ismusic"_s},
                                                             {&Plan::week0, u"week0"_s},
                                                             {&Plan::week1, u"week1"_s},
                                                             {&Plan::week2, u"week2"_s},
                                                             {&Plan::week3, u"week3"_s},
                                                             {&Plan::week4, u"week4"_s},
                                                             {&Plan::week5, u"week5"_s},
                                                             {&Plan::week6, u"week6"_s}}};

QString flagText(bool flag)
{
    return flag ? u"true"_s : u"false"_s;
}

QStringList columnNames()
{
    QStringList names{u"id"_s, u"title"_s, u"begin"_s, u"end"_s, u"music"_s, u"content"_s};
    for (const auto &[flag, column] : flags)
        names += column;
    return names;
}

Plan readPlan(const Records::Row &row)
{
    Plan plan{.id = row.text(0),
              .title = row.text(1),
              .begin = row.text(2),
              .end = row.text(3),
              .music = row.text(4),
              .content = row.text(5)};
    qsizetype index = 6;
    for (const auto &[flag, column] : flags)
        plan.*flag = row.text(index++) == "true"_L1;
    return plan;
}

QString insertStatement(const Plan &plan)
{
    QStringList values{plan.id,  Records::escaped(plan.title), plan.begin,
                       plan.end, Records::escaped(plan.music), Records::escaped(plan.content)};
    for (const auto &[flag, column] : flags)
        values += flagText(plan.*flag);
    return u"         insert into plan(\n"
           "         id,\n"
           "         title,\n"
           "         begin,\n"
           "         end,\n"
           "         music,\n"
           "         content,\n"
           "         isloop,\n"
           "         ismusic,\n"
           "         week0,\n"
           "         week1,\n"
           "         week2,\n"
           "         week3,\n"
           "         week4,\n"
           "         week5,\n"
           "         week6\n"
           "      ) values (\n"
           "         '"_s +
           values.join(u"',\n         '"_s) + u"'\n      )"_s;
}

QString updateStatement(const Plan &plan)
{
    const auto assignment = [](const QString &column, const QString &value) {
        return u"         "_s + column.leftJustified(8) + u"='"_s + value + u'\'';
    };
    QStringList assignments{assignment(u"title"_s, Records::escaped(plan.title)),
                            assignment(u"begin"_s, plan.begin), assignment(u"end"_s, plan.end),
                            assignment(u"music"_s, Records::escaped(plan.music)),
                            assignment(u"content"_s, Records::escaped(plan.content))};
    for (const auto &[flag, column] : flags)
        assignments += assignment(column, flagText(plan.*flag));
    return u"update plan set\n"_s + assignments.join(u",\n"_s) + u"\nwhere id = '"_s + plan.id + u'\'';
}

} // namespace

PlanStore::PlanStore(std::shared_ptr<FMDatabase> db, QObject *parent)
    : ObservableObject(parent)
    , db(std::move(db))
{
    loadPlans();
}

bool PlanStore::addPlan(const Plan &plan)
{
    return Records::add(*db, insertStatement(plan), plans, plan);
}

bool PlanStore::updatePlan(const Plan &plan)
{
    return Records::update(*db, updateStatement(plan), plans, plan, {&Plan::isChecked, &Plan::isPlaying});
}

void PlanStore::deleteCheckedPlans()
{
    Records::deleteChecked(*db, u"plan"_s, plans);
}

void PlanStore::togglePlaying(const Plan &plan)
{
    plans.modify([id = plan.id](QList<Plan> &list) {
        for (Plan &entry : list)
            entry.isPlaying = entry.id == id && !entry.isPlaying;
    });
}

void PlanStore::toggleChecked(const Plan &plan)
{
    Records::toggleChecked(plans, plan.id);
}

void PlanStore::loadPlans()
{
    state = Records::load(*db, u"select *\nfrom plan\norder by begin"_s, columnNames(), plans,
                          {&Plan::isChecked, &Plan::isPlaying}, readPlan);
}
