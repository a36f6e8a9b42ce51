#pragma once

#include <QObject>

class QWidget;

/// Marks what has the focus in its window while the keyboard is in use: from a key press to the next press
/// of a mouse button.
///
/// It frames push and tool buttons, which styles mark so faintly that it is easily overlooked; other widgets
/// ask isShownBy() and paint their own mark. The window owns it.
class FocusRing final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FocusRing)

public:
    explicit FocusRing(QWidget *window);

    /// Whether `widget` has the focus and is to show so.
    static bool isShownBy(const QWidget *widget);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool isFramed(const QObject *object) const;
    static bool paintFramed(QWidget *button, QEvent *event);
    void setShown(const QObject *input, bool isShown);

    QWidget *window;
};
