#include "store/PlanStore.h"
#include "ui/PlanEdit.h"

#include "support/Controls.h"
#include "support/EditorDesk.h"
#include "support/LogCapture.h"
#include "support/Table.h"

#include <QAbstractSpinBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
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

using Desk = EditorDesk<PlanEdit, PlanStore>;

QWidget *timeField(const Desk &desk)
{
    return control<QAbstractSpinBox>(desk.editor, u"Begin:"_s);
}

void rollWheel(QWidget *widget, int notches)
{
    const QPointF center = widget->rect().center();
    QWheelEvent roll(center, widget->mapToGlobal(center), {}, {0, 120 * notches}, Qt::NoButton,
                     Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget, &roll);
}

} // namespace

class TestPlanEdit final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void newPlan_playsOnWorkingDaysFromNow()
    {
        Desk desk;
        desk.edit();
        QVERIFY(control(desk.editor, u"Title:"_s)->hasFocus());
        QTest::keyClicks(QApplication::focusWidget(), u"  Tom's  "_s);
        QVERIFY(type(desk.editor, u"Music:"_s, u"/music/b.mp3"_s));
        desk.clock.advance(3'600'000);
        QVERIFY(click(desk.editor, u"Add"_s));
        QTRY_VERIFY(!desk.editor);
        Plan stored = desk.store.plans->value(0);
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

    void existingPlan_isChangedInPlace()
    {
        Desk desk;
        desk.editStored(evening());
        QVERIFY(type(desk.editor, u"Title:"_s, u"Night"_s));
        QVERIFY(click(desk.editor, u"Sun"_s));
        QVERIFY(click(desk.editor, u"Sat"_s));
        QVERIFY(click(desk.editor, u"No"_s));
        QVERIFY(type(desk.editor, u"Folder:"_s, u"/music/c.mp3"_s));
        QVERIFY(click(desk.editor, u"Choose File"_s));
        auto *panel = desk.editor->findChild<QFileDialog *>();
        QCOMPARE(QApplication::activeModalWidget(), panel);
        QTest::keyClick(panel, Qt::Key_Escape);
        QTRY_VERIFY(!desk.editor->findChild<QFileDialog *>());
        QVERIFY(click(desk.editor, u"Modify"_s));
        QTRY_VERIFY(!desk.editor);
        Plan expected = evening();
        expected.title = u"Night"_s;
        expected.content = u"/music/c.mp3"_s;
        expected.week0 = true;
        expected.isLoop = expected.week6 = false;
        QCOMPARE(PlanStore(desk.base.db).plans.value(), QList{expected});
    }

    void save_namesTheFirstThingMissing_data()
    {
        columns<QString, bool, QString>("title", "anyDay", "message");
        QTest::newRow("the title comes first") << QString() << false << u"Please input the Title"_s;
        QTest::newRow("then the week") << u"Bell"_s << false << u"Please select the Week"_s;
        QTest::newRow("then the file; blanks are a title") << u" "_s << true << u"Please select the Music"_s;
    }

    void save_namesTheFirstThingMissing()
    {
        QFETCH(QString, title);
        QFETCH(bool, anyDay);
        Desk desk;
        desk.edit();
        QVERIFY(type(desk.editor, u"Title:"_s, title));
        for (const auto &day : {u"Mon"_s, u"Tue"_s, u"Wed"_s, u"Thu"_s, u"Fri"_s}) {
            if (!anyDay)
                QVERIFY(click(desk.editor, day));
        }
        QVERIFY(click(desk.editor, u"Add"_s));
        QPointer alert = desk.editor->findChild<QMessageBox *>();
        QVERIFY(alert);
        QCOMPARE(alert->windowTitle(), u"Tip"_s);
        QTEST(alert->informativeText(), "message");
        QCOMPARE(QApplication::activeModalWidget(), alert);
        QVERIFY(click(alert, u"OK"_s));
        QTRY_VERIFY(!alert);
        QVERIFY(desk.editor->isVisible());
        QCOMPARE(control<QLineEdit>(desk.editor, u"Title:"_s)->text(), title);
        QVERIFY(desk.store.plans->isEmpty());
    }

    void refusedSave_keepsTheSheetAsItIs()
    {
        Desk desk;
        desk.edit();
        desk.base.run(u"alter table plan rename to elsewhere"_s);
        QVERIFY(type(desk.editor, u"Title:"_s, u"Bell"_s));
        QVERIFY(type(desk.editor, u"Music:"_s, u"/b.mp3"_s));
        const LogCapture log;
        QVERIFY(click(desk.editor, u"Add"_s));
        QVERIFY(!desk.editor->findChild<QMessageBox *>());
        QVERIFY(desk.editor->isVisible());
        QCOMPARE(control<QLineEdit>(desk.editor, u"Title:"_s)->text(), u"Bell"_s);
        desk.base.run(u"alter table elsewhere rename to plan"_s);
        QVERIFY(click(desk.editor, u"Add"_s));
        QTRY_VERIFY(!desk.editor);
        QCOMPARE(desk.store.plans->size(), 1);
    }

    void close_storesNothing()
    {
        Desk desk;
        desk.editStored(evening());
        QVERIFY(type(desk.editor, u"Title:"_s, u"Night"_s));
        QVERIFY(click(desk.editor, u"Close"_s));
        QTRY_VERIFY(!desk.editor);
        QCOMPARE(desk.store.plans.value(), QList{evening()});
    }

    void enter_savesFromEveryField()
    {
        for (const auto &field : {u"Title:"_s, u"Begin:"_s, u"End:"_s, u"Sun"_s, u"Yes"_s, u"Folder:"_s}) {
            Desk desk;
            desk.editStored(evening());
            control(desk.editor, field)->setFocus();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Enter);
            QTRY_VERIFY2(!desk.editor, qPrintable(field));
            QCOMPARE(desk.store.plans.value(), QList{evening()});
        }
    }

    void tab_visitsTheControlsInOrder()
    {
        Desk desk;
        desk.edit(evening());
        QStringList visited;
        while (visited.size() < 20 && visited.value(visited.size() - 1) != u"Close"_s) {
            QWidget *focus = QApplication::focusWidget();
            const QString name = QAccessible::queryAccessibleInterface(focus)->text(QAccessible::Name);
            if (!visited.endsWith(name)) // a time is two stops
                visited << name;
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        QCOMPARE(visited.join(u' '),
                 u"Title: Begin: End: Sun Mon Tue Wed Thu Fri Sat Yes Folder: Choose File Modify Close"_s);
    }

    void time_isTyped_data()
    {
        columns<QString, QString, QString>("stored", "keys", "time");
        QTest::newRow("four digits") << u"18:00"_s << u"0705"_s << u"07:05"_s;
        QTest::newRow("with a colon") << u"18:00"_s << u"07:05"_s << u"07:05"_s;
        QTest::newRow("with a colon after one digit") << u"18:00"_s << u"1:05"_s << u"01:05"_s;
        QTest::newRow("digits of an Arabic keyboard") << u"18:00"_s << u"٠٧٠٥"_s << u"07:05"_s;
        QTest::newRow("the last minute") << u"18:00"_s << u"2359"_s << u"23:59"_s;
        QTest::newRow("nothing, in the hour that summer time skips") << u"02:30"_s << QString() << u"02:30"_s;
        QTest::newRow("nothing, over an unreadable time") << u"7h"_s << QString() << u"07:05"_s;
    }

    void time_isTyped()
    {
        QFETCH(QString, time);
        QFETCH(QString, stored);
        QFETCH(QString, keys);
        Plan plan = evening();
        plan.begin = stored;
        for (const auto &locale : {u"C"_s, u"ar_EG"_s, u"en_US"_s}) {
            QLocale::setDefault(QLocale(locale));
            Desk desk;
            desk.editStored(plan);
            QVERIFY(typeDigits(desk.editor, u"Begin:"_s, keys));
            QCOMPARE(timeField(desk)->findChild<QLineEdit *>()->text(), time);
            QVERIFY(click(desk.editor, u"Modify"_s));
            QCOMPARE(desk.store.plans->first().begin, time);
        }
    }

    void time_followsTheMouseWheelAndTheArrows()
    {
        Desk desk;
        desk.edit(evening());
        auto *line = timeField(desk)->findChild<QLineEdit *>();
        rollWheel(timeField(desk), 1);
        QCOMPARE(line->text(), u"18:00"_s);
        QTest::mouseClick(line, Qt::LeftButton, {}, {2, line->height() / 2});
        QTest::keyClicks(timeField(desk), u"0959"_s);
        QTest::keyClick(timeField(desk), Qt::Key_Up);
        QCOMPARE(line->text(), u"09:00"_s);
        QTest::keyClick(timeField(desk), Qt::Key_Left);
        rollWheel(timeField(desk), -1);
        QCOMPARE(line->text(), u"08:00"_s);
    }

    void chosenFile_fillsTheForm_data()
    {
        columns<QString, QString, QString>("file", "typed", "title");
        QTest::newRow("the name becomes the title")
            << u"Morning Bell.mp3"_s << QString() << u"Morning Bell"_s;
        QTest::newRow("a title typed before stays") << u"Morning Bell.mp3"_s << u" "_s << u" "_s;
        QTest::newRow("every occurrence goes") << u"chime.mp3.mp3"_s << QString() << u"chime"_s;
        QTest::newRow("only the last extension goes") << u"a.b.C"_s << QString() << u"a.b"_s;
        QTest::newRow("without an extension") << u"bell"_s << QString() << u"bell"_s;
        QTest::newRow("a dot at the end") << u"no. 1."_s << QString() << u"no 1"_s;
        QTest::newRow("a dot at the beginning") << u".bell"_s << QString() << u"bell"_s;
    }

    void chosenFile_fillsTheForm()
    {
        QFETCH(QString, file);
        QFETCH(QString, typed);
        const QTemporaryDir folder;
        const QString path = folder.filePath(file);
        QVERIFY(QFile(path).open(QIODevice::WriteOnly));
        Desk desk;
        desk.edit();
        QVERIFY(type(desk.editor, u"Title:"_s, typed));
        QVERIFY(click(desk.editor, u"Choose File"_s));
        const QPointer panel = desk.editor->findChild<QFileDialog *>();
        QCOMPARE(panel->windowTitle(), u"Select a file"_s);
        auto *name = panel->findChild<QLineEdit *>(u"fileNameEdit"_s);
        name->setText(path);
        QTest::keyClick(name, Qt::Key_Return);
        QTRY_VERIFY(!panel);
        QVERIFY(click(desk.editor, u"Add"_s));
        const Plan plan = desk.store.plans->value(0);
        QTEST(plan.title, "title");
        QCOMPARE(plan.music, file);
        QCOMPARE(plan.content, path);
    }
};

QTEST_MAIN(TestPlanEdit)
#include "TestPlanEdit.moc"
