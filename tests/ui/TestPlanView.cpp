#include "support/MainWindow.h"
#include "support/Table.h"
#include "toolkit/LinearProgress.h"
#include "toolkit/Style.h"
#include "ui/PlanEdit.h"

using namespace Qt::StringLiterals;

namespace {

const QString weekdays = u"Sun Mon Tue Wed Thu Fri Sat"_s;

// The weekdays that stand out from the card in white; the others are darker than it.
QStringList whiteDays(Card *card)
{
    QStringList white;
    const QImage picture = card->grab().toImage();
    for (const QLabel *label : card->findChildren<QLabel *>()) {
        if (!weekdays.split(u' ').contains(label->text()))
            continue;
        const QImage day = picture.copy(QRect(label->mapTo(card, QPoint()), label->size()));
        int lightest = 0;
        for (int i = 0; i < day.width() * day.height(); ++i)
            lightest = std::max(lightest, day.pixelColor(i % day.width(), i / day.width()).lightness());
        if (lightest > background(card).lightness() + 20)
            white << label->text();
    }
    return white;
}

} // namespace

class TestPlanView final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void card_showsThePlanAndTheControlsOfTheMode_data()
    {
        columns<bool, bool, bool, QString>("isLoop", "isPlaying", "isEditMode", "icons");
        QTest::newRow("at rest") << false << false << false << QString();
        QTest::newRow("at rest, repeated") << true << false << false << u"Repeat "_s;
        QTest::newRow("playing") << false << true << false << u"Stop "_s;
        QTest::newRow("playing repeatedly") << true << true << false << u"Repeat Stop "_s;
        QTest::newRow("edited at rest") << false << false << true << u"Edit Play Select "_s;
        QTest::newRow("edited while it plays repeatedly")
            << true << true << true << u"Repeat Edit Stop Select "_s;
    }

    void card_showsThePlanAndTheControlsOfTheMode()
    {
        QFETCH(bool, isLoop);
        QFETCH(bool, isPlaying);
        QFETCH(bool, isEditMode);
        QFETCH(QString, icons);
        MainWindow desk;
        Plan plan = desk.addPlan(u"Bell"_s);
        plan.isLoop = isLoop;
        QVERIFY(desk.planStore.updatePlan(plan));
        desk.open();
        QCOMPARE(contents(desk.card(u"Bell"_s)).first(), u"Bell"_s);

        // Each change reaches the card that is there.
        desk.appStore.isEditMode = isEditMode;
        desk.tick(isPlaying ? "08:00:00" : "08:00:01");
        const QString readouts = isPlaying ? u" 00:00 00:00"_s : QString();
        QTRY_COMPARE(contents(desk.card(u"Bell"_s)).join(u' '),
                     u"Bell "_s + icons + u"08:00 - 09:30 "_s + weekdays + u" Bell.ogg"_s + readouts);
        QCOMPARE(background(desk.card(u"Bell"_s)), isPlaying ? Style::green : Style::planColor);
        const QSize size = desk.card(u"Bell"_s)->size();
        QVERIFY(size.width() >= 240 && size.height() >= 100 && size.height() <= 140);
        QCOMPARE(size.height(), desk.card(u"Bell"_s)->sizeHint().height());
    }

    void weekdays_standOutOnTheDaysOfThePlan()
    {
        MainWindow desk;
        Plan plan = desk.addPlan(u"Bell"_s);
        desk.open();
        QTRY_COMPARE(whiteDays(desk.card(u"Bell"_s)).join(u' '), u"Mon Tue Wed Thu Fri"_s);
        plan.week0 = true;
        plan.week3 = false;
        QVERIFY(desk.planStore.updatePlan(plan));
        QTRY_COMPARE(whiteDays(desk.card(u"Bell"_s)).join(u' '), u"Sun Mon Tue Thu Fri"_s);
    }

    void manualStart_takesOverFromWhatPlays()
    {
        MainWindow desk;
        desk.addPlan(u"A"_s);
        const Plan b = desk.addPlan(u"B"_s, u"10:00"_s);
        desk.openInEditMode();
        desk.tick("08:00:00");
        desk.stage.sounding->setCurrentTime(45);
        desk.tick("08:00:45");
        QVERIFY(click(desk.card(u"B"_s), u"Play"_s));
        QCOMPARE(desk.stage.played.value(1), b.content);
        QCOMPARE(desk.log(), (QStringList{u"A 08:00:00 - 08:00:45"_s, u"B 08:00:45 - "_s}));
        QTRY_COMPARE(background(desk.card(u"B"_s)), Style::green);
        QCOMPARE(background(desk.card(u"A"_s)), Style::planColor);
        // The readouts are those of A until the next tick.
        QCOMPARE(contents(desk.card(u"B"_s)).mid(13), (QStringList{u"00:45"_s, u"01:30"_s}));
        desk.tick("08:00:46");
        QTRY_COMPARE(contents(desk.card(u"B"_s)).mid(13), (QStringList{u"00:00"_s, u"01:30"_s}));
        QCOMPARE(background(desk.card(u"B"_s)), Style::green);
    }

    void playback_ends_data()
    {
        columns<bool, QStringList>("byHand", "log");
        QTest::newRow("by hand: at once and where it is") << true << QStringList(u"A 08:00:00 - 08:00:12"_s);
        QTest::newRow("by itself: with the next tick") << false << QStringList(u"A 08:00:00 - 08:00:13"_s);
    }

    void playback_ends()
    {
        QFETCH(bool, byHand);
        MainWindow desk;
        desk.addPlan(u"A"_s);
        desk.open();
        desk.tick("08:00:00");
        desk.stage.sounding->setCurrentTime(12);
        desk.tick("08:00:12");
        QTRY_VERIFY(control(desk.card(u"A"_s), u"Stop"_s));
        if (byHand) {
            QVERIFY(click(desk.card(u"A"_s), u"Stop"_s));
            QVERIFY(!desk.stage.sounding);
        } else {
            desk.stage.sounding->stop();
            desk.tick("08:00:13");
        }
        QTRY_COMPARE(background(desk.card(u"A"_s)), Style::planColor);
        QVERIFY(!control(desk.card(u"A"_s), u"Stop"_s));
        QVERIFY(!desk.card(u"A"_s)->findChild<LinearProgress *>()->isVisible());
        desk.tick("08:00:14");
        QCOMPARE(desk.avPlayer.player.value()->currentTime(), 12.0);
        QCOMPARE(desk.avPlayer.currentTime.value(), u"00:12"_s);
        QTEST(desk.log(), "log");
    }

    void edit_keepsTheMarksAndMovesTheCard()
    {
        MainWindow desk;
        const Plan plan = desk.addPlan(u"A"_s);
        desk.addPlan(u"B"_s, u"12:00"_s);
        desk.planStore.toggleChecked(plan);
        desk.openInEditMode();
        desk.tick("08:00:00");
        QVERIFY(click(desk.card(u"A"_s), u"Edit"_s));
        const QPointer editor = desk.dialog<PlanEdit>();
        QVERIFY(editor);
        QVERIFY(type(editor, u"Title:"_s, u"Later"_s));
        QVERIFY(typeDigits(editor, u"Begin:"_s, u"1300"_s));
        QVERIFY(click(editor, u"Modify"_s));
        QTRY_VERIFY(desk.card(u"Later"_s));
        Card *card = desk.card(u"Later"_s);
        QCOMPARE(background(card), Style::green);
        QVERIFY(control<QAbstractButton>(card, u"Select"_s)->isChecked());
        QVERIFY(card->x() > desk.card(u"B"_s)->x());
        QCOMPARE(desk.base.rows(u"select title, begin, id from plan order by begin desc"_s).first(),
                 u"Later|13:00|"_s + plan.id);
    }
};

QTEST_MAIN(TestPlanView)
#include "TestPlanView.moc"
