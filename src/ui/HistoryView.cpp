#include "ui/HistoryView.h"

#include "store/HistoryStore.h"
#include "toolkit/Refresher.h"
#include "ui/HistoryItem.h"
#include "ui/RecordSource.h"

HistoryView::HistoryView(const Environment &environment, QWidget *parent)
    : CardGrid(recordSource<HistoryItem>(environment, environment.historyStore.historys), 20, parent)
{
    setAccessibleName(tr("History"));
    new Refresher([this] { refresh(); }, {&environment.historyStore, &environment.appStore}, this);
}
