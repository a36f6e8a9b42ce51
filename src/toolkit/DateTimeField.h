#pragma once

#include <QDateTimeEdit>

/// A date or a time of day that is edited section by section: with digits, with the arrow keys, or with the
/// wheel while it has the focus.
///
/// A section that is entered, by key or by click, is selected, so that digits replace it, and when it is full
/// the next one is entered. The sections stand in the order of the format in right-to-left layouts too. What
/// is shown is never changed by summer time.
class DateTimeField : public QDateTimeEdit
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DateTimeField)

protected:
    explicit DateTimeField(QWidget *parent);

    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

    /// Types a digit into the current section.
    virtual void typeDigit(int digit);

private:
    bool isSectionSelected() const;
};
