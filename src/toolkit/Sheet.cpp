#include "toolkit/Sheet.h"

#include "toolkit/FormRow.h"
#include "toolkit/Style.h"
#include "toolkit/Symbol.h"

#include <QEvent>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QVBoxLayout>

namespace {

class SheetButton final : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QStyleOptionButton option;
        initStyleOption(&option);
        QStylePainter painter(this);
        // Styles mirror a text beside an icon, and the painter would mirror it again.
        painter.setLayoutDirection(Qt::LeftToRight);
        painter.drawControl(QStyle::CE_PushButton, option);
    }
};

} // namespace

Sheet::Sheet(const QString &title, QWidget *parent)
    : ModalPanel(Backdrop::Position::top, title, parent)
    , buttons(new FormRow(QString()))
{
    updateMaximumSize();

    auto *content = new QWidget;
    content->setMinimumSize(Style::sheetSize);
    rows = new QVBoxLayout(content);
    rows->setContentsMargins({});
    rows->setSpacing(Style::spacing);
    rows->addWidget(buttons, 0, Qt::AlignLeading);
    rows->addStretch();

    auto *frame = new QVBoxLayout(this);
    frame->setContentsMargins(Style::inset, Style::inset, Style::inset, Style::inset);
    frame->addWidget(content);
}

void Sheet::addRow(QWidget *row)
{
    rows->insertWidget(rows->indexOf(buttons), row);
    buttons->raise(); // assistive technology reads the rows in this order
}

QPushButton *Sheet::addButton(const QString &symbol, const QString &text)
{
    auto *button = new SheetButton(Symbol::icon(symbol), text);
    button->setIconSize(Style::iconSizeBeside(font()));
    button->setDefault(!buttons->findChild<QPushButton *>());
    buttons->addField(button);
    return button;
}

void Sheet::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        updateMaximumSize();
    ModalPanel::changeEvent(event);
}

void Sheet::updateMaximumSize()
{
    setMaximumSize(Style::scaledToFont(Style::sheetMaximum.width(), font()),
                   Style::scaledToFont(Style::sheetMaximum.height(), font()));
}
