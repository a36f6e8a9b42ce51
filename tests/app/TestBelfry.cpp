#include "support/MainWindow.h"
#include "toolkit/LinearProgress.h"
#include "toolkit/Style.h"
#include "ui/PlanEdit.h"

using namespace Qt::StringLiterals;

class TestBelfry final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The window's own timer does all the ticking: it looks at the clock 20 times a second, for the clock
    // stands just before the end of a second.
    void plan_isAddedRingsIsStoppedAndDeleted()
    {
        MainWindow desk;
        desk.clock.advance(950);
        const auto passSeconds = [&desk](int seconds) { desk.clock.advance(seconds * 1000); };
        const Plan other = desk.addPlan(u"Other"_s, u"12:00"_s);
        desk.open(true);

        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_VERIFY(control(desk.toolBar(), u"Add Plan"_s));
        press(Qt::Key_N, Qt::ControlModifier);
        auto *editor = desk.dialog<PlanEdit>().data();
        QVERIFY(editor);
        QVERIFY(type(editor, u"Title:"_s, u"Morning"_s));
        QVERIFY(type(editor, u"Music:"_s, other.content));
        QVERIFY(typeDigits(editor, u"Begin:"_s, u"0800"_s));
        QVERIFY(typeDigits(editor, u"End:"_s, u"0830"_s));
        press(Qt::Key_Return);
        desk.closeDialogs();
        QTRY_VERIFY(desk.card(u"Morning"_s));
        QCOMPARE(contents(desk.card(u"Morning"_s)).value(4), u"08:00 - 08:30"_s);
        press(Qt::Key_E, Qt::ControlModifier);

        passSeconds(1);
        QTRY_COMPARE(desk.clockLine()->text(), u"07:59:59"_s);
        QVERIFY(!desk.stage.sounding);
        passSeconds(1);
        QTRY_VERIFY(desk.stage.sounding);
        QCOMPARE(desk.stage.played, QStringList(other.content));
        Card *card = desk.card(u"Morning"_s);
        QTRY_COMPARE(background(card), Style::green);
        auto *progress = card->findChild<LinearProgress *>();
        for (const int position : {9, 45, 81}) {
            desk.stage.sounding->setCurrentTime(position);
            passSeconds(1);
            QTRY_VERIFY(contents(card).contains(
                u"%1:%2"_s.arg(position / 60, 2, 10, QChar(u'0')).arg(position % 60, 2, 10, QChar(u'0'))));
            QCOMPARE(progress->value(), qRound(position / 90.5 * progress->maximum()));
        }

        desk.chooseScreen(u"History"_s);
        QTRY_VERIFY(desk.card(u"Morning"_s));
        QCOMPARE(contents(desk.card(u"Morning"_s)).join(u'|'), u"Morning|2026-03-02 08:00:00|------"_s);

        desk.chooseScreen(u"Plan"_s);
        QTRY_VERIFY(control(desk.card(u"Morning"_s), u"Stop"_s));
        QVERIFY(click(desk.card(u"Morning"_s), u"Stop"_s));
        QVERIFY(!desk.stage.sounding);
        QTRY_COMPARE(background(card), Style::planColor);

        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_VERIFY(control(card, u"Select"_s));
        QVERIFY(click(card, u"Select"_s));
        press(Qt::Key_Delete);
        QVERIFY(click(desk.dialog(), u"Delete"_s));
        QTRY_VERIFY(!desk.card(u"Morning"_s));
        QVERIFY(desk.card(u"Other"_s));

        QCOMPARE(PlanStore(desk.base.db).plans.value(), QList{other});
        QCOMPARE(desk.log(), QStringList(u"Morning 08:00:00 - 08:00:03"_s));
    }
};

QTEST_MAIN(TestBelfry)
#include "TestBelfry.moc"
