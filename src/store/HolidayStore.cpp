#include "store/HolidayStore.h"

#include "store/Records.h"

using namespace Qt::StringLiterals;

namespace {

const QStringList columns{u"id"_s, u"title"_s, u"begin"_s, u"end"_s};

Holiday readHoliday(const Records::Row &row)
{
    return {.id = row.text(0), .title = row.text(1), .begin = row.text(2), .end = row.text(3)};
}

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
           holiday.id + separator + Records::escaped(holiday.title) + separator + holiday.begin + separator +
           holiday.end + u"'\n      )"_s;
}

QString updateStatement(const Holiday &holiday)
{
    return u"update holiday set\n         title   ='"_s + Records::escaped(holiday.title) +
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
    Records::toggleChecked(holidays, holiday.id);
}

void HolidayStore::loadHolidays()
{
    state = Records::load(*db, u"select *\nfrom holiday\norder by begin"_s, columns, holidays,
                          {&Holiday::isChecked}, readHoliday);
}
