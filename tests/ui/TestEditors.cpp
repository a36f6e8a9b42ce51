#include "support/LogCapture.h"
#include "support/MainWindow.h"
#include "support/Table.h"

#include <QAbstractButton>
#include <QCalendarWidget>
#include <QFileDialog>
#include <QLineEdit>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace {

// Clicks a button that opens an editor, on the day on which summer time begins.
QPointer<QDialog> openEditor(MainWindow &window, const QString &button, const QString &screen = u"Plan"_s)
{
    window.clock.set("2026-03-29 07:05:42");
    window.open(true);
    window.chooseScreen(screen);
    return QTest::qWaitFor([&] { return click(&window.view, button); }) ? window.dialog() : nullptr;
}

void rollWheel(QWidget *widget, int notches)
{
    const QPointF center = widget->rect().center();
    QWheelEvent roll(center, widget->mapToGlobal(center), {}, {0, 120 * notches}, Qt::NoButton,
                     Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget, &roll);
}

} // namespace

class TestEditors final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void newPlan_playsOnWorkingDaysFromNow()
    {
        MainWindow window;
        const auto editor = openEditor(window, u"Add Plan"_s);
        QTest::keyClicks(QApplication::focusWidget(), u"  Tom's  "_s);
        QVERIFY(type(editor, u"Music:"_s, u"/music/b.mp3"_s));
        window.clock.advance(3'600'000);
        auto *add = control<QAbstractButton>(editor, u"Add"_s);
        QCOMPARE(editor->windowTitle() + u' ' + add->icon().name(), u"Add Plan plus"_s);
        const LogCapture log;
        window.base.run(u"alter table plan rename to elsewhere"_s);
        add->click();
        window.base.run(u"alter table elsewhere rename to plan"_s);
        QVERIFY(editor->isVisible()); // for the database has refused the plan
        add->click();
        add->click(); // while the sheet closes
        QTRY_VERIFY(!editor);
        const QStringList rows = window.base.rows(u"select * from plan"_s);
        QCOMPARE(rows.size(), 1);
        const QString id = rows[0].section(u'|', 0, 0);
        QVERIFY(id.size() == 36 && id == id.toUpper());
        QCOMPARE(rows[0].section(u'|', 1), u"  Tom's  |07:05|07:05||/music/b.mp3|false|true|"
                                           "false|true|true|true|true|true|false"_s);
    }

    void newHoliday_isToday()
    {
        MainWindow window;
        const auto editor = openEditor(window, u"Add Holiday"_s);
        QTest::keyClicks(QApplication::focusWidget(), u" "_s);
        QVERIFY(click(editor, u"Add"_s));
        QCOMPARE(window.base.rows(u"select title, begin, end, length(id) from holiday"_s),
                 {u" |2026-03-29|2026-03-29|36"_s});
    }

    void existingPlan_isChangedInPlace_orNotAtAll()
    {
        MainWindow window;
        Plan expected = window.addPlan(u"Evening"_s, u"18:00"_s, u"18:30"_s, u"6"_s);
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
            const auto editor = openEditor(window, u"Edit"_s);
            QCOMPARE(editor->windowTitle(), u"Modify"_s);
            QTest::keyClicks(QApplication::focusWidget(), u"Night"_s); // the title is selected
            for (const auto &choice : {u"Sun"_s, u"Sat"_s, u"Yes"_s})
                QVERIFY(click(editor, choice));
            QVERIFY(type(editor, u"Folder:"_s, u"/music/c.mp3"_s));
            QVERIFY(typeDigits(editor, u"End:"_s, u"2359"_s));
            QTest::keyClick(QApplication::focusWidget(), key);
            window.closeDialogs();
            if (key == Qt::Key_Return) {
                expected.title = u"Night"_s;
                expected.end = u"23:59"_s;
                expected.content = u"/music/c.mp3"_s;
                expected.isLoop = expected.week0 = true;
                expected.week6 = false;
            }
            QCOMPARE(window.planStore.plans.value(), QList{expected});
        }
    }

    void save_namesTheFirstThingMissing_closeStoresNothing()
    {
        MainWindow window;
        const auto editor = openEditor(window, u"Add Plan"_s);
        const auto message = [&] {
            click(editor, u"Add"_s);
            const auto *alert = window.view.findChildren<QDialog *>().last();
            const QString text = alert->windowTitle() + u": "_s + alert->accessibleDescription();
            click(alert, u"OK"_s);
            return QTest::qWaitFor([&] { return editor->isEnabled(); }) ? text : QString();
        };
        for (const auto &day : {u"Mon"_s, u"Tue"_s, u"Wed"_s, u"Thu"_s, u"Fri"_s})
            QVERIFY(click(editor, day));
        QCOMPARE(message(), u"Tip: Please input the Title"_s);
        QVERIFY(type(editor, u"Title:"_s, u" "_s));
        QCOMPARE(message(), u"Tip: Please select the Week"_s);
        QVERIFY(click(editor, u"Sat"_s));
        QCOMPARE(message(), u"Tip: Please select the Music"_s);
        QCOMPARE(control<QLineEdit>(editor, u"Title:"_s)->text(), u" "_s);
        QVERIFY(type(editor, u"Music:"_s, u"a.mp3"_s));
        QVERIFY(click(editor, u"Close"_s));
        QTRY_VERIFY(!editor);
        QVERIFY(window.planStore.plans->isEmpty());
    }

    void timesAndDates_areTyped_data()
    {
        columns<QStringList>("words");
        // In a locale what is stored, what is shown of it, what is typed over that and what is stored then.
        for (const QString &row : {
                 u"en_US 18:00 18:00 1:05 01:05"_s,
                 u"ar_EG 18:00 18:00 ٢٣٥٩ 23:59"_s,
                 u"C 02:30 02:30  02:30"_s, // today summer time skips that hour
                 u"C 7h 07:05  07:05"_s,
                 u"C 2024-10-31 2024-10-31 20260230 2026-02-28"_s,
                 u"de_DE 2024-10-31 31.10.2024 3.5.2026 2026-05-03"_s,
                 u"de_DE 2026-02-10 10.02.2026 31042026 2026-04-30"_s,
                 u"de_DE 2026-02-10 10.02.2026 31.3. 2026-03-31"_s,
                 u"en_US 2026-03-10 3/10/2026 02292028 2028-02-29"_s,
                 u"zh_CN 2024-10-31 2024/10/31 26/05/03 2026-05-03"_s,
                 u"ar_EG 2024-10-31 ٣١/١٠/٢٠٢٤ ٠٣٠٥٢٠٢٦ 2026-05-03"_s,
                 u"de_DE 0001-01-01 01.01.0001  0001-01-01"_s,
                 u"de_DE 2024-02-30 29.03.2026  2026-03-29"_s,
             })
            QTest::newRow(qPrintable(row)) << row.split(u' ');
    }

    void timesAndDates_areTyped()
    {
        QFETCH(QStringList, words);
        QLocale::setDefault(QLocale(words[0]));
        MainWindow window;
        window.addPlan(u"A"_s, words[1]);
        window.addHoliday(u"A"_s, words[1]);
        const bool isDate = words[1].contains(u'-');
        const auto editor = openEditor(window, u"Edit"_s, isDate ? u"Holiday"_s : u"Plan"_s);
        QCOMPARE(control<QAbstractSpinBox>(editor, u"Begin:"_s)->text(), words[2]);
        QVERIFY(typeDigits(editor, u"Begin:"_s, words[3]));
        QVERIFY(click(editor, u"Modify"_s));
        QCOMPARE(isDate ? window.holidayStore.holidays->first().begin : window.planStore.plans->first().begin,
                 words[4]);
    }

    void time_followsTheWheelAndTheArrows_andLongTextsAreKept()
    {
        MainWindow window;
        Plan plan = window.addPlan(u"long"_s.repeated(10'000), u"18:00"_s);
        plan.isLoop = true;
        QVERIFY(window.planStore.updatePlan(plan));
        const auto editor = openEditor(window, u"Edit"_s);
        QWidget *begin = control<QAbstractSpinBox>(editor, u"Begin:"_s);
        auto *line = begin->findChild<QLineEdit *>();
        rollWheel(begin, 1); // without the focus it stays
        QCOMPARE(line->text(), u"18:00"_s);
        QTest::mouseClick(line, Qt::LeftButton, {}, {2, line->height() / 2});
        QTest::keyClicks(begin, u"0959"_s);
        QTest::keyClick(begin, Qt::Key_Up);
        QCOMPARE(line->text(), u"09:00"_s);
        QTest::keyClick(begin, Qt::Key_Left);
        rollWheel(begin, -1);
        QVERIFY(click(editor, u"Modify"_s));
        plan.begin = u"08:00"_s;
        QCOMPARE(window.planStore.plans.value(), QList{plan});
    }

    void date_isChosenInTheCalendar()
    {
        MainWindow window;
        window.addHoliday(u"Autumn"_s);
        Holiday expected = window.holidayStore.holidays->first();
        const auto editor = openEditor(window, u"Edit"_s, u"Holiday"_s);
        QTest::keyClick(control(editor, u"End:"_s), Qt::Key_F4);
        QVERIFY(QApplication::activePopupWidget());
        auto *calendar = QApplication::activePopupWidget()->findChild<QCalendarWidget *>();
        QTest::keyClick(calendar->focusWidget(), Qt::Key_Right);
        QTest::keyClick(calendar->focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(!QApplication::activePopupWidget());
        QVERIFY(click(editor, u"Modify"_s));
        expected.end = u"2024-10-08"_s;
        QCOMPARE(window.holidayStore.holidays.value(), QList{expected});
    }

    void chosenFile_fillsTheForm()
    {
        MainWindow window;
        const auto editor = openEditor(window, u"Add Plan"_s);
        const QString bell = u"Morning Bell.mp3"_s;
        for (const auto &[file, entered, title] : {
                 std::tuple(bell, u""_s, u"Morning Bell"_s),
                 {bell, u" "_s, u" "_s},
                 {u"chime.mp3.mp3"_s, u""_s, u"chime"_s},
                 {u"no. 1."_s, u""_s, u"no 1"_s},
                 {u".bell"_s, u""_s, u"bell"_s},
             }) {
            const QString path = window.folder.filePath(file);
            QFile(path).open(QIODevice::WriteOnly);
            QVERIFY(type(editor, u"Title:"_s, entered));
            auto *choose = control<QAbstractButton>(editor, u"Choose File"_s);
            choose->click();
            choose->click(); // while the panel opens
            const QPointer panel = editor->findChild<QFileDialog *>();
            auto *name = panel->findChild<QLineEdit *>(u"fileNameEdit"_s);
            name->setText(path);
            QTest::keyClick(name, Qt::Key_Return);
            QTRY_VERIFY(!panel && !editor->findChild<QFileDialog *>());
            QCOMPARE(control<QLineEdit>(editor, u"Title:"_s)->text(), title);
            QCOMPARE(control<QLineEdit>(editor, u"Music:"_s)->text(), path);
        }
        QVERIFY(click(editor, u"Add"_s));
        QCOMPARE(window.planStore.plans->first().music, u".bell"_s);
    }
};

QTEST_MAIN(TestEditors)
#include "TestEditors.moc"
