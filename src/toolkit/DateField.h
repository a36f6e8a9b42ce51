#pragma once

#include "toolkit/DateTimeField.h"

class Clock;

/// A day, shown in the short form of the user's locale with all digits of the year. A calendar pops up from
/// its arrow, or with F4 or Alt+Down. A year typed with two digits is one of this century.
class DateField final : public DateTimeField
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DateField)

public:
    /// Shows the day that `text` denotes ("yyyy-MM-dd"), or today when it denotes none.
    DateField(const QString &text, const Clock &clock, QWidget *parent = nullptr);

    /// The day as "yyyy-MM-dd".
    QString dateText() const;

protected:
    void fixup(QString &input) const override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void openCalendar();
};
