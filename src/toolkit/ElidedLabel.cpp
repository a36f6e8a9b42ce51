#include "toolkit/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <QtMath>

#include <algorithm>

using namespace Qt::StringLiterals;

ElidedLabel::ElidedLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString &text)
{
    constexpr qsizetype maxLength = 1000;
    QLabel::setText(text.size() > maxLength ? text.first(maxLength) + u'…' : text);
}

bool ElidedLabel::isElided() const
{
    return sizeHint().width() > width();
}

void ElidedLabel::setColor(const QColor &newColor)
{
    if (color == newColor)
        return;
    color = newColor;
    update();
}

QSize ElidedLabel::sizeHint() const
{
    return {qCeil(QFontMetricsF(font()).horizontalAdvance(text())), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, fontMetrics().height()};
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    // As rich text, which is wrapped.
    const QString whole = u"<p style='white-space: pre-wrap'>"_s + text().toHtmlEscaped() + u"</p>"_s;
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), isElided() ? whole : QString(), this);
    return true;
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (std::any_of(text().cbegin(), text().cend(), [](QChar character) { return character.isLetter(); }))
        painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    painter.setPen(color.isValid() ? color : palette().color(foregroundRole()));
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, width(), Qt::TextSingleLine);
    const Qt::Alignment leading = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeading);
    painter.drawText(rect(), int(leading | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine, shown);
}
