#include "ui/HolidayView.h"

#include "store/HolidayStore.h"
#include "toolkit/Refresher.h"
#include "ui/HolidayItem.h"
#include "ui/RecordSource.h"

HolidayView::HolidayView(const Environment &environment, QWidget *parent)
    : CardGrid(recordSource<HolidayItem>(environment, environment.holidayStore.holidays), 10, parent)
{
    setAccessibleName(tr("Holiday"));
    new Refresher([this] { refresh(); }, {&environment.holidayStore, &environment.appStore}, this);
}
