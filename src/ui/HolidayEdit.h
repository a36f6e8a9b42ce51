#pragma once

#include "store/Holiday.h"
#include "ui/EditSheet.h"

#include <optional>

class Clock;
class DateField;
class HolidayStore;

/// The editor for a new or an existing holiday. It works on a copy: nothing reaches the store before it is
/// saved. An end before the begin is accepted.
class HolidayEdit final : public EditSheet
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HolidayEdit)

public:
    /// Edits `holiday`, which keeps its id; without one, a new holiday. A day that cannot be read is shown as
    /// today.
    HolidayEdit(HolidayStore &holidayStore, const Clock &clock, const std::optional<Holiday> &holiday,
                QWidget *parent);

private:
    bool commit() override;

    Purpose purpose;
    HolidayStore &holidayStore;
    Holiday holiday;
    DateField *begin;
    DateField *end;
};
