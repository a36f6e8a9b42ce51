#include "ui/HistoryItem.h"

#include "app/AppStore.h"
#include "store/HistoryStore.h"
#include "toolkit/ElidedLabel.h"
#include "toolkit/IconButton.h"
#include "toolkit/Style.h"

using namespace Qt::StringLiterals;

HistoryItem::HistoryItem(const Environment &environment) : Card(0, 100), environment(environment)
{
    selectButton = addButton();
    selectButton->setSymbols(u"square"_s, u"checkmark.square"_s, tr("Select"));
    begin = addText(Style::white);
    end = addText(Style::white);
    setColor(Style::historyColor);

    connect(selectButton, &IconButton::clicked, this,
            [this, &store = environment.historyStore] { store.toggleChecked(history); });
}

void HistoryItem::setRecord(const History &record)
{
    history = record;
    setTitle(history.title);
    selectButton->setVisible(environment.appStore.isEditMode);
    selectButton->setChecked(history.isChecked);
    begin->setText(history.begin);
    end->setText(history.end);
}
