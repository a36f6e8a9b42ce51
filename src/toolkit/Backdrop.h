#pragma once

#include "toolkit/CardShadow.h"

#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>

/// The layer between a window and a modal panel in it: it dims the window, takes its input and contains the
/// panel.
///
/// While it is there, all other children of the window are disabled, so that neither mouse, keys, shortcuts
/// nor assistive technology reach them. It stays for a moment after the panel has closed, so that the second
/// click of a double click does not reach the window. Then the window gets its focus back.
class Backdrop final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Backdrop)

public:
    /// Where the panel is: under the toolbar of the window, from which it slides in, or in its middle.
    enum class Position { top, center };

    /// A hidden child of `window` that covers all of it. What has the focus now gets it back at the end.
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
    void placePanel();
    void replacePanelByPicture();
    void unlockWindow();
    void lockWindow(const Backdrop *top);

    Position position;
    QWidget *content;
    QPointer<QWidget> focusBefore;
    QPointer<QWidget> panel; // after it has closed, its picture
    QVariantAnimation movement;
    CardShadow shadow;
    bool isClosing = false;
};
