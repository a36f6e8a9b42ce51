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
constexpr QSize initialSize{960, 640};

// Centred in the available area of the screen, with room for the title bar. Where the minimum size does not
// fit, the window begins at the top left, so that its toolbar is in view.
QRect initialGeometry(const QScreen &screen, int titleBarHeight)
{
    const QRect available = screen.availableGeometry().adjusted(0, titleBarHeight, 0, 0);
    const QSize size = initialSize.boundedTo(available.size());
    return QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, available);
}

bool isCurrent(const AppStore &appStore, NavigationItem screen)
{
    return appStore.selection.value() == QSet{screen};
}

template<typename Record>
void toggleAll(bool &flag, Published<QList<Record>> &records)
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
    new FocusRing(this);
    new Refresher([this] { updateToolBar(); }, {&environment.appStore}, this);
    new Refresher([this] { showEditors(); }, {&environment.planStore, &environment.holidayStore}, this);
}

void ContentView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        updateToolBar();
    QMainWindow::changeEvent(event);
}

// While a panel is open, closing the window closes the panel instead: the bells must not stop by mistake.
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

    QAction *toggleAction = addButton(tr("Toggle Sidebar"), [this] { sidebar->toggleSidebar(); });
    toggleAction->setIcon(Symbol::icon(u"sidebar.left"_s));
    qobject_cast<QToolButton *>(toolBar->widgetForAction(toggleAction))
        ->setToolButtonStyle(Qt::ToolButtonIconOnly);
    auto *spacer = new QWidget;
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    toolBar->addWidget(spacer);
    deleteAction = addButton(
        tr("Delete"), [this] { confirmDelete(); }, QKeySequence::Delete);
    selectAllAction = addButton(
        tr("Select All"), [this] { selectAll(); }, QKeySequence::SelectAll);
    addPlanAction = addButton(
        tr("Add Plan"), [this] { environment.planStore.showPlanEdit = true; }, QKeySequence::New);
    addHolidayAction =
        addButton(tr("Add Holiday"), [this] { environment.holidayStore.showHolidayEdit = true; });
    editModeAction = addButton(
        tr("Edit"), [this] { environment.appStore.isEditMode = !environment.appStore.isEditMode; },
        QKeySequence(Qt::CTRL | Qt::Key_E));
}

QAction *ContentView::addButton(const QString &text, const std::function<void()> &onTriggered,
                                const QKeySequence &shortcut)
{
    QAction *action = toolBar->addAction(text, this, onTriggered);
    action->setShortcut(shortcut);
    toolBar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    return action;
}

void ContentView::updateToolBar()
{
    const bool isEditMode = environment.appStore.isEditMode;
    for (QAction *action : {deleteAction, selectAllAction, addPlanAction, addHolidayAction})
        action->setVisible(isEditMode);
    editModeAction->setText(isEditMode ? tr("Finish") : tr("Edit"));

    setIcon(deleteAction, u"trash"_s, Style::Accent::red);
    setIcon(selectAllAction, selectAllSymbol(), Style::Accent::red);
    setIcon(addPlanAction, u"plus"_s, Style::Accent::green);
    setIcon(addHolidayAction, u"plus"_s, Style::Accent::green);
    setIcon(editModeAction, isEditMode ? u"checkmark"_s : u"square.and.pencil"_s, Style::Accent::blue);
    fitToolBar();
}

// Smaller where the texts are too wide for the window, so that no button is hidden.
void ContentView::fitToolBar()
{
    const auto setScale = [this](qreal scale) {
        const QFont font = Style::scaled(this->font(), scale);
        toolBar->setFont(font);
        toolBar->setIconSize(Style::iconSizeBeside(font));
    };
    setScale(Style::fittingScale(0.5, [this, setScale](qreal scale) {
        setScale(scale);
        return toolBar->sizeHint().width() <= width();
    }));
}

void ContentView::setIcon(QAction *action, const QString &symbol, Style::Accent accent)
{
    const QColor color = Style::accent(accent, palette());
    action->setIcon(symbol.isEmpty() ? QIcon() : Symbol::icon(symbol, color));
    QWidget *widget = toolBar->widgetForAction(action);
    QPalette colors = palette();
    colors.setColor(QPalette::ButtonText, color);
    widget->setPalette(colors);
}

// Empty if no screen is the current one.
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
        toggleAll(isPlanChecked, environment.planStore.plans);
    if (isCurrent(environment.appStore, NavigationItem::holidayView))
        toggleAll(isHolidayChecked, environment.holidayStore.holidays);
    if (isCurrent(environment.appStore, NavigationItem::historyView))
        toggleAll(isHistoryChecked, environment.historyStore.historys);
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
