#include "toolkit/Backdrop.h"

#include "toolkit/Style.h"

#include <QEvent>
#include <QLabel>
#include <QMainWindow>
#include <QPainter>
#include <QStyle>
#include <QTimer>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

constexpr auto movementTime = 250ms;
constexpr int shadowRadius = 24;
constexpr QColor shadowColor{0, 0, 0, 110};

// The part of a window below its toolbar.
QWidget *contentOf(QWidget *window)
{
    const auto *mainWindow = qobject_cast<QMainWindow *>(window);
    return mainWindow && mainWindow->centralWidget() ? mainWindow->centralWidget() : window;
}

} // namespace

Backdrop::Backdrop(Position position, QWidget *window)
    : QWidget(window)
    , position(position)
    , content(contentOf(window))
    , focusBefore(window->focusWidget())
    , shadow(shadowRadius, shadowColor)
{
    hide();
    setAttribute(Qt::WA_NoMousePropagation);
    window->installEventFilter(this);
    content->installEventFilter(this);
    movement.setStartValue(0.0);
    movement.setEndValue(1.0);
    movement.setDuration(int(movementTime.count()));
    movement.setEasingCurve(QEasingCurve::OutCubic);
    connect(&movement, &QVariantAnimation::valueChanged, this, &Backdrop::placePanel);
    connect(&movement, &QVariantAnimation::finished, this, &Backdrop::placePanel);
}

void Backdrop::open(QWidget *newPanel)
{
    panel = newPanel;
    panel->installEventFilter(this);
    lockWindow(this);
    raise();
    if (isAnimated())
        movement.start();
    placePanel();
    show();
}

void Backdrop::close()
{
    isClosing = true;
    if (isAnimated()) {
        if (position == Position::top)
            replacePanelByPicture();
        movement.setDirection(QAbstractAnimation::Backward);
        movement.start();
    }
    placePanel();
    QTimer::singleShot(movementTime, this, &Backdrop::unlockWindow);
}

bool Backdrop::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    const bool panelChanged = watched == panel && type == QEvent::LayoutRequest;
    const bool windowChanged = watched != panel && (type == QEvent::Resize || type == QEvent::Move);
    if (panelChanged || windowChanged)
        placePanel();
    return false;
}

void Backdrop::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QColor dim(Qt::black);
    dim.setAlphaF(float(progress() * (Style::isDark(palette()) ? 0.5 : 0.3)));
    painter.fillRect(rect(), dim);
    if (!panel || !panel->isVisible())
        return;
    painter.setClipRect(area());
    // No shadow falls on the edge that a sheet hangs from.
    const int above = position == Position::top ? shadow.margin() : 0;
    shadow.paint(&painter, panel->geometry().adjusted(0, -above, 0, 0));
}

bool Backdrop::isAnimated() const
{
    return style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
}

double Backdrop::progress() const
{
    if (movement.state() == QAbstractAnimation::Running)
        return movement.currentValue().toDouble();
    return isClosing ? 0 : 1;
}

// Where the panel may be. One that is too high for the part below the toolbar gets the whole window.
QRect Backdrop::area() const
{
    const bool isBelowToolBar =
        position == Position::top && content != parentWidget() && panel->height() <= content->height();
    return isBelowToolBar ? content->geometry() : rect();
}

void Backdrop::placePanel()
{
    setGeometry(parentWidget()->rect());
    update();
    if (!panel)
        return;
    if (!isClosing)
        panel->resize(panel->sizeHint().boundedTo(panel->maximumSize()).boundedTo(size()));
    QRect target = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, panel->size(), area());
    if (position == Position::top) {
        // It slides out from under the toolbar.
        const int hidden = qRound((target.height() - 1) * (1 - progress()));
        target.moveTop(area().top() - hidden);
        panel->setMask(QRect(0, hidden, target.width(), target.height() - hidden));
    }
    panel->setGeometry(target);
}

// The panel itself is hidden at once; its picture slides out.
void Backdrop::replacePanelByPicture()
{
    auto *picture = new QLabel(this);
    picture->setPixmap(panel->grab());
    picture->setGeometry(panel->geometry());
    picture->show();
    panel = picture;
}

void Backdrop::unlockWindow()
{
    hide();
    const bool isTop = isEnabled(); // the others are locked, as the window is
    const auto backdrops = parentWidget()->findChildren<Backdrop *>(Qt::FindDirectChildrenOnly);
    const auto below = std::find_if(backdrops.rbegin(), backdrops.rend(),
                                    [](const Backdrop *other) { return !other->isHidden(); });
    lockWindow(below == backdrops.rend() ? nullptr : *below);
    if (isTop) {
        const bool canFocus = focusBefore && focusBefore->isVisible() && focusBefore->isEnabled();
        (canFocus ? focusBefore.data() : content)->setFocus(Qt::PopupFocusReason);
    }
    deleteLater();
}

// Enables only `top` of the window's children, or all if that is null.
void Backdrop::lockWindow(const Backdrop *top)
{
    for (QWidget *child : parentWidget()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
        if (!child->isWindow())
            child->setEnabled(!top || child == top);
    }
}
