#include "ui/HolidayItem.h"

#include "app/AppStore.h"
#include "store/HolidayStore.h"
#include "toolkit/ElidedLabel.h"
#include "toolkit/IconButton.h"
#include "toolkit/Style.h"
#include "ui/HolidayEdit.h"

using namespace Qt::StringLiterals;

HolidayItem::HolidayItem(const Environment &environment) : Card(0, 100), environment(environment)
{
    editButton = addButton();
    editButton->setSymbol(u"square.and.pencil"_s, tr("Edit"));
    selectButton = addButton();
    selectButton->setSymbols(u"square"_s, u"checkmark.square"_s, tr("Select"));
    begin = addText(Style::white);
    end = addText(Style::white);
    setColor(Style::holidayColor);

    connect(editButton, &IconButton::clicked, this, &HolidayItem::showHolidayEdit);
    connect(selectButton, &IconButton::clicked, this,
            [this, &store = environment.holidayStore] { store.toggleChecked(holiday); });
}

void HolidayItem::setRecord(const Holiday &record)
{
    holiday = record;
    setTitle(holiday.title);
    editButton->setVisible(environment.appStore.isEditMode);
    selectButton->setVisible(environment.appStore.isEditMode);
    selectButton->setChecked(holiday.isChecked);
    begin->setText(holiday.begin);
    end->setText(holiday.end);
}

void HolidayItem::showHolidayEdit()
{
    auto *editor = new HolidayEdit(environment.holidayStore, environment.clock, holiday, window());
    editor->open();
}
