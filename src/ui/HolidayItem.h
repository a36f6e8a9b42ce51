#pragma once

#include "store/Holiday.h"
#include "toolkit/Card.h"
#include "ui/Environment.h"

/// The card of a holiday: its first and last day and, in edit mode, what selects and edits it.
class HolidayItem final : public Card
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HolidayItem)

public:
    explicit HolidayItem(const Environment &environment);

    /// Shows `holiday` as it stands, in the present edit mode.
    void show(const Holiday &holiday);

private:
    void showHolidayEdit();

    Environment environment;
    Holiday holiday;
    IconButton *edit;
    IconButton *select;
    ElidedLabel *begin;
    ElidedLabel *end;
};
