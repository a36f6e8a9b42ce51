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

QFrame *createSeparator()
{
    auto *line = new QFrame;
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Plain);
    line->setForegroundRole(QPalette::Mid);
    return line;
}

} // namespace

// The rows of the list and the screens are in the order of NavigationItem.
Sidebar::Sidebar(const Environment &environment, QWidget *parent)
    : QWidget(parent)
    , appStore(environment.appStore)
    , scheduler(new Scheduler(environment.clock, environment.planStore, environment.holidayStore,
                              environment.historyStore, environment.avPlayer, this))
    , list(new NavigationList)
    , clockLabel(new QLabel)
    , screens(new QStackedWidget)
    , column(createColumn())
    , separator(createSeparator())
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(column);
    layout->addWidget(separator);
    layout->addWidget(screens, 1);

    addScreen(tr("Plan"), u"calendar"_s, new PlanView(environment));
    addScreen(tr("Holiday"), u"nosign"_s, new HolidayView(environment));
    addScreen(tr("History"), u"clock"_s, new HistoryView(environment));
    updateColors();
    updateClockSize();
    applySelection();
    setFocusProxy(list);
    connect(list, &QListWidget::itemSelectionChanged, this, &Sidebar::publishSelection);
    new Refresher([this] { applySelection(); }, {&appStore}, this);
    new Refresher([this] { clockLabel->setText(scheduler->nowTime); }, {scheduler}, this);

    auto *timer = new TickTimer(environment.clock, *scheduler, this);
    timer->start();
}

void Sidebar::toggleSidebar()
{
    column->setVisible(column->isHidden());
    separator->setVisible(!column->isHidden());
}

QWidget *Sidebar::createColumn()
{
    list->setAccessibleName(tr("Screens"));

    clockLabel->setAlignment(Qt::AlignCenter);

    auto *created = new QWidget;
    created->setFixedWidth(columnWidth);
    created->setAutoFillBackground(true);
    auto *layout = new QVBoxLayout(created);
    layout->setContentsMargins(0, Style::lineGap, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(list, 1);
    layout->addWidget(clockLabel);
    return created;
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

// If several rows or none are selected, the current screen stays.
void Sidebar::applySelection()
{
    const QSet<NavigationItem> &selection = appStore.selection;
    const QSignalBlocker blocker(list);
    for (int row = 0; row < list->count(); ++row)
        list->item(row)->setSelected(selection.contains(NavigationItem(row)));
    if (selection.size() == 1)
        screens->setCurrentIndex(int(*selection.cbegin()));
}

// Selected text has the colour of the window: in light and dark schemes alike the accent contrasts with it.
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

// Of a fixed size, so that a new second is painted without a new layout of the window. In a font that is too
// wide for the column it is smaller.
void Sidebar::updateClockSize()
{
    const auto fits = [this](qreal scale) {
        const QFontMetrics metrics(Style::scaled(font(), scale));
        return metrics.horizontalAdvance(u"00:00:00"_s) + 2 * Style::inset <= columnWidth;
    };
    clockLabel->setFont(Style::scaled(font(), Style::fittingScale(0.5, fits)));
    clockLabel->setFixedSize(columnWidth, clockLabel->fontMetrics().height() + 2 * Style::inset);
}

void Sidebar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        updateColors();
    if (event->type() == QEvent::FontChange)
        updateClockSize();
    QWidget::changeEvent(event);
}
