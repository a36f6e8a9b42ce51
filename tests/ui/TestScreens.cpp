#include "support/MainWindow.h"
#include "support/Table.h"
#include "toolkit/LinearProgress.h"
#include "toolkit/Style.h"
#include "ui/HolidayEdit.h"

using namespace Qt::StringLiterals;

namespace {

const QString weekdays = u"Sun Mon Tue Wed Thu Fri Sat"_s;

// The weekdays that a card shows as days of its plan.
QString daysOn(const Card *card)
{
    QStringList days;
    for (const QLabel *label : card->findChildren<QLabel *>()) {
        if (weekdays.split(u' ').contains(label->text()) && label->isEnabled())
            days << label->text();
    }
    return days.join(u' ');
}

} // namespace

class TestScreens final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plan_showsItselfAndTheControlsOfTheMode_data()
    {
        columns<bool, bool, bool, QString>("isLoop", "isPlaying", "isEditMode", "icons");
        QTest::newRow("at rest") << false << false << false << QString();
        QTest::newRow("at rest, repeated") << true << false << false << u"Repeat "_s;
        QTest::newRow("playing") << false << true << false << u"Stop "_s;
        QTest::newRow("edited at rest") << false << false << true << u"Edit Play Select "_s;
        QTest::newRow("edited while it plays repeatedly")
            << true << true << true << u"Repeat Edit Stop Select "_s;
    }

    void plan_showsItselfAndTheControlsOfTheMode()
    {
        QFETCH(bool, isLoop);
        QFETCH(bool, isPlaying);
        QFETCH(bool, isEditMode);
        QFETCH(QString, icons);
        MainWindow desk;
        Plan plan = desk.addPlan(u"Bell"_s);
        desk.open();
        QTRY_COMPARE(daysOn(desk.card(u"Bell"_s)), u"Mon Tue Wed Thu Fri"_s);

        // Each change reaches the card that is there.
        plan.isLoop = isLoop;
        plan.week0 = true;
        plan.week3 = false;
        QVERIFY(desk.planStore.updatePlan(plan));
        desk.appStore.isEditMode = isEditMode;
        desk.tick(isPlaying ? "08:00:00" : "08:00:01");
        const QString readouts = isPlaying ? u" 00:00 Progress 00:00"_s : QString();
        Card *card = desk.card(u"Bell"_s);
        QTRY_COMPARE(contents(card).join(u' '),
                     u"Bell "_s + icons + u"08:00 - 09:30 "_s + weekdays + u" Bell.ogg"_s + readouts);
        QTRY_COMPARE(daysOn(card), u"Sun Mon Tue Thu Fri"_s);
        QCOMPARE(background(card), isPlaying ? Style::green : Style::planColor);
        QVERIFY(card->width() >= 240 && card->height() >= 100 && card->height() <= 140);
        QCOMPARE(card->height(), card->sizeHint().height());
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
        for (int clicks = 0; clicks < 3; ++clicks)
            QVERIFY(click(desk.card(u"B"_s), u"Play"_s));
        QCOMPARE(desk.stage.played.size(), 2);
        QCOMPARE(desk.stage.played.value(1), b.content);
        QCOMPARE(desk.log(), (QStringList{u"A 08:00:00 - 08:00:45"_s, u"B 08:00:45 - "_s}));
        QTRY_COMPARE(background(desk.card(u"B"_s)), Style::green);
        QCOMPARE(background(desk.card(u"A"_s)), Style::planColor);
        // The readouts are those of A until the next tick.
        QCOMPARE(contents(desk.card(u"B"_s)).mid(13), (QStringList{u"00:45"_s, u"Progress"_s, u"01:30"_s}));
        desk.tick("08:00:46");
        QTRY_COMPARE(contents(desk.card(u"B"_s)).mid(13),
                     (QStringList{u"00:00"_s, u"Progress"_s, u"01:30"_s}));
    }

    void playback_endsByHandAtOnce_byItselfWithTheNextTick()
    {
        for (const bool byHand : {true, false}) {
            MainWindow desk;
            desk.addPlan(u"A"_s);
            desk.open();
            desk.tick("08:00:00");
            desk.stage.sounding->setCurrentTime(12);
            desk.tick("08:00:12");
            QTRY_VERIFY(control(desk.card(u"A"_s), u"Stop"_s));
            const auto *progress = desk.card(u"A"_s)->findChild<LinearProgress *>();
            QCOMPARE(progress->value(), qRound(12 / 90.5 * progress->maximum()));
            if (byHand) {
                QVERIFY(click(desk.card(u"A"_s), u"Stop"_s));
                QVERIFY(!desk.stage.sounding);
            } else {
                desk.stage.sounding->stop();
                desk.tick("08:00:13");
            }
            QTRY_COMPARE(background(desk.card(u"A"_s)), Style::planColor);
            QVERIFY(!control(desk.card(u"A"_s), u"Stop"_s));
            QVERIFY(!progress->isVisible());
            desk.tick("08:00:14");
            QCOMPARE(desk.avPlayer.currentTime.value(), u"00:12"_s);
            QCOMPARE(desk.log(), QStringList(u"A 08:00:00 - 08:00:1%1"_s.arg(byHand ? 2 : 3)));
        }
    }

    void holidayAndLog_showTheirControlsInEditModeOnly_data()
    {
        columns<QString, QString, QString, QColor>("screen", "icons", "lines", "color");
        QTest::newRow("a holiday is edited and selected")
            << u"Holiday"_s << u"Edit|Select|"_s << u"2024-10-01|2024-10-07"_s << Style::holidayColor;
        QTest::newRow("an entry of the log is selected")
            << u"History"_s << u"Select|"_s << u"2026-03-02 07:59:58|------"_s << Style::historyColor;
    }

    void holidayAndLog_showTheirControlsInEditModeOnly()
    {
        QFETCH(QString, screen);
        QFETCH(QString, icons);
        QFETCH(QString, lines);
        const QString title = u"<i>Week</i> of 'العربية' 🔔 "_s.repeated(20);
        MainWindow desk;
        desk.addHoliday(title);
        desk.historyStore.addHistory(title);
        desk.open();
        desk.chooseScreen(screen);
        QTRY_VERIFY(desk.card(title));
        Card *card = desk.card(title);
        QTEST(background(card), "color");
        QVERIFY(card->width() >= 240 && card->height() <= 100);
        for (const QString &shown : {QString(), icons, QString()}) {
            QTRY_COMPARE(contents(card).join(u'|'), title + u'|' + shown + lines);
            press(Qt::Key_E, Qt::ControlModifier);
        }
    }

    void holiday_isEditedFromItsCard()
    {
        MainWindow desk;
        desk.addHoliday(u"Spring"_s, u"2024-04-01"_s);
        desk.addHoliday(u"Autumn"_s);
        desk.openInEditMode();
        desk.chooseScreen(u"Holiday"_s);
        QTRY_VERIFY(desk.card(u"Autumn"_s));
        QVERIFY(click(desk.card(u"Autumn"_s), u"Edit"_s));
        const auto editor = desk.dialog<HolidayEdit>();
        QVERIFY(typeDigits(editor, u"Begin:"_s, u"20240101"_s));
        QVERIFY(click(editor, u"Modify"_s));
        QTRY_COMPARE(contents(desk.card(u"Autumn"_s)).at(3), u"2024-01-01"_s);
        QVERIFY(desk.card(u"Autumn"_s)->x() < desk.card(u"Spring"_s)->x());
    }

    void log_followsThePlaybacksWhileItIsShown()
    {
        MainWindow desk;
        desk.addPlan(u"Morning"_s);
        desk.open();
        desk.chooseScreen(u"History"_s);
        desk.tick("08:00:00");
        QTRY_VERIFY(desk.card(u"Morning"_s));
        QCOMPARE(contents(desk.card(u"Morning"_s)).last(), u"------"_s);
        desk.stage.sounding->stop();
        desk.tick("08:00:30");
        QTRY_COMPARE(contents(desk.card(u"Morning"_s)).last(), u"2026-03-02 08:00:30"_s);
    }
};

QTEST_MAIN(TestScreens)
#include "TestScreens.moc"
