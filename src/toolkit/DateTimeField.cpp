#include "toolkit/DateTimeField.h"

#include <QKeyEvent>
#include <QLineEdit>

DateTimeField::DateTimeField(QWidget *parent) : QDateTimeEdit(parent)
{
    setLayoutDirection(Qt::LeftToRight);
    setTimeSpec(Qt::UTC);
    setFocusPolicy(Qt::StrongFocus);
    lineEdit()->installEventFilter(this);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

bool DateTimeField::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == lineEdit() && event->type() == QEvent::MouseButtonRelease &&
        !lineEdit()->hasSelectedText())
        setSelectedSection(currentSection());
    return QDateTimeEdit::eventFilter(watched, event);
}

void DateTimeField::keyPressEvent(QKeyEvent *event)
{
    const QChar typed = event->text().isEmpty() ? QChar() : event->text().front();
    if (typed.isDigit())
        typeDigit(typed.digitValue());
    else if (!typed.isPrint() || !isSectionSelected()) // a typed separator has been passed already
        QDateTimeEdit::keyPressEvent(event);
}

void DateTimeField::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QDateTimeEdit::wheelEvent(event);
    else
        event->ignore();
}

bool DateTimeField::isSectionSelected() const
{
    return lineEdit()->hasSelectedText() && lineEdit()->selectedText() == sectionText(currentSection());
}

void DateTimeField::typeDigit(int digit)
{
    if (lineEdit()->selectedText() == text())
        setSelectedSection(sectionAt(0));
    // QDateTimeEdit only understands Latin digits, whichever the keyboard has.
    QKeyEvent press(QEvent::KeyPress, Qt::Key_0 + digit, Qt::NoModifier, QString::number(digit));
    QDateTimeEdit::keyPressEvent(&press);
}
