#include "ui/ContentView.h"

#include "app/AppStore.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"
#include "toolkit/Alert.h"
#include "toolkit/FocusRing.h"
#include "toolkit/ModalPanel.h"
#include "toolkit/Refresher.h"
#include "toolkit/Symbol.h"
#include "ui/HolidayEdit.h"
#include "ui/PlanEdit.h"
#include "ui/Sidebar.h"

#include <QAction>
#include <QCloseEvent>
#include <QEvent>
#include <QScreen>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize minimumWindowSize{960, 488};
// Wide enough for three columns of cards.
constexpr QSize initialSize{960, 640};

// In the middle of what the panels of the desktop leave free; the title bar comes on top. What is too large
// for that begins at its top left, where the toolbar is.
QRect initialGeometry(const QScreen &screen, int titleBarHeight)
{
    const QRect free = screen.availableGeometry().adjusted(0, titleBarHeight, 0, 0);
    const QSize size = initialSize.boundedTo(free.size()).expandedTo(minimumWindowSize);
    QRect geometry = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, free);
    geometry.moveTo(qMax(geometry.x(), free.x()), qMax(geometry.y(), free.y()));
    return geometry;
}

bool isCurrent(const AppStore &appStore, NavigationItem screen)
{
    return appStore.selection.value() == QSet{screen};
}

template<typename Record>
void invertAndCheckAll(bool &flag, Published<QList<Record>> &records)
{
    flag = !flag;
    records.modify([flag](QList<Record> &list) {
        for (Record &record : list)
            record.isChecked = flag;
    });
}

} // namespace

ContentView::ContentView(const Environment &environment, QWidget *parent)
    : QMainWindow(parent)
    , environment(environment)
    , sidebar(new Sidebar(environment))
{
    setWindowTitle(u"Belfry — Quillmoss"_s);
    setCentralWidget(sidebar);
    setMinimumSize(minimumWindowSize);
    setGeometry(initialGeometry(*screen(), style()->pixelMetric(QStyle::PM_TitleBarHeight)));
    createToolBar();
    updateToolBar();
    sidebar->setFocus();
    new FocusRing(this);
    new Refresher([this] { updateToolBar(); }, {&environment.appStore}, this);
    new Refresher([this] { showEditors(); }, {&environment.planStore, &environment.holidayStore}, this);
}

void ContentView::changeEvent(QEvent *event)
{
    if ((event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) && editMode)
        updateToolBar();
    QMainWindow::changeEvent(event);
}

// Who closes the window while a panel is open means the panel: the bells must not stop by mistake.
void ContentView::closeEvent(QCloseEvent *event)
{
    const auto panels = findChildren<ModalPanel *>();
    const auto top =
        std::find_if(panels.rbegin(), panels.rend(), [](auto *panel) { return panel->isVisible(); });
    if (top == panels.rend())
        return QMainWindow::closeEvent(event);
    (*top)->reject();
    event->ignore();
}

void ContentView::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    fitToolBar();
}

void ContentView::createToolBar()
{
    toolBar = addToolBar(tr("Toolbar"));
    toolBar->setMovable(false);
    toolBar->setContextMenuPolicy(Qt::PreventContextMenu);
    toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);

    toggleSidebar = addButton(tr("Toggle Sidebar"), [this] { sidebar->toggleSidebar(); });
    toggleSidebar->setIcon(Symbol::icon(u"sidebar.left"_s));
    qobject_cast<QToolButton *>(toolBar->widgetForAction(toggleSidebar))
        ->setToolButtonStyle(Qt::ToolButtonIconOnly);
    auto *space = new QWidget;
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    toolBar->addWidget(space);
    deleteButton = addButton(
        tr("Delete"), [this] { confirmDelete(); }, QKeySequence::Delete);
    selectAllButton = addButton(
        tr("Select All"), [this] { selectAll(); }, QKeySequence::SelectAll);
    addPlan = addButton(
        tr("Add Plan"), [this] { environment.planStore.showPlanEdit = true; }, QKeySequence::New);
    addHoliday = addButton(tr("Add Holiday"), [this] { environment.holidayStore.showHolidayEdit = true; });
    editMode = addButton(
        tr("Edit"), [this] { environment.appStore.isEditMode = !environment.appStore.isEditMode; },
        QKeySequence(Qt::CTRL | Qt::Key_E));
}

QAction *ContentView::addButton(const QString &text, const std::function<void()> &pressed,
                                const QKeySequence &shortcut)
{
    QAction *button = toolBar->addAction(text, this, pressed);
    button->setShortcut(shortcut);
    toolBar->widgetForAction(button)->setFocusPolicy(Qt::TabFocus);
    return button;
}

void ContentView::updateToolBar()
{
    const bool isEditMode = environment.appStore.isEditMode;
    for (QAction *button : {deleteButton, selectAllButton, addPlan, addHoliday})
        button->setVisible(isEditMode);
    editMode->setText(isEditMode ? tr("Finish") : tr("Edit"));

    tint(deleteButton, u"trash"_s, Style::Accent::red);
    tint(selectAllButton, selectAllSymbol(), Style::Accent::red);
    tint(addPlan, u"plus"_s, Style::Accent::green);
    tint(addHoliday, u"plus"_s, Style::Accent::green);
    tint(editMode, isEditMode ? u"checkmark"_s : u"square.and.pencil"_s, Style::Accent::blue);
    fitToolBar();
}

// Smaller where the texts are too wide for the window, so that no button is hidden.
void ContentView::fitToolBar()
{
    constexpr qreal step = 0.05;
    constexpr qreal minimumScale = 0.5;
    for (qreal scale = 1; scale > minimumScale; scale -= step) {
        const QFont fitting = Style::scaled(font(), scale);
        toolBar->setFont(fitting);
        toolBar->setIconSize(Style::iconSizeBeside(fitting));
        if (toolBar->sizeHint().width() <= width())
            break;
    }
}

void ContentView::tint(QAction *button, const QString &symbol, Style::Accent accent)
{
    const QColor color = Style::accent(accent, palette());
    button->setIcon(symbol.isEmpty() ? QIcon() : Symbol::icon(symbol, color));
    QWidget *widget = toolBar->widgetForAction(button);
    QPalette colors = palette();
    colors.setColor(QPalette::ButtonText, color);
    widget->setPalette(colors);
}

// Empty where no screen is the current one.
QString ContentView::selectAllSymbol() const
{
    const auto symbol = [](bool isChecked) { return isChecked ? u"checkmark.square"_s : u"square"_s; };
    if (isCurrent(environment.appStore, NavigationItem::planView))
        return symbol(isPlanChecked);
    if (isCurrent(environment.appStore, NavigationItem::holidayView))
        return symbol(isHolidayChecked);
    if (isCurrent(environment.appStore, NavigationItem::historyView))
        return symbol(isHistoryChecked);
    return {};
}

void ContentView::selectAll()
{
    if (isCurrent(environment.appStore, NavigationItem::planView))
        invertAndCheckAll(isPlanChecked, environment.planStore.plans);
    if (isCurrent(environment.appStore, NavigationItem::holidayView))
        invertAndCheckAll(isHolidayChecked, environment.holidayStore.holidays);
    if (isCurrent(environment.appStore, NavigationItem::historyView))
        invertAndCheckAll(isHistoryChecked, environment.historyStore.historys);
    updateToolBar();
}

void ContentView::confirmDelete()
{
    Alert::show(this, tr("Confirm"), tr("Delete the selected data?"),
                {{tr("Delete"), Alert::Role::destructive, [this] { deleteSelected(); }},
                 {tr("Cancel"), Alert::Role::cancel, {}}});
}

void ContentView::deleteSelected()
{
    if (isCurrent(environment.appStore, NavigationItem::planView))
        environment.planStore.deleteCheckedPlans();
    if (isCurrent(environment.appStore, NavigationItem::holidayView))
        environment.holidayStore.deleteCheckedHolidays();
    if (isCurrent(environment.appStore, NavigationItem::historyView))
        environment.historyStore.deleteCheckedHistory();
}

void ContentView::showEditors()
{
    showEditor<PlanEdit>(planEdit, environment.planStore, environment.planStore.showPlanEdit);
    showEditor<HolidayEdit>(holidayEdit, environment.holidayStore, environment.holidayStore.showHolidayEdit);
}

template<typename Editor, typename Store>
void ContentView::showEditor(QPointer<QDialog> &editor, Store &store, Published<bool> &isShown)
{
    if (!isShown || editor)
        return;
    editor = new Editor(store, environment.clock, std::nullopt, this);
    connect(editor, &QDialog::finished, this, [&editor, &isShown] {
        editor.clear();
        isShown = false;
    });
    editor->open();
}
