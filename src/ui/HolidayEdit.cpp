#include "ui/HolidayEdit.h"

#include "store/HolidayStore.h"
#include "store/NewId.h"
#include "toolkit/DateField.h"

HolidayEdit::HolidayEdit(HolidayStore &holidayStore, const Clock &clock, const std::optional<Holiday> &edited,
                         QWidget *parent)
    : EditSheet(edited ? tr("Modify") : tr("Add Holiday"), parent)
    , purpose(edited ? Purpose::modify : Purpose::add)
    , holidayStore(holidayStore)
    , holiday(edited.value_or(Holiday()))
    , begin(new DateField(holiday.begin, clock))
    , end(new DateField(holiday.end, clock))
{
    addTitleRow(holiday.title);
    addFieldRow(tr("Begin:"), begin);
    addFieldRow(tr("End:"), end);
    addButtons(purpose);
}

bool HolidayEdit::commit()
{
    holiday.title = title();
    holiday.begin = begin->dateText();
    holiday.end = end->dateText();
    if (purpose == Purpose::modify)
        return holidayStore.updateHoliday(holiday);
    holiday.id = newId();
    return holidayStore.addHoliday(holiday);
}
