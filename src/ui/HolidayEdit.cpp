#include "ui/HolidayEdit.h"

#include "store/HolidayStore.h"
#include "store/NewId.h"
#include "toolkit/DateField.h"

HolidayEdit::HolidayEdit(HolidayStore &holidayStore, const Clock &clock, QWidget *parent)
    : HolidayEdit(Purpose::add, holidayStore, clock, Holiday(), parent)
{}

HolidayEdit::HolidayEdit(HolidayStore &holidayStore, const Clock &clock, const Holiday &holiday,
                         QWidget *parent)
    : HolidayEdit(Purpose::modify, holidayStore, clock, holiday, parent)
{}

HolidayEdit::HolidayEdit(Purpose purpose, HolidayStore &holidayStore, const Clock &clock,
                         const Holiday &holiday, QWidget *parent)
    : EditSheet(purpose == Purpose::add ? tr("Add Holiday") : tr("Modify"), parent)
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

QString HolidayEdit::validationError() const
{
    return {};
}

bool HolidayEdit::commit()
{
    holiday.isChecked = false;
    holiday.title = title();
    holiday.begin = begin->dateText();
    holiday.end = end->dateText();
    if (purpose == Purpose::modify)
        return holidayStore.updateHoliday(holiday);
    holiday.id = newId();
    return holidayStore.addHoliday(holiday);
}
