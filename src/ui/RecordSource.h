#pragma once

#include "app/AppStore.h"
#include "toolkit/CardGrid.h"
#include "ui/Environment.h"

/// The source of a grid of `Item` cards, one for each record of a store. They have controls in edit mode
/// only.
template<typename Item, typename Record>
CardSource recordSource(const Environment &environment, const Published<QList<Record>> &records)
{
    return {
        .count = [&records] { return int(records->size()); },
        .id = [&records](int index) { return records->at(index).id; },
        .create = [environment] { return new Item(environment); },
        .show = [&records](Card *card,
                           int index) { static_cast<Item *>(card)->setRecord(records->at(index)); },
        .heightClass = [](int) { return 0; },
        .hasControls = [&appStore = environment.appStore](int) { return appStore.isEditMode.value(); },
    };
}
