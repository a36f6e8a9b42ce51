#include "ui/Sidebar.h"

#include "app/AppStore.h"
#include "core/Scheduler.h"
#include "core/TickTimer.h"
#include "toolkit/Refresher.h"
#include "toolkit/Style.h"
#include "ui/HistoryView.h"
#include "ui/HolidayView.h"
#include "ui/NavigationList.h"
#include "ui/PlanView.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QStackedWidget>

using namespace Qt::StringLiterals;

namespace {

constexpr int columnWidth = 120;

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
    , list(new NavigationList)
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
    updateColors();
    applySelection();
    setFocusProxy(list);
    connect(list, &QListWidget::itemSelectionChanged, this, &Sidebar::publishSelection);
    new Refresher([this] { applySelection(); }, {&appStore}, this);
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
    list->setAccessibleName(tr("Screens"));

    clockLine->setAlignment(Qt::AlignCenter);
    clockLine->setMargin(Style::inset);

    auto *made = new QWidget;
    made->setFixedWidth(columnWidth);
    made->setAutoFillBackground(true);
    auto *lines = new QVBoxLayout(made);
    lines->setContentsMargins(0, Style::lineGap, 0, 0);
    lines->setSpacing(0);
    lines->addWidget(list, 1);
    lines->addWidget(clockLine);
    return made;
}

void Sidebar::addScreen(const QString &text, const QString &symbol, QWidget *screen)
{
    list->addRow(text, symbol);
    screens->addWidget(screen);
}

void Sidebar::publishSelection()
{
    QSet<NavigationItem> selection;
    for (const QModelIndex &row : list->selectionModel()->selectedRows())
        selection += NavigationItem(row.row());
    appStore.selection = selection;
}

// With several rows or none selected, the screen that was there stays.
void Sidebar::applySelection()
{
    const QSet<NavigationItem> &selection = appStore.selection;
    const QSignalBlocker noWriting(list);
    for (int row = 0; row < list->count(); ++row)
        list->item(row)->setSelected(selection.contains(NavigationItem(row)));
    if (selection.size() == 1)
        screens->setCurrentIndex(int(*selection.cbegin()));
}

// The accent stands out from the window's colour, and so does that from the accent.
void Sidebar::updateColors()
{
    QPalette colors = palette();
    colors.setColor(QPalette::Highlight, Style::accent(Style::Accent::blue, palette()));
    colors.setColor(QPalette::HighlightedText, palette().color(QPalette::Active, QPalette::Window));
    colors.setColor(QPalette::Window, Style::sidebarColor(palette()));
    column->setPalette(colors);
    colors.setColor(QPalette::Mid, Style::lineColor(palette()));
    separator->setPalette(colors);
}

void Sidebar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        updateColors();
    QWidget::changeEvent(event);
}
