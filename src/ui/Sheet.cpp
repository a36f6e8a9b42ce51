#include "ui/Sheet.h"

#include "ui/Style.h"
#include "ui/Symbol.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

/// By how much the buttons stand behind the rows' beginning.
constexpr int buttonOffset = 70;
/// The spaces on either side of the buttons.
constexpr int emptyCount = 2;

} // namespace

Sheet::Sheet(const QString &title, QWidget *over) : QDialog(over->window())
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(title);
    setMaximumSize(Style::sheetMaximum);

    auto *content = new QWidget;
    content->setMinimumSize(Style::sheetSize);
    rows = new QVBoxLayout(content);
    rows->setContentsMargins({});
    rows->setSpacing(Style::spacing);
    buttons = new QHBoxLayout;
    buttons->setSpacing(Style::spacing);
    buttons->addSpacing(buttonOffset);
    buttons->addStretch();
    rows->addLayout(buttons);
    rows->addStretch();

    auto *frame = new QVBoxLayout(this);
    frame->setContentsMargins(Style::inset, Style::inset, Style::inset, Style::inset);
    frame->setSizeConstraint(QLayout::SetFixedSize);
    frame->addWidget(content);
}

void Sheet::addRow(QWidget *row)
{
    rows->insertWidget(rows->indexOf(buttons), row);
}

QPushButton *Sheet::addButton(const QString &symbol, const QString &text)
{
    auto *button = new QPushButton(Symbol::icon(symbol, palette().color(QPalette::ButtonText)), text);
    button->setDefault(buttons->count() == emptyCount);
    buttons->insertWidget(buttons->count() - 1, button);
    return button;
}

void Sheet::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    const QWidget *over = parentWidget();
    const QPoint top = over->mapToGlobal(QPoint((over->width() - width()) / 2, 0));
    move(top);
}
