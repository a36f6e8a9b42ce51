#include "ui/HolidayEdit.h"

#include "store/HolidayStore.h"
#include "store/Records.h"
#include "toolkit/DateField.h"

HolidayEdit::HolidayEdit(HolidayStore &holidayStore, const Clock &clock, QWidget *over)
    : HolidayEdit(Purpose::add, holidayStore, clock, Holiday(), over)
{}

HolidayEdit::HolidayEdit(HolidayStore &holidayStore, const Clock &clock, const Holiday &holiday,
                         QWidget *over)
    : HolidayEdit(Purpose::modify, holidayStore, clock, holiday, over)
{}

HolidayEdit::HolidayEdit(Purpose purpose, HolidayStore &holidayStore, const Clock &clock,
                         const Holiday &holiday, QWidget *over)
    : EditSheet(purpose == Purpose::add ? tr("Add Holiday") : tr("Modify"), over)
    , purpose(purpose)
    , holidayStore(holidayStore)
    , holiday(holiday)
    , begin(new DateField(holiday.begin, clock))
    , end(new DateField(holiday.end, clock))
{
    addTitleRow(holiday.title);
    addFieldRow(tr("Begin:"), begin);
    addFieldRow(tr("End:"), end);
    addButtons(purpose);
}

QString HolidayEdit::missing() const
{
    return {};
}

bool HolidayEdit::store()
{
    holiday.isChecked = false;
    holiday.title = title();
    holiday.begin = begin->dateText();
    holiday.end = end->dateText();
    if (purpose == Purpose::modify)
        return holidayStore.updateHoliday(holiday);
    holiday.id = Records::newId();
    return holidayStore.addHoliday(holiday);
}
