#pragma once

#include "store/Holiday.h"
#include "toolkit/Card.h"
#include "ui/Environment.h"

/// The card of a holiday: its first and last day and, in edit mode, an edit button and a check box.
class HolidayItem final : public Card
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HolidayItem)

public:
    explicit HolidayItem(const Environment &environment);

    /// Shows `record` in the current edit mode.
    void setRecord(const Holiday &record);

private:
    void showHolidayEdit();

    Environment environment;
    Holiday holiday;
    IconButton *editButton;
    IconButton *selectButton;
    ElidedLabel *begin;
    ElidedLabel *end;
};
