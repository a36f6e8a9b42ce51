#include "support/Controls.h"
#include "support/LogCapture.h"
#include "support/SharedObjects.h"
#include "ui/HolidayEdit.h"
#include "ui/PlanEdit.h"

#include <QAbstractSpinBox>
#include <QCalendarWidget>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QRegularExpression>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace {

Plan evening()
{
    return {.id = u"4F7C2A10-0000-4000-8000-000000000001"_s,
            .title = u"Evening"_s,
            .begin = u"18:00"_s,
            .end = u"18:30"_s,
            .music = u"a.mp3"_s,
            .content = u"/music/a.mp3"_s,
            .isLoop = true,
            .week6 = true};
}

Holiday autumn()
{
    return {.id = u"1"_s, .title = u"New Year's Day"_s, .begin = u"2024-10-01"_s, .end = u"2024-10-07"_s};
}

// An editor over a window, with the stores and the database under it.
class EditorWindow final : public SharedObjects
{
    Q_DISABLE_COPY_MOVE(EditorWindow)

public:
    EditorWindow() : SharedObjects("2026-03-29 07:05:42") { view.show(); }

    void addPlan() { open(new PlanEdit(planStore, clock, std::nullopt, &view)); }
    void addHoliday() { open(new HolidayEdit(holidayStore, clock, std::nullopt, &view)); }

    /// Opens the editor for a record, once that is stored.
    void edit(const Plan &plan)
    {
        QVERIFY(planStore.addPlan(plan));
        open(new PlanEdit(planStore, clock, plan, &view));
    }
    void edit(const Holiday &holiday)
    {
        QVERIFY(holidayStore.addHoliday(holiday));
        open(new HolidayEdit(holidayStore, clock, holiday, &view));
    }

    QAbstractSpinBox *field(const QString &name) const { return control<QAbstractSpinBox>(editor, name); }

    QPointer<Sheet> editor;

private:
    void open(Sheet *opened)
    {
        editor = opened;
        editor->open();
        QVERIFY(QTest::qWaitForWindowActive(&view));
    }

    QWidget view;
};

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
        EditorWindow window;
        window.addPlan();
        QVERIFY(control(window.editor, u"Title:"_s)->hasFocus());
        QTest::keyClicks(QApplication::focusWidget(), u"  Tom's  "_s);
        QVERIFY(type(window.editor, u"Music:"_s, u"/music/b.mp3"_s));
        window.clock.advance(3'600'000);
        // A save that the database refuses keeps the sheet as it is.
        window.base.run(u"alter table plan rename to elsewhere"_s);
        {
            const LogCapture log;
            QVERIFY(click(window.editor, u"Add"_s));
        }
        QVERIFY(window.editor->isVisible() && window.planStore.plans->isEmpty());
        window.base.run(u"alter table elsewhere rename to plan"_s);
        auto *add = qobject_cast<QAbstractButton *>(control(window.editor, u"Add"_s));
        add->click();
        add->click(); // while the sheet closes
        QTRY_VERIFY(!window.editor);
        QCOMPARE(window.planStore.plans->size(), 1);
        Plan stored = window.planStore.plans->value(0);
        const QRegularExpression upperCaseUuid(u"^[0-9A-F]{8}-([0-9A-F]{4}-){3}[0-9A-F]{12}$"_s);
        QVERIFY(upperCaseUuid.match(std::exchange(stored.id, QString())).hasMatch());
        const Plan expected{.title = u"  Tom's  "_s,
                            .begin = u"07:05"_s,
                            .end = u"07:05"_s,
                            .content = u"/music/b.mp3"_s,
                            .isMusic = true,
                            .week1 = true,
                            .week2 = true,
                            .week3 = true,
                            .week4 = true,
                            .week5 = true};
        QCOMPARE(stored, expected);
    }

    void newHoliday_isToday()
    {
        EditorWindow window;
        window.addHoliday();
        QVERIFY(type(window.editor, u"Title:"_s, u" "_s));
        window.clock.advance(86'400'000);
        QVERIFY(click(window.editor, u"Add"_s));
        QTRY_VERIFY(!window.editor);
        const Holiday stored = window.holidayStore.holidays->value(0);
        QVERIFY(!stored.id.isEmpty());
        QCOMPARE(stored.title + stored.begin + stored.end, u" 2026-03-292026-03-29"_s);
    }

    void existingPlan_isChangedInPlace_orNotAtAll()
    {
        for (const auto &button : {u"Modify"_s, u"Close"_s}) {
            EditorWindow window;
            window.edit(evening());
            QVERIFY(type(window.editor, u"Title:"_s, u"Night"_s));
            for (const auto &choice : {u"Sun"_s, u"Sat"_s, u"No"_s})
                QVERIFY(click(window.editor, choice));
            QVERIFY(type(window.editor, u"Folder:"_s, u"/music/c.mp3"_s));
            QVERIFY(click(window.editor, u"Choose File"_s));
            QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape);
            QTRY_VERIFY(!window.editor->findChild<QFileDialog *>());
            QVERIFY(click(window.editor, button));
            QTRY_VERIFY(!window.editor);
            Plan expected = evening();
            if (button == u"Modify"_s) {
                expected.title = u"Night"_s;
                expected.content = u"/music/c.mp3"_s;
                expected.week0 = true;
                expected.isLoop = expected.week6 = false;
            }
            QCOMPARE(PlanStore(window.base.db).plans.value(), QList{expected});
        }
    }

    void save_namesTheFirstThingMissing()
    {
        EditorWindow window;
        window.addPlan();
        const auto missing = [&window] {
            click(window.editor, u"Add"_s);
            const QPointer alert = qobject_cast<QDialog *>(QApplication::focusWidget()->parent()->parent());
            if (!alert || window.editor->isEnabled())
                return QString();
            const QString message = alert->windowTitle() + u": "_s + alert->accessibleDescription();
            click(alert, u"OK"_s);
            return QTest::qWaitFor([&window] { return window.editor->isEnabled(); }) ? message : QString();
        };
        for (const auto &day : {u"Mon"_s, u"Tue"_s, u"Wed"_s, u"Thu"_s, u"Fri"_s})
            QVERIFY(click(window.editor, day));
        QCOMPARE(missing(), u"Tip: Please input the Title"_s);
        QVERIFY(type(window.editor, u"Title:"_s, u" "_s));
        QCOMPARE(missing(), u"Tip: Please select the Week"_s);
        QVERIFY(click(window.editor, u"Sat"_s));
        QCOMPARE(missing(), u"Tip: Please select the Music"_s);
        QCOMPARE(control<QLineEdit>(window.editor, u"Title:"_s)->text(), u" "_s);
        QVERIFY(window.planStore.plans->isEmpty());
    }

    void time_isTyped()
    {
        const auto typed = [](const QString &stored, const QString &keys) {
            Plan plan = evening();
            plan.begin = stored;
            QStringList times;
            for (const auto &locale : {u"C"_s, u"ar_EG"_s, u"en_US"_s}) {
                QLocale::setDefault(QLocale(locale));
                EditorWindow window;
                window.edit(plan);
                typeDigits(window.editor, u"Begin:"_s, keys);
                times << window.field(u"Begin:"_s)->findChild<QLineEdit *>()->text();
                click(window.editor, u"Modify"_s);
                times << window.planStore.plans->first().begin;
            }
            return times.removeDuplicates() == 5 ? times.first() : times.join(u' ');
        };
        QCOMPARE(typed(u"18:00"_s, u"0705"_s), u"07:05"_s);
        QCOMPARE(typed(u"18:00"_s, u"07:05"_s), u"07:05"_s);
        QCOMPARE(typed(u"18:00"_s, u"1:05"_s), u"01:05"_s);
        QCOMPARE(typed(u"18:00"_s, u"٢٣٥٩"_s), u"23:59"_s);
        QCOMPARE(typed(u"02:30"_s, QString()), u"02:30"_s); // today summer time skips that hour
        QCOMPARE(typed(u"7h"_s, QString()), u"07:05"_s);
    }

    void time_followsTheMouseWheelAndTheArrows()
    {
        EditorWindow window;
        window.edit(evening());
        QWidget *begin = window.field(u"Begin:"_s);
        auto *line = begin->findChild<QLineEdit *>();
        rollWheel(begin, 1);
        QCOMPARE(line->text(), u"18:00"_s); // without the focus it stays
        QTest::mouseClick(line, Qt::LeftButton, {}, {2, line->height() / 2});
        QTest::keyClicks(begin, u"0959"_s);
        QTest::keyClick(begin, Qt::Key_Up);
        QCOMPARE(line->text(), u"09:00"_s);
        QTest::keyClick(begin, Qt::Key_Left);
        rollWheel(begin, -1);
        QCOMPARE(line->text(), u"08:00"_s);
    }

    void date_isTyped()
    {
        // What the field shows of a date, and what typing over it stores.
        const auto typed = [](const char *locale, const QString &stored, const QString &keys) {
            QLocale::setDefault(QLocale(QString::fromLatin1(locale)));
            Holiday holiday = autumn();
            holiday.begin = stored;
            EditorWindow window;
            window.edit(holiday);
            const QString shown = window.field(u"Begin:"_s)->text();
            typeDigits(window.editor, u"Begin:"_s, keys);
            click(window.editor, u"Modify"_s);
            return shown + u" -> "_s + window.holidayStore.holidays->first().begin;
        };
        QCOMPARE(typed("C", u"2024-10-31"_s, u"2026-05-03"_s), u"2024-10-31 -> 2026-05-03"_s);
        QCOMPARE(typed("de_DE", u"2024-10-31"_s, u"03052026"_s), u"31.10.2024 -> 2026-05-03"_s);
        QCOMPARE(typed("de_DE", u"2024-10-31"_s, u"3.5.2026"_s), u"31.10.2024 -> 2026-05-03"_s);
        QCOMPARE(typed("C", u"2024-10-31"_s, u"20260230"_s), u"2024-10-31 -> 2026-02-28"_s);
        QCOMPARE(typed("de_DE", u"2026-02-10"_s, u"31042026"_s), u"10.02.2026 -> 2026-04-30"_s);
        QCOMPARE(typed("de_DE", u"2026-02-10"_s, u"31.3."_s), u"10.02.2026 -> 2026-03-31"_s);
        QCOMPARE(typed("en_US", u"2026-03-10"_s, u"02292028"_s), u"3/10/2026 -> 2028-02-29"_s);
        QCOMPARE(typed("de_DE", u"2024-10-31"_s, u"03.05.26"_s), u"31.10.2024 -> 2026-05-03"_s);
        QCOMPARE(typed("en_US", u"2024-10-31"_s, u"5/3/2026"_s), u"10/31/2024 -> 2026-05-03"_s);
        QCOMPARE(typed("zh_CN", u"2024-10-31"_s, u"26/05/03"_s), u"2024/10/31 -> 2026-05-03"_s);
        QCOMPARE(typed("ar_EG", u"2024-10-31"_s, u"٠٣٠٥٢٠٢٦"_s), u"٣١/١٠/٢٠٢٤ -> 2026-05-03"_s);
        QCOMPARE(typed("de_DE", u"0001-01-01"_s, QString()), u"01.01.0001 -> 0001-01-01"_s);
        QCOMPARE(typed("de_DE", u"2024-02-30"_s, QString()), u"29.03.2026 -> 2026-03-29"_s);
    }

    void date_isChangedByTheArrowsAndTheCalendar()
    {
        EditorWindow window;
        window.edit(autumn());
        window.field(u"Begin:"_s)->setFocus();
        QTest::keyClick(window.field(u"Begin:"_s), Qt::Key_F4);
        QVERIFY(QApplication::activePopupWidget());
        auto *calendar = QApplication::activePopupWidget()->findChild<QCalendarWidget *>();
        QTest::keyClick(calendar->focusProxy() ? calendar->focusProxy() : calendar->focusWidget(),
                        Qt::Key_Right);
        QTest::keyClick(calendar->focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(!QApplication::activePopupWidget());
        window.field(u"End:"_s)->setFocus(Qt::TabFocusReason);
        QTest::keyClick(window.field(u"End:"_s), Qt::Key_Down);
        QTest::keyClick(window.field(u"End:"_s), Qt::Key_Enter);
        QTRY_VERIFY(!window.editor);
        Holiday changed = autumn();
        changed.begin = u"2024-10-02"_s;
        changed.end = u"2023-10-07"_s;
        QCOMPARE(window.holidayStore.holidays.value(), QList{changed});
    }

    void chosenFile_fillsTheForm()
    {
        const auto choose = [](const QString &file, const QString &typed = QString()) {
            const QTemporaryDir folder;
            const QString path = folder.filePath(file);
            QFile(path).open(QIODevice::WriteOnly);
            EditorWindow window;
            window.addPlan();
            type(window.editor, u"Title:"_s, typed);
            click(window.editor, u"Choose File"_s);
            const QPointer panel = window.editor->findChild<QFileDialog *>();
            auto *name = panel->findChild<QLineEdit *>(u"fileNameEdit"_s);
            name->setText(path);
            QTest::keyClick(name, Qt::Key_Return);
            const bool isChosen = QTest::qWaitFor([&panel] { return !panel; });
            click(window.editor, u"Add"_s);
            const Plan plan = window.planStore.plans->value(0);
            return isChosen && plan.music == file && plan.content == path ? plan.title : u"not chosen"_s;
        };
        QCOMPARE(choose(u"Morning Bell.mp3"_s), u"Morning Bell"_s);
        QCOMPARE(choose(u"Morning Bell.mp3"_s, u" "_s), u" "_s);
        QCOMPARE(choose(u"chime.mp3.mp3"_s), u"chime"_s);
        QCOMPARE(choose(u"bell"_s), u"bell"_s);
        QCOMPARE(choose(u"no. 1."_s), u"no 1"_s);
        QCOMPARE(choose(u".bell"_s), u"bell"_s);
    }
};

QTEST_MAIN(TestEditors)
#include "TestEditors.moc"
