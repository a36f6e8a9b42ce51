#include "support/MainWindow.h"
#include "toolkit/Style.h"

#include <QContextMenuEvent>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

const QStringList screens{u"Plan"_s, u"Holiday"_s, u"History"_s};

// The buttons in edit mode, the names of their icons first; %1 is that of "Select All".
const QString editButtons = u"sidebar.left|trash Delete|%1 Select All|plus Add Plan|plus Add Holiday|"
                            "checkmark Finish"_s;

// The buttons that are shown, in their order.
QString buttons(const MainWindow &window)
{
    QStringList shown;
    for (const QToolButton *button : window.toolBar()->findChildren<QToolButton *>()) {
        if (button->isVisible())
            shown << button->icon().name();
        if (button->isVisible() && button->toolButtonStyle() == Qt::ToolButtonTextBesideIcon)
            shown.last() += u' ' + button->text();
    }
    return shown.join(u'|');
}

// The records in all three lists, with a "+" after those that are checked: "a+b|ab|ab+".
QString records(const MainWindow &window)
{
    QStringList lists;
    const auto add = [&lists](const auto &records) {
        lists << QString();
        for (const auto &record : records.value())
            lists.last() += record.title + (record.isChecked ? u"+"_s : QString());
    };
    add(window.planStore.plans);
    add(window.holidayStore.holidays);
    add(window.historyStore.historys);
    return lists.join(u'|');
}

// Adds a record of each title to all three lists, in this order.
void addToAllLists(MainWindow &window, const QString &titles)
{
    for (qsizetype i = 0; i < titles.size(); ++i) {
        window.addPlan(titles[i], u"1%1:00"_s.arg(i));
        window.addHoliday(titles[i], u"2024-09-1%1"_s.arg(i));
        window.historyStore.addHistory(titles[i]);
    }
}

} // namespace

class TestContentView final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selectAllAndDelete_actOnTheCurrentScreenAlone()
    {
        MainWindow window;
        addToAllLists(window, u"ab"_s);
        window.open();
        QCOMPARE(buttons(window), u"sidebar.left|square.and.pencil Edit"_s);
        QVERIFY(click(window.toolBar(), u"Edit"_s));
        const auto selectAll = [&window] {
            click(window.toolBar(), u"Select All"_s);
            return records(window);
        };
        const auto confirmDelete = [&window] {
            QVERIFY(click(window.toolBar(), u"Delete"_s));
            QVERIFY(click(window.dialog(), u"Delete"_s));
            window.closeDialogs();
        };
        const QStringList checked{u"a+b+|ab|ab"_s, u"a+b+|a+b+|ab"_s, u"a+b+|a+b+|a+b+"_s};
        for (qsizetype i = 0; i < 3; ++i) {
            window.chooseScreen(screens[i]);
            QTRY_COMPARE(buttons(window), editButtons.arg(u"square"_s));
            QCOMPARE(selectAll(), checked[i]);
            QCOMPARE(buttons(window), editButtons.arg(u"checkmark.square"_s));
            QTRY_VERIFY(control<QAbstractButton>(window.card(u"a"_s), u"Select"_s)->isChecked());
        }
        window.chooseScreen(u"Plan"_s, Qt::ControlModifier); // now none is the current one
        QTRY_COMPARE(buttons(window), editButtons.arg(QString()));
        QCOMPARE(selectAll(), checked[2]);
        confirmDelete();
        QCOMPARE(records(window), checked[2]);
        const QStringList left{u"a|a+b+|a+b+"_s, u"a|a|a+b+"_s, u"a|a|a"_s};
        for (qsizetype i = 0; i < 3; ++i) {
            window.chooseScreen(screens[i]);
            QTRY_VERIFY(window.card(u"a"_s));
            QVERIFY(click(window.card(u"a"_s), u"Select"_s)); // which leaves the icon as it is
            QCOMPARE(buttons(window), editButtons.arg(u"checkmark.square"_s));
            const QString before = records(window);
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) { // neither deletes anything
                QVERIFY(click(window.toolBar(), u"Delete"_s));
                QCOMPARE(window.dialog()->accessibleDescription(), u"Delete the selected data?"_s);
                press(key);
                window.closeDialogs();
                QCOMPARE(records(window), before);
            }
            confirmDelete();
            QCOMPARE(records(window), left[i]);
        }
        QCOMPARE(selectAll(), left[2]);
        QCOMPARE(buttons(window), editButtons.arg(u"square"_s));
    }

    void shortcuts_standForTheButtons()
    {
        MainWindow window;
        addToAllLists(window, u"a"_s);
        window.open();
        press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(window.list()->selectedItems().size(), 1);
        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_VERIFY(control(window.toolBar(), u"Finish"_s));
        press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(records(window), u"a+|a|a"_s);
        press(Qt::Key_N, Qt::ControlModifier);
        QVERIFY(window.dialog());
        press(Qt::Key_E, Qt::ControlModifier); // the window takes no input
        QVERIFY(click(window.dialog(), u"Add"_s));
        QTRY_COMPARE(window.view.findChildren<QDialog *>().size(), 2);
        QVERIFY(!window.view.close()); // but the panel on top
        QVERIFY(window.dialog());
        QVERIFY(!window.view.close());
        window.closeDialogs();
        press(Qt::Key_Delete);
        QVERIFY(click(window.dialog(), u"Delete"_s));
        window.closeDialogs();
        QTRY_VERIFY(!window.card(u"a"_s));
        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_VERIFY(!control(window.toolBar(), u"Finish"_s));
        QVERIFY(window.view.close());
    }

    void window_isOnTheScreenAndFollowsItsFontAndColors()
    {
        MainWindow window;
        addToAllLists(window, u"abcdefghij"_s); // so many that the pages scroll
        window.open(true);
        QCOMPARE(window.view.windowTitle(), u"Belfry — Quillmoss"_s);
        const QRect screenArea = window.view.screen()->geometry();
        QVERIFY(screenArea.width() < 960);
        QCOMPARE(window.view.x(), screenArea.x());
        const int fromMiddle = window.view.geometry().center().y() - screenArea.center().y();
        QVERIFY(fromMiddle > 0 && fromMiddle < 50); // the title bar is in the picture
        QTRY_VERIFY(window.card(u"c"_s)->y() == window.card(u"a"_s)->y());
        window.view.resize(100, 100);
        QTRY_COMPARE(window.view.size(), QSize(960, 488));
        QCOMPARE(window.clockLabel()->parentWidget()->width(), 120);
        QVERIFY(!window.toolBar()->isMovable());
        QVERIFY(control(window.toolBar(), u"Finish"_s)->geometry().right() > 940);
        QContextMenuEvent menu(QContextMenuEvent::Mouse, {5, 5}, {5, 5});
        QCoreApplication::sendEvent(window.toolBar(), &menu);
        QVERIFY(!QApplication::activePopupWidget()); // in which the toolbar could be hidden

        // A new second needs no new layout.
        QCOMPARE(window.clockLabel()->minimumSize(), window.clockLabel()->maximumSize());
        QFont large = window.view.font();
        large.setPointSize(26);
        window.view.setFont(large);
        QTRY_COMPARE(buttons(window), editButtons.arg(u"square"_s)); // none hidden for want of room
        QVERIFY(window.toolBar()->font().pointSize() >= 13);
        QVERIFY(window.clockLabel()->fontMetrics().horizontalAdvance(u"00:00:00"_s) < 120);
        for (const QPalette &colors : {QPalette(Qt::white), QPalette(Qt::black)}) {
            window.view.setPalette(colors);
            const auto color = [&window](int row) {
                const QRect rect = window.list()->visualItemRect(window.list()->item(row));
                return window.list()->grab().toImage().pixelColor(rect.right() - 9, rect.top() + 9);
            };
            QCOMPARE(color(0), Style::accent(Style::Accent::blue, colors));
            QCOMPARE(color(1), Style::sidebarColor(colors));
            QCOMPARE(control(window.toolBar(), u"Delete"_s)->palette().color(QPalette::ButtonText),
                     Style::accent(Style::Accent::red, colors));
        }
    }

    void sidebar_changesOnlyByItsRows_andFramesTheFocusOfTheKeyboard()
    {
        MainWindow window;
        window.open();
        QWidget *rows = window.list()->viewport();
        const auto isFramed = [](QWidget *widget, int x) {
            const QImage picture = widget->grab().toImage();
            return picture.pixelColor(x, 20) != picture.pixelColor(x + 3, 20);
        };
        QVERIFY(!isFramed(rows, 8));
        press(Qt::Key_Home);
        QVERIFY(isFramed(rows, 8));
        press(Qt::Key_Down);
        QTRY_VERIFY(control<CardGrid>(&window.view, u"Holiday"_s));
        window.chooseScreen(u"History"_s);
        const QPoint empty = rows->rect().bottomLeft() + QPoint(20, -20);
        QTest::mouseClick(rows, Qt::LeftButton, {}, empty);
        QTest::mousePress(rows, Qt::LeftButton, {}, empty);
        QTest::mouseMove(rows, window.list()->visualItemRect(window.list()->item(0)).center());
        QTest::mouseRelease(rows, Qt::LeftButton, {}, empty);
        QCOMPARE(window.appStore.selection.value(), QSet{NavigationItem::historyView});
        window.chooseScreen(u"History"_s, Qt::ControlModifier);
        QVERIFY(window.appStore.selection->isEmpty());
        auto *screen = control<CardGrid>(&window.view, u"History"_s); // which stays
        for (const bool isShown : {false, true}) {
            QVERIFY(click(window.toolBar(), u"Toggle Sidebar"_s));
            QTRY_COMPARE(screen->width() < 960, isShown);
            QVERIFY(screen->hasFocus() && !isFramed(screen, 0));
        }
        press(Qt::Key_Home);
        QVERIFY(isFramed(screen, 0));
        window.appStore.selection = QSet{NavigationItem::planView, NavigationItem::holidayView};
        QTRY_COMPARE(window.list()->selectedItems().size(), 2);
        QVERIFY(screen->isVisible());
        window.appStore.selection = QSet{NavigationItem::planView};
        QTRY_VERIFY(control<CardGrid>(&window.view, u"Plan"_s));
        QCOMPARE(window.list()->selectedItems(), {window.list()->item(0)});
    }

    void selectedRow_showsItsTextBesideItsIcon()
    {
        MainWindow window;
        window.open();
        for (const Qt::LayoutDirection direction : {Qt::RightToLeft, Qt::LeftToRight}) {
            window.view.setLayoutDirection(direction);
            const QRect row = window.list()->visualItemRect(window.list()->item(0)).adjusted(9, 6, -9, -6);
            const QImage picture = window.list()->viewport()->grab(row).toImage();
            QSet<QRgb> colors;
            QList<int> painted;
            for (int x = 0; x < picture.width(); ++x) {
                for (int y = 0; y < picture.height(); ++y) {
                    colors << picture.pixel(x, y);
                    if (picture.pixel(x, y) != picture.pixel(0, 0))
                        painted << x;
                }
            }
            QVERIFY(colors.contains(window.view.palette().color(QPalette::Window).rgb()));
            const int textWidth = window.list()->fontMetrics().horizontalAdvance(u"Plan"_s);
            QVERIFY(painted.last() - painted.first() >= 16 + textWidth);
        }
    }

    void timetable_goesOnUnderEditorsAndAlerts_whichComeAgain()
    {
        MainWindow window;
        window.addPlan(u"A"_s);
        window.open(true);
        window.clock.advance(950 - 3000); // from its first tick on the window's own timer fires every 50 ms
        for (const auto &button :
             {u"Add Plan"_s, u"Add Holiday"_s, u"Delete"_s, u"Add Plan"_s, u"Add Holiday"_s}) {
            QVERIFY(!window.players.playing);
            QVERIFY(click(window.toolBar(), button));
            QVERIFY(window.dialog());
            window.clock.advance(1000);
            QTRY_COMPARE(window.clockLabel()->text(), window.clock.now().toString(u"HH:mm:ss"_s));
            press(Qt::Key_Escape);
            window.closeDialogs();
        }
        QVERIFY(window.players.playing);
    }

    void tab_visitsEverything()
    {
        MainWindow window;
        addToAllLists(window, u"ab"_s);
        const Plan a = window.planStore.plans->first();
        window.planStore.togglePlaying(a);
        window.avPlayer.play(a.content, false);
        window.open();
        const auto visited = [&window] {
            QStringList names;
            do {
                names << QAccessible::queryAccessibleInterface(QApplication::focusWidget())
                             ->text(QAccessible::Name);
                press(Qt::Key_Tab);
            } while (!window.list()->hasFocus() && names.size() < 20);
            return names.join(u'|');
        };
        QCOMPARE(visited(), u"Screens|Plan|Stop|Toggle Sidebar|Edit"_s);
        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_VERIFY(control(window.toolBar(), u"Delete"_s));
        const QString buttons = u"Toggle Sidebar|Delete|Select All|Add Plan|Add Holiday|Finish"_s;
        QCOMPARE(visited(), u"Screens|Plan|Edit|Stop|Select|Edit|Play|Select|"_s + buttons);
        window.chooseScreen(u"Holiday"_s);
        QCOMPARE(visited(), u"Screens|Holiday|Edit|Select|Edit|Select|"_s + buttons);
    }
};

QTEST_MAIN(TestContentView)
#include "TestContentView.moc"
