#include "support/MainWindow.h"
#include "support/Table.h"
#include "toolkit/Symbol.h"
#include "ui/HolidayEdit.h"
#include "ui/PlanEdit.h"
#include "ui/PlanView.h"

#include <QMessageBox>
#include <QToolButton>
#include <QWindow>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QStringList allScreens{u"Plan"_s, u"Holiday"_s, u"History"_s};
const QString editButtons = u"Toggle Sidebar|Delete|Select All|Add Plan|Add Holiday|Finish"_s;

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
    const QIcon expected = Symbol::icon(symbol, button->palette().color(QPalette::ButtonText));
    return button->icon().pixmap(16).toImage() == expected.pixmap(16).toImage();
}

// The checked ones of all three lists: "ab|a||".
QString checked(const MainWindow &desk)
{
    QString titles;
    const auto add = [&titles](const auto &records) {
        for (const auto &record : records.value())
            titles += record.isChecked ? record.title : QString();
        titles += u'|';
    };
    add(desk.planStore.plans);
    add(desk.holidayStore.holidays);
    add(desk.historyStore.historys);
    return titles;
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

// Counts what is painted of a widget.
class Paints final : public QObject
{
public:
    explicit Paints(QWidget *widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }

    int count = 0;
};

} // namespace

class TestContentView final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void buttons_workOnTheOnlySelectedScreen_data()
    {
        columns<QStringList, QString, QString, QString>("screens", "symbol", "afterSelectAll", "afterDelete");
        const QString box = u"checkmark.square"_s;
        QTest::newRow("plans") << QStringList{u"Plan"_s} << box << u"ab|a|a|"_s << u"0|2|2"_s;
        QTest::newRow("holidays") << QStringList{u"Holiday"_s} << box << u"a|ab|a|"_s << u"2|0|2"_s;
        QTest::newRow("log") << QStringList{u"History"_s} << box << u"a|a|ab|"_s << u"2|2|0"_s;
        QTest::newRow("several are none") << allScreens.mid(1) << QString() << u"a|a|a|"_s << u"2|2|2"_s;
        QTest::newRow("none") << QStringList() << QString() << u"a|a|a|"_s << u"2|2|2"_s;
    }

    void buttons_workOnTheOnlySelectedScreen()
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

        QVERIFY(click(desk.toolBar(), u"Delete"_s));
        QVERIFY(desk.dialog<QMessageBox>()->informativeText().contains(u"Delete the selected data?"_s));
        press(Qt::Key_Return); // which deletes nothing
        desk.closeDialogs();
        QTEST(checked(desk), "afterSelectAll");
        QVERIFY(click(desk.toolBar(), u"Delete"_s));
        QVERIFY(click(desk.dialog(), u"Delete"_s));
        QTEST(desk.base
                  .rows(u"select (select count(*) from plan), (select count(*) from holiday),"
                        " (select count(*) from history)"_s)
                  .first(),
              "afterDelete");
        QCOMPARE(buttons(desk), editButtons);
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
        QCOMPARE(checked(desk), u"|||"_s);
        QVERIFY(!desk.window.findChild<QDialog *>());

        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(buttons(desk), editButtons);
        press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(checked(desk), u"a|||"_s);

        // Under an editor the keys are those of its fields, and the window takes no clicks.
        press(Qt::Key_N, Qt::ControlModifier);
        QVERIFY(type(desk.dialog<PlanEdit>(), u"Title:"_s, u"New"_s));
        pressAll();
        press(Qt::Key_E, Qt::ControlModifier);
        const auto *finish = control(desk.toolBar(), u"Finish"_s);
        QTest::mouseClick(desk.window.windowHandle(), Qt::LeftButton, {},
                          finish->mapTo(&desk.window, finish->rect().center()));
        QCOMPARE(desk.window.findChildren<QDialog *>().size(), 1);
        QCOMPARE(checked(desk), u"a|||"_s);
        press(Qt::Key_Escape);
        desk.closeDialogs();
        QCOMPARE(buttons(desk), editButtons);
        press(Qt::Key_Delete);
        QVERIFY(click(desk.dialog(), u"Delete"_s));
        desk.closeDialogs();
        QTRY_VERIFY(!desk.card(u"a"_s));
        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(buttons(desk), u"Toggle Sidebar|Edit"_s);
    }

    void window_isOnTheScreenAndHasItsSizesAndItsColumn()
    {
        MainWindow desk;
        addToAllLists(desk, u"abcdefghij"_s); // so many that the pages scroll
        desk.open();
        QCOMPARE(desk.window.windowTitle(), u"Belfry — Quillmoss"_s);
        QCOMPARE(desk.column()->width(), 120);
        const QRect screenArea = desk.window.screen()->geometry();
        QVERIFY(screenArea.width() < 960);
        QCOMPARE(desk.window.x(), screenArea.x());
        const int fromMiddle = desk.window.geometry().center().y() - screenArea.center().y();
        QVERIFY(qAbs(fromMiddle) < 50); // the title bar is in the picture
        for (const QString &screen : allScreens) {
            desk.chooseScreen(screen);
            QTRY_VERIFY(desk.card(u"c"_s)->y() == desk.card(u"a"_s)->y());
        }
        desk.chooseScreen(u"Plan"_s);
        desk.window.resize(100, 100);
        QTRY_COMPARE(desk.window.size(), QSize(960, 488));
        const auto *screen = desk.window.findChild<PlanView *>();
        for (const bool isShown : {false, true}) {
            QVERIFY(click(desk.toolBar(), u"Toggle Sidebar"_s));
            QTRY_COMPARE(screen->width() < 960, isShown);
        }
    }

    void timetable_goesOnUnderEditorsAndAlerts_whichComeAgain()
    {
        MainWindow desk;
        desk.addPlan(u"A"_s);
        desk.openInEditMode();
        desk.clock.advance(950 - 3000); // from its first tick on the window's own timer fires every 50 ms
        for (const auto &button :
             {u"Add Plan"_s, u"Add Holiday"_s, u"Delete"_s, u"Add Plan"_s, u"Add Holiday"_s}) {
            QVERIFY(!desk.stage.sounding);
            QVERIFY(click(desk.toolBar(), button));
            QVERIFY(desk.dialog());
            const QString before = desk.clockLine()->text();
            desk.clock.advance(1000);
            QTRY_VERIFY(desk.clockLine()->text() != before);
            if (desk.clock.now().time() < QTime(8, 0)) {
                press(Qt::Key_Escape);
                desk.closeDialogs();
            }
        }
        QTRY_VERIFY(control(desk.card(u"A"_s), u"Stop"_s));
        QVERIFY(desk.dialog<HolidayEdit>() && desk.stage.sounding);
    }

    void tab_visitsEverythingThereAndBack()
    {
        const QString stops = u"Edit|Stop|Select|Edit|Play|Select|"_s + editButtons;
        MainWindow desk;
        addToAllLists(desk, u"ab"_s);
        const Plan a = desk.planStore.plans->first();
        desk.planStore.togglePlaying(a);
        desk.avPlayer.play(a.content, false);
        desk.openInEditMode();
        QTRY_COMPARE(buttons(desk), editButtons);
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
        QCOMPARE(forward.join(u'|'), u"Screens|Plan|"_s + stops);
        std::reverse(forward.begin() + 1, forward.end());
        QCOMPARE(walk(Qt::Key_Backtab), forward);
    }

    void second_repaintsOnlyTheClockAndThePlanThatPlays()
    {
        MainWindow desk;
        desk.addPlan(u"A"_s);
        desk.addPlan(u"B"_s, u"09:00"_s);
        desk.open();
        desk.tick("08:00:00");
        QTRY_VERIFY(control(desk.card(u"A"_s), u"Stop"_s));
        Paints list(desk.list()->viewport()), clock(desk.clockLine()), a(desk.card(u"A"_s)),
            b(desk.card(u"B"_s));
        for (const auto &time : {u"08:00:01"_s, u"08:00:02"_s, u"08:00:03"_s}) {
            clock.count = a.count = 0;
            desk.stage.sounding->setCurrentTime(desk.stage.sounding->currentTime() + 1);
            desk.tick(qPrintable(time));
            QTRY_VERIFY(clock.count > 0 && a.count > 0);
            if (time == u"08:00:01"_s) // until then the window may still be opening
                list.count = b.count = 0;
        }
        QCOMPARE(list.count + b.count, 0);
    }
};

QTEST_MAIN(TestContentView)
#include "TestContentView.moc"
