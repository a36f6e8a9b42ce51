#include "toolkit/LinearProgress.h"

#include "toolkit/Style.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int steps = 1000;
constexpr int thickness = 6;

} // namespace

LinearProgress::LinearProgress(QWidget *parent) : QProgressBar(parent)
{
    setRange(0, steps);
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void LinearProgress::setProgress(double value, double total)
{
    const double fraction = total > 0 ? std::clamp(value / total, 0.0, 1.0) : 0.0;
    setValue(qRound(fraction * steps));
}

QSize LinearProgress::sizeHint() const
{
    return {Style::labelWidth, thickness};
}

QSize LinearProgress::minimumSizeHint() const
{
    return {0, thickness};
}

void LinearProgress::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF track = rect();
    const qreal radius = track.height() / 2;
    painter.setBrush(Style::trackColor);
    painter.drawRoundedRect(track, radius, radius);

    QRectF done = track;
    done.setWidth(track.width() * value() / steps);
    if (layoutDirection() == Qt::RightToLeft)
        done.moveRight(track.right());
    painter.setBrush(Style::lightGreen);
    painter.drawRoundedRect(done, radius, radius);
}
