#include "toolkit/SymbolLabel.h"

#include "toolkit/Style.h"
#include "toolkit/Symbol.h"

#include <QPainter>

#include <utility>

SymbolLabel::SymbolLabel(QString symbol, const QString &name, QWidget *parent)
    : QLabel(parent)
    , symbol(std::move(symbol))
{
    setAccessibleName(name);
    setToolTip(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize SymbolLabel::sizeHint() const
{
    return {Style::hitSize, Style::hitSize};
}

void SymbolLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QRect icon(0, 0, Style::iconSize, Style::iconSize);
    icon.moveCenter(rect().center());
    Symbol::paint(&painter, icon, symbol, Style::softWhite);
}
