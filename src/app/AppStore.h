#pragma once

#include "platform/ObservableObject.h"

#include <QSet>

/// The screens of the window.
enum class NavigationItem { planView, holidayView, historyView, planEdit, holidayEdit };

inline size_t qHash(NavigationItem item, size_t seed = 0)
{
    return ::qHash(int(item), seed);
}

/// The state that the screens share and that nothing saves: every start begins outside edit mode on the
/// plan screen.
class AppStore final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AppStore)

public:
    using ObservableObject::ObservableObject;

    /// The cards show their controls, and the toolbar its buttons that delete, select and add.
    Published<bool> isEditMode{this, false};

    /// What is selected in the sidebar. A screen is the current one when this is the set of it alone.
    Published<QSet<NavigationItem>> selection{this, {NavigationItem::planView}};
};
