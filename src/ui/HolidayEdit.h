#pragma once

#include "store/Holiday.h"
#include "ui/EditSheet.h"

class Clock;
class DateField;
class HolidayStore;

/// The form in which a person creates a holiday or changes one. It works on a copy: nothing reaches the store
/// before it is saved. An end before the begin is not refused.
class HolidayEdit final : public EditSheet
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HolidayEdit)

public:
    /// For a new holiday: today.
    HolidayEdit(HolidayStore &holidayStore, const Clock &clock, QWidget *parent);

    /// For changing `holiday`, which keeps its id. A day of it that cannot be read is shown as today.
    HolidayEdit(HolidayStore &holidayStore, const Clock &clock, const Holiday &holiday, QWidget *parent);

private:
    HolidayEdit(Purpose purpose, HolidayStore &holidayStore, const Clock &clock, const Holiday &holiday,
                QWidget *parent);

    QString validationError() const override;
    bool commit() override;

    Purpose purpose;
    HolidayStore &holidayStore;
    Holiday holiday;
    DateField *begin;
    DateField *end;
};
