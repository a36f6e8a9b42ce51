#include "ui/Sidebar.h"

#include "app/AppStore.h"
#include "core/Scheduler.h"
#include "core/TickTimer.h"
#include "toolkit/Refresher.h"
#include "toolkit/Style.h"
#include "toolkit/Symbol.h"
#include "ui/HistoryView.h"
#include "ui/HolidayView.h"
#include "ui/PlanView.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QStackedWidget>
#include <QStyledItemDelegate>

using namespace Qt::StringLiterals;

namespace {

constexpr int columnWidth = 120;
constexpr int symbolRole = Qt::UserRole;

// Gives the rows of the list room to breathe, and a frame to the one with the focus.
class RowDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index).grownBy({0, Style::lineGap, 0, Style::lineGap});
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyleOptionViewItem row(option);
        row.state.setFlag(QStyle::State_HasFocus, false);
        QStyledItemDelegate::paint(painter, row, index);
        const bool isSelected = option.state.testFlag(QStyle::State_Selected);
        if (option.state.testFlag(QStyle::State_HasFocus))
            Style::paintFocus(painter, option.rect,
                              option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text));
    }
};

QFrame *makeSeparator()
{
    auto *line = new QFrame;
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Plain);
    line->setForegroundRole(QPalette::Mid);
    return line;
}

} // namespace

// The rows of the list and the screens are in the order of NavigationItem's first three cases.
Sidebar::Sidebar(const Environment &environment, QWidget *parent)
    : QWidget(parent)
    , appStore(environment.appStore)
    , scheduler(new Scheduler(environment.clock, environment.planStore, environment.holidayStore,
                              environment.historyStore, environment.avPlayer, this))
    , list(new QListWidget)
    , clockLine(new QLabel)
    , screens(new QStackedWidget)
    , column(makeColumn())
    , separator(makeSeparator())
{
    auto *columns = new QHBoxLayout(this);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(0);
    columns->addWidget(column);
    columns->addWidget(separator);
    columns->addWidget(screens, 1);

    addScreen(tr("Plan"), u"calendar"_s, new PlanView(environment));
    addScreen(tr("Holiday"), u"nosign"_s, new HolidayView(environment));
    addScreen(tr("History"), u"clock"_s, new HistoryView(environment));
    showSelection();
    setFocusProxy(list);
    connect(list, &QListWidget::itemSelectionChanged, this, &Sidebar::writeSelection);
    new Refresher([this] { showSelection(); }, {&appStore}, this);
    new Refresher([this] { clockLine->setText(scheduler->nowTime); }, {scheduler}, this);

    auto *timer = new TickTimer(environment.clock, *scheduler, this);
    timer->start();
}

void Sidebar::toggleSidebar()
{
    column->setVisible(column->isHidden());
    separator->setVisible(!column->isHidden());
}

QWidget *Sidebar::makeColumn()
{
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setItemDelegate(new RowDelegate(list));
    list->setFrameShape(QFrame::NoFrame);
    list->viewport()->setAutoFillBackground(false);
    list->setAccessibleName(tr("Screens"));
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    clockLine->setAlignment(Qt::AlignCenter);
    clockLine->setMargin(Style::inset);

    auto *made = new QWidget;
    made->setFixedWidth(columnWidth);
    auto *lines = new QVBoxLayout(made);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(0);
    lines->addWidget(list, 1);
    lines->addWidget(clockLine);
    return made;
}

void Sidebar::addScreen(const QString &text, const QString &symbol, QWidget *screen)
{
    auto *row = new QListWidgetItem(text, list);
    row->setData(symbolRole, symbol);
    screens->addWidget(screen);
}

void Sidebar::writeSelection()
{
    QSet<NavigationItem> selection;
    for (const QModelIndex &row : list->selectionModel()->selectedRows())
        selection += NavigationItem(row.row());
    appStore.selection = selection;
}

// With several rows or none selected, the screen that was there stays.
void Sidebar::showSelection()
{
    const QSet<NavigationItem> &selection = appStore.selection;
    const QSignalBlocker noWriting(list);
    for (int row = 0; row < list->count(); ++row)
        list->item(row)->setSelected(selection.contains(NavigationItem(row)));
    if (selection.size() == 1)
        screens->setCurrentIndex(int(*selection.cbegin()));
    tint();
}

// The accent stands out from the window's colour, and so does that from the accent.
void Sidebar::tint()
{
    QPalette colors = palette();
    colors.setColor(QPalette::Highlight, Style::accent(Style::Accent::blue, palette()));
    colors.setColor(QPalette::HighlightedText, palette().color(QPalette::Active, QPalette::Window));
    list->setPalette(colors);
    colors.setColor(QPalette::Mid, Style::lineColor(palette()));
    separator->setPalette(colors);
    list->setIconSize(Style::iconSizeBeside(font()));
    for (int row = 0; row < list->count(); ++row) {
        QListWidgetItem *item = list->item(row);
        const QColor color = colors.color(item->isSelected() ? QPalette::HighlightedText : QPalette::Text);
        item->setIcon(Symbol::icon(item->data(symbolRole).toString(), color));
    }
}

void Sidebar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        tint();
    QWidget::changeEvent(event);
}
