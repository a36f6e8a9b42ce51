#include "ui/PlanView.h"

#include "core/AVPlayer.h"
#include "store/PlanStore.h"
#include "toolkit/Refresher.h"
#include "ui/PlanItem.h"
#include "ui/RecordSource.h"

namespace {

// The card of a plan that plays has one more line, and a button outside edit mode too.
CardSource sourceOf(const Environment &environment)
{
    CardSource source = recordSource<PlanItem>(environment, environment.planStore.plans);
    source.heightClass = [&store = environment.planStore](int index) {
        return int(store.plans->at(index).isPlaying);
    };
    source.hasControls = [environment](int index) {
        return environment.appStore.isEditMode || environment.planStore.plans->at(index).isPlaying;
    };
    return source;
}

} // namespace

PlanView::PlanView(const Environment &environment, QWidget *parent)
    : CardGrid(sourceOf(environment), 10, parent)
{
    setAccessibleName(tr("Plan"));
    new Refresher([this] { refresh(); },
                  {&environment.planStore, &environment.appStore, &environment.avPlayer}, this);
}
