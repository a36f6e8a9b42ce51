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
    edit = addButton();
    edit->setSymbol(u"square.and.pencil"_s, tr("Edit"));
    select = addButton();
    select->setSymbols(u"square"_s, u"checkmark.square"_s, tr("Select"));
    begin = addText(Style::white);
    end = addText(Style::white);
    setColor(Style::holidayColor);

    connect(edit, &IconButton::clicked, this, &HolidayItem::showHolidayEdit);
    connect(select, &IconButton::clicked, this,
            [this] { this->environment.holidayStore.toggleChecked(holiday); });
}

void HolidayItem::show(const Holiday &shown)
{
    holiday = shown;
    setTitle(holiday.title);
    edit->setVisible(environment.appStore.isEditMode);
    select->setVisible(environment.appStore.isEditMode);
    select->setChecked(holiday.isChecked);
    begin->setText(holiday.begin);
    end->setText(holiday.end);
}

void HolidayItem::showHolidayEdit()
{
    auto *editor = new HolidayEdit(environment.holidayStore, environment.clock, holiday, window());
    editor->open();
}
