#pragma once

#include <QList>
#include <QString>

#include <functional>

class QDialog;
class QWidget;

/// Messages in a window. None of them waits: the window stays locked until a button is pressed, and
/// everything else goes on.
namespace Alert {

enum class Role {
    standard,    ///< what Enter presses
    destructive, ///< marked as dangerous, and never pressed by Enter alone
    cancel,      ///< what Escape presses; also Enter, beside a destructive one
};

struct Button
{
    QString text;
    Role role = Role::standard;
    /// Runs when the alert has closed; may be empty.
    std::function<void()> action;
};

/// Shows an alert in the window of `parent` and returns it; it deletes itself when it closes. Closing it in
/// another way presses the cancel button, or the first one where none cancels. The actions die with `parent`.
QDialog *show(QWidget *parent, const QString &title, const QString &message, const QList<Button> &buttons);

} // namespace Alert
