#pragma once

#include <QAbstractSpinBox>
#include <QAccessible>
#include <QKeyEvent>
#include <QTest>
#include <QWidget>

/// The visible widget in `root` that can have the focus and that assistive technology calls `name`. Null when
/// there is none.
template<typename Widget = QWidget>
Widget *control(const QWidget *root, const QString &name)
{
    const auto widgets = root->findChildren<Widget *>();
    for (Widget *widget : widgets) {
        if (widget->isVisible() && widget->focusPolicy() != Qt::NoFocus &&
            QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name) == name)
            return widget;
    }
    return nullptr;
}

/// Clicks the control of that name. False when there is none or it is disabled.
inline bool click(const QWidget *root, const QString &name)
{
    auto *widget = control(root, name);
    if (!widget || !widget->isEnabled())
        return false;
    QTest::mouseClick(widget, Qt::LeftButton);
    return true;
}

/// Sends the characters as key presses, as a keyboard of any script does.
inline void typeKeys(QWidget *widget, const QString &text)
{
    for (const QChar &key : text) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, key);
        QCoreApplication::sendEvent(widget, &press);
    }
}

/// Replaces the text in the line of that name. False when there is none.
inline bool type(const QWidget *root, const QString &name, const QString &text)
{
    auto *widget = control(root, name);
    if (!widget)
        return false;
    widget->setFocus();
    QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(widget, Qt::Key_Delete);
    typeKeys(widget, text);
    return true;
}

/// Types into the date or the time field of that name, from its beginning. False when there is none.
inline bool typeDigits(const QWidget *root, const QString &name, const QString &digits)
{
    auto *field = control<QAbstractSpinBox>(root, name);
    if (!field)
        return false;
    field->setFocus(Qt::TabFocusReason);
    typeKeys(field, digits);
    return true;
}
