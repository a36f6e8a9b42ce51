#include "toolkit/TextRow.h"

#include "toolkit/ElidedLabel.h"
#include "toolkit/Style.h"

#include <QEvent>
#include <QHBoxLayout>

#include <cmath>

TextRow::TextRow(const QStringList &texts, QWidget *parent) : QWidget(parent)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->setSpacing(Style::spacing);
    for (const QString &text : texts) {
        labels << new ElidedLabel;
        labels.last()->setText(text);
        row->addWidget(labels.last());
        labels.last()->show(); // or the layout would leave it out while a card is measured
    }
    row->addStretch();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void TextRow::setOn(int index, bool on)
{
    labels[index]->setColor(on ? Style::softWhite : Style::softGrey);
    labels[index]->setEnabled(on);
}

QSize TextRow::minimumSizeHint() const
{
    return {0, fontMetrics().height()};
}

void TextRow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        shrinkToFit();
    QWidget::changeEvent(event);
}

void TextRow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    shrinkToFit();
}

qreal TextRow::widthAt(qreal scale) const
{
    const QFontMetricsF metrics(Style::scaled(font(), scale));
    qreal width = int(Style::spacing * scale) * qreal(labels.size() - 1);
    for (const ElidedLabel *label : labels)
        width += std::ceil(metrics.horizontalAdvance(label->text()));
    return width;
}

void TextRow::shrinkToFit()
{
    const qreal scale =
        Style::fittingScale(0.4, [this](qreal candidate) { return widthAt(candidate) <= width(); });
    layout()->setSpacing(int(Style::spacing * scale));
    for (ElidedLabel *label : std::as_const(labels))
        label->setFont(Style::scaled(font(), scale));
}
