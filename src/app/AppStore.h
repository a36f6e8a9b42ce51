#pragma once

#include "platform/ObservableObject.h"

#include <QSet>

/// The screens of the window.
enum class NavigationItem { planView, holidayView, historyView, planEdit, holidayEdit };

inline size_t qHash(NavigationItem item, size_t seed = 0)
{
    return ::qHash(int(item), seed);
}

/// The state that the screens share. It is never saved: each start begins outside edit mode on the plan
/// screen.
class AppStore final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AppStore)

public:
    using ObservableObject::ObservableObject;

    /// Whether the cards show their controls, and the toolbar the buttons that delete, select and add.
    Published<bool> isEditMode{this, false};

    /// What is selected in the sidebar. A screen is shown when it alone is selected.
    Published<QSet<NavigationItem>> selection{this, {NavigationItem::planView}};
};
