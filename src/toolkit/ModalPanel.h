#pragma once

#include "toolkit/Backdrop.h"

#include <QDialog>

/// A dialog inside its window, the same on every display: until it closes the window is dimmed and takes no
/// input, while everything that needs none goes on.
///
/// It deletes itself when it closes; show it with open(). Escape closes it, Enter presses its default button.
class ModalPanel : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModalPanel)

public:
    /// `title` names the panel for assistive technology; `parent` is any widget of the window that it belongs
    /// to.
    ModalPanel(Backdrop::Position position, const QString &title, QWidget *parent);

    /// Where it is in the window.
    Backdrop::Position position() const { return panelPosition; }

    /// Shows the panel; the focus goes to the widget in it that setFocus() was last called for.
    void open() override;

    /// Closes the panel. Clicks that come after that, while it disappears, do nothing.
    void done(int result) override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Backdrop *backdrop;
    Backdrop::Position panelPosition;
};
