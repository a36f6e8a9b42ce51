#include "support/MainWindow.h"
#include "support/Table.h"
#include "toolkit/Symbol.h"
#include "ui/HolidayEdit.h"
#include "ui/PlanEdit.h"
#include "ui/PlanView.h"

#include <QElapsedTimer>
#include <QMessageBox>
#include <QPaintEvent>
#include <QToolButton>
#include <QWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QStringList allScreens{u"Plan"_s, u"Holiday"_s, u"History"_s};
const QString editButtons = u"Toggle Sidebar|Delete|Select All|Add Plan|Add Holiday|Finish"_s;
const QString countRows =
    u"select (select count(*) from plan), (select count(*) from holiday), (select count(*) from history)"_s;

// The buttons that are shown, in their order.
QString buttons(const MainWindow &desk)
{
    QStringList names;
    for (const QToolButton *button : desk.toolBar()->findChildren<QToolButton *>()) {
        if (button->isVisible())
            names << button->text();
    }
    return names.join(u'|');
}

// Whether "Select All" is there with that symbol; with none when that is empty.
bool selectAllShows(const MainWindow &desk, const QString &symbol)
{
    const auto *button = control<QToolButton>(desk.toolBar(), u"Select All"_s);
    if (!button || symbol.isEmpty())
        return button && button->icon().isNull();
    const auto picture = [](const QIcon &icon) { return icon.pixmap(16).toImage(); };
    const QColor color = button->palette().color(QPalette::ButtonText);
    return picture(button->icon()) == picture(Symbol::icon(symbol, color));
}

template<typename Record>
QString checkedTitles(const Published<QList<Record>> &records)
{
    QString titles;
    for (const Record &record : records.value())
        titles += record.isChecked ? record.title : QString();
    return titles;
}

// The checked ones of all three lists: "ab|a|".
QString checked(const MainWindow &desk)
{
    return checkedTitles(desk.planStore.plans) + u'|' + checkedTitles(desk.holidayStore.holidays) + u'|' +
           checkedTitles(desk.historyStore.historys);
}

// Adds an entry of each title to all three lists, in this order.
void addToAllLists(MainWindow &desk, const QString &titles)
{
    for (qsizetype i = 0; i < titles.size(); ++i) {
        desk.addPlan(titles[i], u"1%1:00"_s.arg(i));
        desk.addHoliday(titles[i], u"2024-09-1%1"_s.arg(i));
        desk.historyStore.addHistory(titles[i]);
    }
}

// Where the window has painted, and how long ago.
class PaintedRegion final : public QObject
{
public:
    explicit PaintedRegion(QWidget &window) : window(window)
    {
        sinceLast.start();
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *widget = qobject_cast<QWidget *>(object);
        if (event->type() == QEvent::Paint && widget) {
            region +=
                static_cast<QPaintEvent *>(event)->region().translated(widget->mapTo(&window, QPoint()));
            sinceLast.start();
        }
        return false;
    }

    QRegion region;
    QElapsedTimer sinceLast;

private:
    QWidget &window;
};

} // namespace

class TestContentView final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void currentScreen_isTheOnlySelectedOne_data()
    {
        columns<QStringList, QString, QString, QString>("screens", "symbol", "afterSelectAll", "afterDelete");
        const QString box = u"checkmark.square"_s;
        QTest::newRow("plans") << QStringList{u"Plan"_s} << box << u"ab|a|a"_s << u"0|2|2"_s;
        QTest::newRow("holidays") << QStringList{u"Holiday"_s} << box << u"a|ab|a"_s << u"2|0|2"_s;
        QTest::newRow("log") << QStringList{u"History"_s} << box << u"a|a|ab"_s << u"2|2|0"_s;
        QTest::newRow("several are none") << allScreens.mid(1) << QString() << u"a|a|a"_s << u"2|2|2"_s;
        QTest::newRow("none") << QStringList() << QString() << u"a|a|a"_s << u"2|2|2"_s;
    }

    void currentScreen_isTheOnlySelectedOne()
    {
        QFETCH(QStringList, screens);
        QFETCH(QString, symbol);
        MainWindow desk;
        addToAllLists(desk, u"ab"_s);
        desk.planStore.toggleChecked(desk.planStore.plans->first());
        desk.holidayStore.toggleChecked(desk.holidayStore.holidays->first());
        desk.historyStore.toggleChecked(desk.historyStore.historys->first());
        desk.open();
        QCOMPARE(buttons(desk), u"Toggle Sidebar|Edit"_s);
        for (const QString &screen : allScreens) {
            if (screens.contains(screen) != (screen == allScreens.first()))
                desk.chooseScreen(screen, Qt::ControlModifier);
        }
        QVERIFY(click(desk.toolBar(), u"Edit"_s));
        QTRY_COMPARE(buttons(desk), editButtons);
        QVERIFY(click(desk.toolBar(), u"Select All"_s));
        QTRY_VERIFY(selectAllShows(desk, symbol));
        QTEST(checked(desk), "afterSelectAll");

        for (int time = 0; time < 2; ++time) {
            QVERIFY(click(desk.toolBar(), u"Add Plan"_s));
            QVERIFY(click(desk.dialog<PlanEdit>(), u"Close"_s));
            desk.closeDialogs();
            QVERIFY(click(desk.toolBar(), u"Add Holiday"_s));
            QVERIFY(desk.dialog<HolidayEdit>());
            press(Qt::Key_Escape);
            desk.closeDialogs();
        }
        QVERIFY(click(desk.toolBar(), u"Delete"_s));
        QVERIFY(click(desk.dialog(), u"Delete"_s));
        QTEST(desk.base.rows(countRows).first(), "afterDelete");
        QCOMPARE(buttons(desk), editButtons);
    }

    void selectAllFlag_isOfItsScreenWhateverTheBoxes()
    {
        MainWindow desk;
        addToAllLists(desk, u"ab"_s);
        desk.openInEditMode();
        const QStringList changes = desk.base.rows(u"select total_changes()"_s);
        for (const QString &screen : allScreens) {
            desk.chooseScreen(screen);
            QTRY_VERIFY(selectAllShows(desk, u"square"_s));
            QVERIFY(click(desk.toolBar(), u"Select All"_s));
            const auto *b = control<QAbstractButton>(desk.card(u"b"_s), u"Select"_s);
            QTRY_VERIFY(b->isChecked());
            QVERIFY(click(desk.card(u"b"_s), u"Select"_s));
            QTRY_VERIFY(!b->isChecked());
            QVERIFY(selectAllShows(desk, u"checkmark.square"_s));
        }
        QCOMPARE(checked(desk), u"a|a|a"_s);
        QVERIFY(click(desk.toolBar(), u"Select All"_s));
        QCOMPARE(checked(desk), u"a|a|"_s);
        QVERIFY(click(desk.toolBar(), u"Finish"_s));
        QTRY_VERIFY(click(desk.toolBar(), u"Edit"_s));
        for (const auto &symbol : {u"square"_s, u"checkmark.square"_s, u"checkmark.square"_s}) {
            QTRY_VERIFY(selectAllShows(desk, symbol));
            QTest::keyClick(desk.list(), Qt::Key_Up);
        }
        QCOMPARE(desk.base.rows(u"select total_changes()"_s), changes);
    }

    void deletion_takesTheCheckedOnceConfirmed()
    {
        for (const auto &toCheck : {u"a"_s, u"bc"_s, u"d"_s, QString()}) {
            MainWindow desk;
            addToAllLists(desk, u"abcd"_s);
            desk.openInEditMode();
            QString remaining = u"abcd"_s;
            for (const QChar title : toCheck) {
                QVERIFY(click(desk.card(title), u"Select"_s));
                remaining.remove(title);
            }
            QVERIFY(click(desk.toolBar(), u"Delete"_s));
            QVERIFY(desk.dialog<QMessageBox>()->informativeText().contains(u"Delete the selected data?"_s));
            QVERIFY(click(desk.dialog(), u"Cancel"_s));
            desk.closeDialogs();
            QCOMPARE(checked(desk), toCheck + u"||"_s);

            QVERIFY(click(desk.toolBar(), u"Delete"_s));
            QVERIFY(click(desk.dialog(), u"Delete"_s));
            QCOMPARE(checked(desk), u"||"_s);
            QCOMPARE(desk.base.rows(u"select title from plan order by begin"_s).join(QString()), remaining);
            for (const QChar title : toCheck)
                QTRY_VERIFY(!desk.card(title));
        }
    }

    void shortcuts_standForTheButtonsThatAreShown()
    {
        MainWindow desk;
        addToAllLists(desk, u"a"_s);
        desk.open();
        const auto pressAll = [] {
            press(Qt::Key_A, Qt::ControlModifier);
            press(Qt::Key_N, Qt::ControlModifier);
            press(Qt::Key_Delete);
            QCoreApplication::processEvents();
        };
        desk.window.findChild<PlanView *>()->setFocus();
        pressAll();
        QCOMPARE(checked(desk), u"||"_s);
        QVERIFY(!desk.window.findChild<QDialog *>());

        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(buttons(desk), editButtons);
        press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(checked(desk), u"a||"_s);
        press(Qt::Key_Delete);
        QVERIFY(desk.dialog<QMessageBox>());
        press(Qt::Key_Escape);
        desk.closeDialogs();

        // Under an editor the keys are those of its fields, and the window takes no clicks.
        press(Qt::Key_N, Qt::ControlModifier);
        QVERIFY(type(desk.dialog<PlanEdit>(), u"Title:"_s, u"New"_s));
        pressAll();
        press(Qt::Key_E, Qt::ControlModifier);
        const auto *finish = control(desk.toolBar(), u"Finish"_s);
        QTest::mouseClick(desk.window.windowHandle(), Qt::LeftButton, {},
                          finish->mapTo(&desk.window, finish->rect().center()));
        QCOMPARE(desk.window.findChildren<QDialog *>().size(), 1);
        QCOMPARE(checked(desk), u"a||"_s);
        press(Qt::Key_Escape);
        desk.closeDialogs();
        QCOMPARE(buttons(desk), editButtons);
        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(buttons(desk), u"Toggle Sidebar|Edit"_s);
    }

    void window_hasItsLeastSizeAndItsColumn()
    {
        MainWindow desk;
        desk.open();
        QCOMPARE(desk.window.windowTitle(), u"Belfry — Quillmoss"_s);
        QCOMPARE(desk.window.width(), 960);
        desk.window.resize(100, 100);
        QTRY_COMPARE(desk.window.size(), QSize(960, 488));
        desk.window.resize(1600, 900);
        const auto *screen = desk.window.findChild<PlanView *>();
        QTRY_VERIFY(screen->width() > 1440 && screen->width() < 1600);
        QCOMPARE(desk.column()->width(), 120);
        for (const bool isShown : {false, true}) {
            QVERIFY(click(desk.toolBar(), u"Toggle Sidebar"_s));
            QTRY_COMPARE(screen->width() < 1600, isShown);
        }
    }

    void timetable_goesOnUnderEditorsAndAlerts()
    {
        for (const auto &button : {u"Add Plan"_s, u"Add Holiday"_s, u"Delete"_s}) {
            MainWindow desk;
            desk.addPlan(u"A"_s);
            desk.openInEditMode();
            desk.clock.advance(950); // from its first tick on the window's own timer fires every 50 ms
            QVERIFY(click(desk.toolBar(), button));
            QVERIFY(desk.dialog());
            QTRY_COMPARE(desk.clockLine()->text(), u"07:59:58"_s);
            desk.clock.advance(2000);
            QTRY_VERIFY(control(desk.card(u"A"_s), u"Stop"_s));
            QVERIFY(desk.stage.sounding);
        }
    }

    void tab_visitsEverythingThereAndBack_data()
    {
        columns<QString, bool, QString>("screen", "isEditMode", "stops");
        QTest::newRow("plans") << u"Plan"_s << true << u"Edit|Stop|Select|Edit|Play|Select|"_s + editButtons;
        QTest::newRow("plans, outside edit mode") << u"Plan"_s << false << u"Stop|Toggle Sidebar|Edit"_s;
        QTest::newRow("holidays") << u"Holiday"_s << true << u"Edit|Select|Edit|Select|"_s + editButtons;
        QTest::newRow("log") << u"History"_s << true << u"Select|Select|"_s + editButtons;
    }

    void tab_visitsEverythingThereAndBack()
    {
        QFETCH(QString, screen);
        QFETCH(bool, isEditMode);
        QFETCH(QString, stops);
        MainWindow desk;
        addToAllLists(desk, u"ab"_s);
        const Plan a = desk.planStore.plans->first();
        desk.planStore.togglePlaying(a);
        desk.avPlayer.play(a.content, false);
        desk.openInEditMode();
        desk.appStore.isEditMode = isEditMode;
        desk.chooseScreen(screen);
        QTRY_VERIFY(desk.card(u"a"_s) && buttons(desk) == stops.right(buttons(desk).size()));
        desk.list()->setFocus();
        const auto walk = [&desk](Qt::Key key) {
            QStringList visited;
            do {
                visited << QAccessible::queryAccessibleInterface(QApplication::focusWidget())
                               ->text(QAccessible::Name);
                press(key);
            } while (!desk.list()->hasFocus() && visited.size() < 20);
            return visited;
        };
        QStringList forward = walk(Qt::Key_Tab);
        QCOMPARE(forward.join(u'|'), u"Screens|"_s + screen + u'|' + stops);
        std::reverse(forward.begin() + 1, forward.end());
        QCOMPARE(walk(Qt::Key_Backtab), forward);
    }

    void second_repaintsOnlyWhatChanges_data()
    {
        QTest::addColumn<bool>("isPlaying");
        QTest::newRow("the clock") << false;
        QTest::newRow("the clock and the plan that plays") << true;
    }

    void second_repaintsOnlyWhatChanges()
    {
        QFETCH(bool, isPlaying);
        MainWindow desk;
        addToAllLists(desk, u"abc"_s);
        desk.addPlan(u"A"_s, isPlaying ? u"08:00"_s : u"18:00"_s);
        desk.open();
        desk.tick("08:00:00");
        PaintedRegion painted(desk.window);
        QTRY_VERIFY(painted.sinceLast.elapsed() > 100);
        painted.region = {};
        const auto rect = [&desk](const QWidget *widget) {
            return QRect(widget->mapTo(&desk.window, QPoint()), widget->size());
        };
        const QRect clock = rect(desk.clockLine());
        const QRect card = rect(desk.card(u"A"_s));
        for (const char *time : {"08:00:01", "08:00:02", "08:00:03"}) {
            if (isPlaying)
                desk.stage.sounding->setCurrentTime(desk.stage.sounding->currentTime() + 1);
            desk.tick(time);
            QTRY_VERIFY(painted.region.intersects(clock) && painted.region.intersects(card) == isPlaying);
            QCOMPARE(painted.region.subtracted(isPlaying ? QRegion(clock) + card : clock), QRegion());
            painted.region = {};
        }
    }
};

QTEST_MAIN(TestContentView)
#include "TestContentView.moc"
