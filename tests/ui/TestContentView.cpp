#include "support/MainWindow.h"
#include "support/Table.h"
#include "ui/HolidayEdit.h"
#include "ui/PlanEdit.h"
#include "ui/PlanView.h"

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
        desk.open();
        QCOMPARE(buttons(desk), u"Toggle Sidebar|Edit"_s);
        QVERIFY(click(desk.toolBar(), u"Edit"_s));
        QTRY_COMPARE(buttons(desk), editButtons);
        for (const QString &screen : allScreens) {
            desk.chooseScreen(screen);
            QTRY_VERIFY(desk.card(u"a"_s));
            QVERIFY(click(desk.card(u"a"_s), u"Select"_s));
        }
        for (const QString &screen : allScreens) {
            if (screens.contains(screen) != (screen == allScreens.last()))
                desk.chooseScreen(screen, Qt::ControlModifier);
        }
        QCOMPARE(checked(desk), u"a|a|a|"_s);
        QVERIFY(click(desk.toolBar(), u"Select All"_s));
        QTRY_COMPARE(control<QToolButton>(desk.toolBar(), u"Select All"_s)->icon().name(), symbol);
        QTEST(checked(desk), "afterSelectAll");

        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) { // neither deletes anything
            QVERIFY(click(desk.toolBar(), u"Delete"_s));
            QCOMPARE(desk.dialog()->accessibleDescription(), u"Delete the selected data?"_s);
            press(key);
            desk.closeDialogs();
        }
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
        desk.list()->setFocus();
        pressAll();
        QCOMPARE(desk.list()->selectedItems().size(), 1);
        QCOMPARE(checked(desk), u"|||"_s);
        QVERIFY(!desk.window.findChild<QDialog *>());

        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(buttons(desk), editButtons);
        press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(checked(desk), u"a|||"_s);

        // Under an editor the keys are those of its fields, and the window takes no clicks.
        press(Qt::Key_N, Qt::ControlModifier);
        QVERIFY(type(desk.dialog<PlanEdit>(), u"Title:"_s, u"New"_s));
        const auto inOrder = desk.dialog()->findChildren<QWidget *>(); // assistive technology reads it so
        QVERIFY(inOrder.indexOf(control(desk.dialog(), u"Title:"_s)) <
                inOrder.indexOf(control(desk.dialog(), u"Add"_s)));
        pressAll();
        press(Qt::Key_E, Qt::ControlModifier);
        const auto *finish = control(desk.toolBar(), u"Finish"_s);
        QTest::mouseDClick(desk.window.windowHandle(), Qt::LeftButton, {},
                           finish->mapTo(&desk.window, finish->rect().center()));
        QCOMPARE(desk.window.findChildren<QDialog *>().size(), 1);
        QCOMPARE(checked(desk), u"a|||"_s);
        QVERIFY(!desk.window.close()); // but the editor
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
        QCOMPARE(desk.column()->width(), 120);
        const QRect screenArea = desk.window.screen()->geometry();
        QVERIFY(screenArea.width() < 960);
        QCOMPARE(desk.window.x(), screenArea.x());
        const int fromMiddle = desk.window.geometry().center().y() - screenArea.center().y();
        QVERIFY(qAbs(fromMiddle) < 50); // the title bar is in the picture
        QTRY_VERIFY(desk.card(u"c"_s)->y() == desk.card(u"a"_s)->y());
        desk.window.resize(100, 100);
        QTRY_COMPARE(desk.window.size(), QSize(960, 488));
        QFont large = desk.window.font();
        large.setPointSize(26);
        desk.window.setFont(large);
        desk.appStore.isEditMode = true;
        QTRY_COMPARE(buttons(desk), editButtons); // none hidden for want of room
    }

    void sidebar_changesOnlyByItsRows()
    {
        MainWindow desk;
        desk.open();
        QWidget *area = desk.list()->viewport();
        const QPoint row = desk.list()->visualItemRect(desk.list()->item(2)).center();
        const QPoint empty = area->rect().bottomLeft() + QPoint(20, -20);
        QTest::mouseClick(area, Qt::LeftButton, {}, row);
        QTest::mouseClick(area, Qt::LeftButton, {}, empty);
        QTest::mousePress(area, Qt::LeftButton, {}, empty);
        QTest::mouseMove(area, desk.list()->visualItemRect(desk.list()->item(0)).center());
        QTest::mouseRelease(area, Qt::LeftButton, {}, empty);
        QCOMPARE(desk.appStore.selection.value(), QSet{NavigationItem::historyView});
        QTest::mouseClick(area, Qt::LeftButton, Qt::ControlModifier, row);
        QVERIFY(desk.appStore.selection->isEmpty());
    }

    void focusFrame_isForTheKeyboard()
    {
        MainWindow desk;
        desk.open();
        auto *screen = desk.window.findChild<PlanView *>();
        const auto isFramed = [screen] {
            const QImage picture = screen->grab().toImage();
            return picture.pixelColor(0, 99) != picture.pixelColor(9, 99);
        };
        desk.list()->setFocus();
        for (const bool isShown : {false, true}) {
            QVERIFY(click(desk.toolBar(), u"Toggle Sidebar"_s));
            QTRY_COMPARE(screen->width() < 960, isShown);
            QVERIFY(screen->hasFocus() && !isFramed());
        }
        press(Qt::Key_Home);
        QVERIFY(isFramed());
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

    void tab_visitsEverything()
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
        QStringList visited;
        do {
            visited << QAccessible::queryAccessibleInterface(QApplication::focusWidget())
                           ->text(QAccessible::Name);
            press(Qt::Key_Tab);
        } while (!desk.list()->hasFocus() && visited.size() < 20);
        QCOMPARE(visited.join(u'|'), u"Screens|Plan|"_s + stops);
    }
};

QTEST_MAIN(TestContentView)
#include "TestContentView.moc"
