#include "toolkit/CheckBox.h"

#include "toolkit/Style.h"

#include <QPainter>
#include <QStyleOptionButton>

void CheckBox::paintEvent(QPaintEvent *event)
{
    QCheckBox::paintEvent(event);
    if (!Style::isDark(palette()))
        return;
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRectF indicator = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
    QColor frame = palette().color(QPalette::WindowText);
    frame.setAlphaF(0.6F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(frame);
    painter.drawRoundedRect(indicator.adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
}
