#include "store/HolidayStore.h"

#include "store/Records.h"

using namespace Qt::StringLiterals;

namespace {

QString insertStatement(const Holiday &holiday)
{
    const QString separator = u"',\n        '"_s;
    return u"        insert into holiday(\n"
           "        id,\n"
           "        title,\n"
           "        begin,\n"
           "        end\n"
           "       ) values (\n"
           "        '"_s +
           holiday.id + separator + Records::quoted(holiday.title) + separator + holiday.begin + separator +
           holiday.end + u"'\n      )"_s;
}

QString updateStatement(const Holiday &holiday)
{
    return u"update holiday set\n         title   ='"_s + Records::quoted(holiday.title) +
           u"',\n         begin   ='"_s + holiday.begin + u"',\n         end     ='"_s + holiday.end +
           u"'\nwhere id = '"_s + holiday.id + u'\'';
}

} // namespace

HolidayStore::HolidayStore(std::shared_ptr<FMDatabase> db, QObject *parent)
    : ObservableObject(parent)
    , db(std::move(db))
{
    loadHolidays();
}

bool HolidayStore::addHoliday(const Holiday &holiday)
{
    return Records::add(*db, insertStatement(holiday), holidays, holiday);
}

bool HolidayStore::updateHoliday(const Holiday &holiday)
{
    return Records::update(*db, updateStatement(holiday), holidays, holiday, {&Holiday::isChecked});
}

void HolidayStore::deleteCheckedHolidays()
{
    Records::deleteChecked(*db, u"holiday"_s, holidays);
}

void HolidayStore::toggleChecked(const Holiday &holiday)
{
    Records::toggleChecked(holidays, QString(holiday.id));
}

void HolidayStore::loadHolidays()
{
    QList<Holiday> loaded;
    Records::load(*db, u"select *\nfrom holiday\norder by begin"_s, [&loaded](FMResultSet &row) {
        loaded.append({.id = Records::text(row, u"id"_s),
                       .title = Records::text(row, u"title"_s),
                       .begin = Records::text(row, u"begin"_s),
                       .end = Records::text(row, u"end"_s)});
    });
    holidays = loaded;
}
