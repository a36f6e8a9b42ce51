#include "toolkit/IconButton.h"

#include "toolkit/FocusRing.h"
#include "toolkit/Style.h"
#include "toolkit/Symbol.h"

#include <QPainter>
#include <QScopedValueRollback>

IconButton::IconButton(QWidget *parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void IconButton::setSymbol(const QString &newSymbol, const QString &name)
{
    if (symbol == newSymbol && accessibleName() == name)
        return;
    symbol = newSymbol;
    setAccessibleName(name);
    setToolTip(name);
    update();
}

void IconButton::setSymbols(const QString &unchecked, const QString &checked, const QString &name)
{
    setCheckable(true);
    checkedSymbol = checked;
    setSymbol(unchecked, name);
}

void IconButton::setChecked(bool checked)
{
    const QScopedValueRollback showing(isShowingRecord, true);
    QAbstractButton::setChecked(checked);
}

QSize IconButton::sizeHint() const
{
    return {Style::hitSize, Style::hitSize};
}

void IconButton::checkStateSet()
{
    if (isShowingRecord)
        return;
    // Assistive technology toggles the state instead of clicking: take that back, and click.
    setChecked(!isChecked());
    Q_EMIT clicked(isChecked());
}

void IconButton::nextCheckState() {}

void IconButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QRect icon(0, 0, Style::iconSize, Style::iconSize);
    icon.moveCenter(rect().center());
    Symbol::paint(&painter, icon, isChecked() ? checkedSymbol : symbol,
                  isDown() ? Style::white : Style::softWhite);
    if (FocusRing::isShownBy(this))
        Style::paintFocus(&painter, rect(), Style::white);
}
