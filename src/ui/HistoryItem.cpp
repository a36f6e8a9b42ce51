#include "ui/HistoryItem.h"

#include "app/AppStore.h"
#include "store/HistoryStore.h"
#include "toolkit/ElidedLabel.h"
#include "toolkit/IconButton.h"
#include "toolkit/Style.h"

using namespace Qt::StringLiterals;

HistoryItem::HistoryItem(const Environment &environment) : Card(0, 100), environment(environment)
{
    select = addButton();
    select->setSymbols(u"square"_s, u"checkmark.square"_s, tr("Select"));
    begin = addText(Style::white);
    end = addText(Style::white);
    setColor(Style::historyColor);

    connect(select, &IconButton::clicked, this,
            [this] { this->environment.historyStore.toggleChecked(history); });
}

void HistoryItem::show(const History &shown)
{
    history = shown;
    setTitle(history.title);
    select->setVisible(environment.appStore.isEditMode);
    select->setChecked(history.isChecked);
    begin->setText(history.begin);
    end->setText(history.end);
}
