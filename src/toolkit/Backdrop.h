#pragma once

#include "toolkit/CardShadow.h"

#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>

/// What lies between a window and a modal panel in it: it dims the window, takes its input and carries the
/// panel.
///
/// While it is there, all other children of the window are disabled, so that neither mouse, keys, shortcuts
/// nor assistive technology reach them. It stays for a moment after the panel has closed: the rest of a
/// double click belongs to the panel. Then the window gets its focus back.
class Backdrop final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Backdrop)

public:
    /// Where the panel lies: under the toolbar of the window, from which it slides in, or in its middle.
    enum class Position { top, center };

    /// Hidden, and a child of `window`, which it covers whole. What has the focus now gets it back in the
    /// end.
    Backdrop(Position position, QWidget *window);

    /// Locks the window and makes room for `panel`, a child of the backdrop that is about to be shown.
    void open(QWidget *panel);

    /// Starts to disappear with the panel, which is about to be hidden. The backdrop deletes itself.
    void close();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    bool isAnimated() const;
    double progress() const;
    QRect area() const;
    void place();
    void showPicture();
    void release();
    void lockWindow(const Backdrop *top);

    Position position;
    QWidget *content;
    QPointer<QWidget> focusBefore;
    QPointer<QWidget> shown;
    QVariantAnimation movement;
    CardShadow shadow;
    bool isClosing = false;
};
