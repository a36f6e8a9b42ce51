#pragma once

#include "toolkit/DateTimeField.h"

#include <QDate>
#include <QString>

class Clock;

/// A date, shown in the short form of the user's locale with all digits of the year. A calendar pops up from
/// its arrow, or with F4 or Alt+Down.
///
/// A year typed with two digits is one of this century. A typed day that its month does not have becomes the
/// last one, until a month or year is typed that has it.
class DateField final : public DateTimeField
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DateField)

public:
    /// Shows the date `text` ("yyyy-MM-dd"), or today's where that is not one.
    DateField(const QString &text, const Clock &clock, QWidget *parent = nullptr);

    /// The date as "yyyy-MM-dd".
    QString dateText() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void typeDigit(int digit) override;

private:
    void setSection(Section section, int number);
    void enterNextSection();
    void openCalendar();

    /// The digits typed into the current section since it was entered.
    QString typedDigits;
    QDate typedDate;
    /// The day that was typed for `typedDate`.
    int typedDay = 0;
};
