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
QString buttons(const MainWindow &window)
{
    QStringList names;
    for (const QToolButton *button : window.toolBar()->findChildren<QToolButton *>()) {
        if (button->isVisible())
            names << button->text();
    }
    return names.join(u'|');
}

// The checked ones of all three lists: "ab|a||".
QString checked(const MainWindow &window)
{
    QString titles;
    const auto add = [&titles](const auto &records) {
        for (const auto &record : records.value())
            titles += record.isChecked ? record.title : QString();
        titles += u'|';
    };
    add(window.planStore.plans);
    add(window.holidayStore.holidays);
    add(window.historyStore.historys);
    return titles;
}

// Adds an entry of each title to all three lists, in this order.
void addToAllLists(MainWindow &window, const QString &titles)
{
    for (qsizetype i = 0; i < titles.size(); ++i) {
        window.addPlan(titles[i], u"1%1:00"_s.arg(i));
        window.addHoliday(titles[i], u"2024-09-1%1"_s.arg(i));
        window.historyStore.addHistory(titles[i]);
    }
}

// Counts the events of a type that reach an object.
class SeenEvents final : public QObject
{
public:
    SeenEvents(QObject *object, QEvent::Type type) : type(type) { object->installEventFilter(this); }

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        count += event->type() == type;
        return false;
    }

    int count = 0;

private:
    QEvent::Type type;
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
        MainWindow window;
        addToAllLists(window, u"ab"_s);
        window.open();
        QCOMPARE(buttons(window), u"Toggle Sidebar|Edit"_s);
        QVERIFY(click(window.toolBar(), u"Edit"_s));
        QTRY_COMPARE(buttons(window), editButtons);
        for (const QString &screen : allScreens) {
            window.chooseScreen(screen);
            QTRY_VERIFY(window.card(u"a"_s));
            QVERIFY(click(window.card(u"a"_s), u"Select"_s));
        }
        for (const QString &screen : allScreens) {
            if (screens.contains(screen) != (screen == allScreens.last()))
                window.chooseScreen(screen, Qt::ControlModifier);
        }
        QCOMPARE(checked(window), u"a|a|a|"_s);
        QVERIFY(click(window.toolBar(), u"Select All"_s));
        QTRY_COMPARE(control<QToolButton>(window.toolBar(), u"Select All"_s)->icon().name(), symbol);
        QTEST(checked(window), "afterSelectAll");

        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) { // neither deletes anything
            QVERIFY(click(window.toolBar(), u"Delete"_s));
            QCOMPARE(window.dialog()->accessibleDescription(), u"Delete the selected data?"_s);
            press(key);
            window.closeDialogs();
        }
        QTEST(checked(window), "afterSelectAll");
        QVERIFY(click(window.toolBar(), u"Delete"_s));
        QVERIFY(click(window.dialog(), u"Delete"_s));
        QTEST(window.base
                  .rows(u"select (select count(*) from plan), (select count(*) from holiday),"
                        " (select count(*) from history)"_s)
                  .first(),
              "afterDelete");
        QCOMPARE(buttons(window), editButtons);
    }

    void shortcuts_standForTheButtonsThatAreShown()
    {
        MainWindow window;
        addToAllLists(window, u"a"_s);
        window.open();
        const auto pressAll = [] {
            press(Qt::Key_A, Qt::ControlModifier);
            press(Qt::Key_N, Qt::ControlModifier);
            press(Qt::Key_Delete);
            QCoreApplication::processEvents();
        };
        window.view.findChild<PlanView *>()->setFocus();
        pressAll();
        window.list()->setFocus();
        pressAll();
        QCOMPARE(window.list()->selectedItems().size(), 1);
        QCOMPARE(checked(window), u"|||"_s);
        QVERIFY(!window.view.findChild<QDialog *>());

        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(buttons(window), editButtons);
        press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(checked(window), u"a|||"_s);

        // Under an editor the keys are those of its fields, and the window takes no clicks.
        press(Qt::Key_N, Qt::ControlModifier);
        QVERIFY(type(window.dialog<PlanEdit>(), u"Title:"_s, u"New"_s));
        const auto inOrder = window.dialog()->findChildren<QWidget *>(); // assistive technology reads it so
        QVERIFY(inOrder.indexOf(control(window.dialog(), u"Title:"_s)) <
                inOrder.indexOf(control(window.dialog(), u"Add"_s)));
        pressAll();
        press(Qt::Key_E, Qt::ControlModifier);
        const auto *finish = control(window.toolBar(), u"Finish"_s);
        QTest::mouseDClick(window.view.windowHandle(), Qt::LeftButton, {},
                           finish->mapTo(&window.view, finish->rect().center()));
        QCOMPARE(window.view.findChildren<QDialog *>().size(), 1);
        QCOMPARE(checked(window), u"a|||"_s);
        QVERIFY(!window.view.close()); // but the editor
        window.closeDialogs();
        QCOMPARE(buttons(window), editButtons);
        press(Qt::Key_Delete);
        QVERIFY(click(window.dialog(), u"Delete"_s));
        window.closeDialogs();
        QTRY_VERIFY(!window.card(u"a"_s));
        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(buttons(window), u"Toggle Sidebar|Edit"_s);
    }

    void window_isOnTheScreenAndHasItsSizesAndItsColumn()
    {
        MainWindow window;
        addToAllLists(window, u"abcdefghij"_s); // so many that the pages scroll
        window.open();
        QCOMPARE(window.column()->width(), 120);
        const QRect screenArea = window.view.screen()->geometry();
        QVERIFY(screenArea.width() < 960);
        QCOMPARE(window.view.x(), screenArea.x());
        const int fromMiddle = window.view.geometry().center().y() - screenArea.center().y();
        QVERIFY(qAbs(fromMiddle) < 50); // the title bar is in the picture
        QTRY_VERIFY(window.card(u"c"_s)->y() == window.card(u"a"_s)->y());
        SeenEvents layouts(&window.view, QEvent::LayoutRequest);
        window.tick("08:00:00");
        QTRY_COMPARE(window.clockLabel()->text(), u"08:00:00"_s);
        QCoreApplication::processEvents();
        QCOMPARE(layouts.count, 0);
        window.view.resize(100, 100);
        QTRY_COMPARE(window.view.size(), QSize(960, 488));
        QFont large = window.view.font();
        large.setPointSize(26);
        window.view.setFont(large);
        window.appStore.isEditMode = true;
        QTRY_COMPARE(buttons(window), editButtons); // none hidden for want of room
        QVERIFY(window.clockLabel()->height() >= QFontMetrics(large).height());
    }

    void sidebar_changesOnlyByItsRows()
    {
        MainWindow window;
        window.open();
        QWidget *area = window.list()->viewport();
        const QPoint row = window.list()->visualItemRect(window.list()->item(2)).center();
        const QPoint empty = area->rect().bottomLeft() + QPoint(20, -20);
        QTest::mouseClick(area, Qt::LeftButton, {}, row);
        QTest::mouseClick(area, Qt::LeftButton, {}, empty);
        QTest::mousePress(area, Qt::LeftButton, {}, empty);
        QTest::mouseMove(area, window.list()->visualItemRect(window.list()->item(0)).center());
        QTest::mouseRelease(area, Qt::LeftButton, {}, empty);
        QCOMPARE(window.appStore.selection.value(), QSet{NavigationItem::historyView});
        QTest::mouseClick(area, Qt::LeftButton, Qt::ControlModifier, row);
        QVERIFY(window.appStore.selection->isEmpty());
    }

    void focusFrame_isForTheKeyboard()
    {
        MainWindow window;
        window.open();
        auto *screen = window.view.findChild<PlanView *>();
        const auto isFramed = [screen] {
            const QImage picture = screen->grab().toImage();
            return picture.pixelColor(0, 99) != picture.pixelColor(9, 99);
        };
        window.list()->setFocus();
        for (const bool isShown : {false, true}) {
            QVERIFY(click(window.toolBar(), u"Toggle Sidebar"_s));
            QTRY_COMPARE(screen->width() < 960, isShown);
            QVERIFY(screen->hasFocus() && !isFramed());
        }
        press(Qt::Key_Home);
        QVERIFY(isFramed());
    }

    void timetable_goesOnUnderEditorsAndAlerts_whichComeAgain()
    {
        MainWindow window;
        window.addPlan(u"A"_s);
        window.openInEditMode();
        window.clock.advance(950 - 3000); // from its first tick on the window's own timer fires every 50 ms
        for (const auto &button :
             {u"Add Plan"_s, u"Add Holiday"_s, u"Delete"_s, u"Add Plan"_s, u"Add Holiday"_s}) {
            QVERIFY(!window.players.playing);
            QVERIFY(click(window.toolBar(), button));
            QVERIFY(window.dialog());
            const QString before = window.clockLabel()->text();
            window.clock.advance(1000);
            QTRY_VERIFY(window.clockLabel()->text() != before);
            if (window.clock.now().time() < QTime(8, 0)) {
                press(Qt::Key_Escape);
                window.closeDialogs();
            }
        }
        QTRY_VERIFY(control(window.card(u"A"_s), u"Stop"_s));
        QVERIFY(window.dialog<HolidayEdit>() && window.players.playing);
    }

    void tab_visitsEverything()
    {
        const QString stops = u"Edit|Stop|Select|Edit|Play|Select|"_s + editButtons;
        MainWindow window;
        addToAllLists(window, u"ab"_s);
        const Plan a = window.planStore.plans->first();
        window.planStore.togglePlaying(a);
        window.avPlayer.play(a.content, false);
        window.openInEditMode();
        QTRY_COMPARE(buttons(window), editButtons);
        window.list()->setFocus();
        QStringList visited;
        do {
            visited << QAccessible::queryAccessibleInterface(QApplication::focusWidget())
                           ->text(QAccessible::Name);
            press(Qt::Key_Tab);
        } while (!window.list()->hasFocus() && visited.size() < 20);
        QCOMPARE(visited.join(u'|'), u"Screens|Plan|"_s + stops);
    }
};

QTEST_MAIN(TestContentView)
#include "TestContentView.moc"
