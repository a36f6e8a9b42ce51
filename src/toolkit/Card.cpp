#include "toolkit/Card.h"

#include "toolkit/ElidedLabel.h"
#include "toolkit/Group.h"
#include "toolkit/IconButton.h"
#include "toolkit/Style.h"
#include "toolkit/SymbolLabel.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

Card::Card(int minHeight, int maxHeight, QWidget *parent)
    : QWidget(parent)
    , minHeight(minHeight)
    , maxHeight(maxHeight)
    , group(new Group(this))
    , titleLabel(new ElidedLabel)
    , titleRow(new QHBoxLayout)
    , column(new QVBoxLayout(group))
{
    column->setContentsMargins(Style::inset, Style::inset, Style::inset, Style::inset);
    column->setSpacing(0);
    titleRow->setSpacing(0);
    titleRow->addWidget(titleLabel, 1);
    titleRow->addStrut(Style::hitSize);
    column->addLayout(titleRow);
    titleLabel->setColor(Style::white);
    titleLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    // A layout leaves out children that were never shown, and cards are measured before they are shown.
    // So each child is shown when it is added.
    titleLabel->show();
    updateTitleFont();
}

QString Card::title() const
{
    return titleLabel->text();
}

QList<QWidget *> Card::controls() const
{
    QList<QWidget *> found;
    for (QWidget *widget : findChildren<QWidget *>()) {
        if (widget->isVisibleTo(this) && widget->isEnabled() && widget->focusPolicy() != Qt::NoFocus)
            found << widget;
    }
    return found;
}

QSize Card::sizeHint() const
{
    // A hidden card's layout does not hear of a line that is shown or hidden.
    column->activate();
    const int bounded = qBound(minHeight, column->totalSizeHint().height(), maxHeight);
    return {Style::cardWidth, qMax(bounded, column->totalMinimumSize().height())};
}

void Card::setTitle(const QString &newTitle)
{
    titleLabel->setText(newTitle);
    group->setAccessibleName(title());
}

void Card::setColor(const QColor &newColor)
{
    if (color == newColor)
        return;
    color = newColor;
    update();
}

IconButton *Card::addButton()
{
    auto *button = new IconButton;
    button->setFocusPolicy(Qt::ClickFocus);
    addToTitleRow(button);
    return button;
}

SymbolLabel *Card::addSymbol(const QString &symbol, const QString &name)
{
    auto *label = new SymbolLabel(symbol, name);
    addToTitleRow(label);
    return label;
}

void Card::addStretch()
{
    column->addSpacerItem(new QSpacerItem(0, Style::lineGap, QSizePolicy::Minimum, QSizePolicy::Expanding));
}

void Card::addLine(QWidget *line)
{
    // The gap belongs to the line: it goes when the line is hidden, and gives way where height is short.
    auto *gapAndLine = new QVBoxLayout;
    gapAndLine->setSpacing(0);
    gapAndLine->addSpacerItem(new QSpacerItem(0, Style::lineGap, QSizePolicy::Minimum, QSizePolicy::Maximum));
    gapAndLine->addWidget(line);
    column->addLayout(gapAndLine);
    line->show();
}

ElidedLabel *Card::addText(const QColor &textColor)
{
    auto *text = new ElidedLabel;
    text->setColor(textColor);
    text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    addLine(text);
    return text;
}

void Card::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        updateTitleFont();
    QWidget::changeEvent(event);
}

void Card::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(rect(), Style::cardRadius, Style::cardRadius);
}

void Card::resizeEvent(QResizeEvent *)
{
    group->setGeometry(rect());
}

void Card::addToTitleRow(QWidget *widget)
{
    titleRow->addWidget(widget, 0, Qt::AlignTop);
    widget->show();
}

void Card::updateTitleFont()
{
    titleLabel->setFont(Style::titleFont(font()));
}
