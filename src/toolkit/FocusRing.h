#pragma once

#include <QObject>

class QWidget;

/// Frames the button of its window that has the keyboard focus: styles mark push and tool buttons so faintly
/// that it is easily overlooked. The window owns it.
class FocusRing final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FocusRing)

public:
    explicit FocusRing(QWidget *window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void follow(QWidget *old, QWidget *now);
};
