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
        MainWindow window;
        Plan plan = window.addPlan(u"Bell"_s);
        window.open();
        QTRY_COMPARE(daysOn(window.card(u"Bell"_s)), u"Mon Tue Wed Thu Fri"_s);

        // Each change reaches the card that is there.
        plan.isLoop = isLoop;
        plan.week0 = true;
        plan.week3 = false;
        QVERIFY(window.planStore.updatePlan(plan));
        window.appStore.isEditMode = isEditMode;
        window.tick(isPlaying ? "08:00:00" : "08:00:01");
        const QString readouts = isPlaying ? u" 00:00 Progress 00:00"_s : QString();
        Card *card = window.card(u"Bell"_s);
        QTRY_COMPARE(contents(card).join(u' '),
                     u"Bell "_s + icons + u"08:00 - 09:30 "_s + weekdays + u" Bell.ogg"_s + readouts);
        QTRY_COMPARE(daysOn(card), u"Sun Mon Tue Thu Fri"_s);
        QCOMPARE(background(card), isPlaying ? Style::green : Style::planColor);
        QVERIFY(card->width() >= 240 && card->height() >= 100 && card->height() <= 140);
        QCOMPARE(card->height(), card->sizeHint().height());
    }

    void manualStart_takesOverFromWhatPlays()
    {
        MainWindow window;
        window.addPlan(u"A"_s);
        const Plan b = window.addPlan(u"B"_s, u"10:00"_s);
        window.openInEditMode();
        window.tick("08:00:00");
        window.players.playing->setCurrentTime(45);
        window.tick("08:00:45");
        for (int clicks = 0; clicks < 3; ++clicks)
            QVERIFY(click(window.card(u"B"_s), u"Play"_s));
        QCOMPARE(window.players.played.size(), 2);
        QCOMPARE(window.players.played.value(1), b.content);
        QCOMPARE(window.log(), (QStringList{u"A 08:00:00 - 08:00:45"_s, u"B 08:00:45 - "_s}));
        QTRY_COMPARE(background(window.card(u"B"_s)), Style::green);
        QCOMPARE(background(window.card(u"A"_s)), Style::planColor);
        // The readouts are those of A until the next tick.
        QCOMPARE(contents(window.card(u"B"_s)).mid(13), (QStringList{u"00:45"_s, u"Progress"_s, u"01:30"_s}));
        window.tick("08:00:46");
        QTRY_COMPARE(contents(window.card(u"B"_s)).mid(13),
                     (QStringList{u"00:00"_s, u"Progress"_s, u"01:30"_s}));
    }

    void playback_endsByHandAtOnce_byItselfWithTheNextTick()
    {
        for (const bool byHand : {true, false}) {
            MainWindow window;
            window.addPlan(u"A"_s);
            window.open();
            window.tick("08:00:00");
            window.players.playing->setCurrentTime(12);
            window.tick("08:00:12");
            QTRY_VERIFY(control(window.card(u"A"_s), u"Stop"_s));
            const auto *progress = window.card(u"A"_s)->findChild<LinearProgress *>();
            QCOMPARE(progress->value(), qRound(12 / 90.5 * progress->maximum()));
            if (byHand) {
                QVERIFY(click(window.card(u"A"_s), u"Stop"_s));
                QVERIFY(!window.players.playing);
            } else {
                window.players.playing->stop();
                window.tick("08:00:13");
            }
            QTRY_COMPARE(background(window.card(u"A"_s)), Style::planColor);
            QVERIFY(!control(window.card(u"A"_s), u"Stop"_s));
            QVERIFY(!progress->isVisible());
            window.tick("08:00:14");
            QCOMPARE(window.avPlayer.currentTime.value(), u"00:12"_s);
            QCOMPARE(window.log(), QStringList(u"A 08:00:00 - 08:00:1%1"_s.arg(byHand ? 2 : 3)));
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
        MainWindow window;
        window.addHoliday(title);
        window.historyStore.addHistory(title);
        window.open();
        window.chooseScreen(screen);
        QTRY_VERIFY(window.card(title));
        Card *card = window.card(title);
        QTEST(background(card), "color");
        QVERIFY(card->width() >= 240 && card->height() <= 100);
        for (const QString &shown : {QString(), icons, QString()}) {
            QTRY_COMPARE(contents(card).join(u'|'), title + u'|' + shown + lines);
            press(Qt::Key_E, Qt::ControlModifier);
        }
    }

    void holiday_isEditedFromItsCard()
    {
        MainWindow window;
        window.addHoliday(u"Spring"_s, u"2024-04-01"_s);
        window.addHoliday(u"Autumn"_s);
        window.openInEditMode();
        window.chooseScreen(u"Holiday"_s);
        QTRY_VERIFY(window.card(u"Autumn"_s));
        QVERIFY(click(window.card(u"Autumn"_s), u"Edit"_s));
        const auto editor = window.dialog<HolidayEdit>();
        QVERIFY(typeDigits(editor, u"Begin:"_s, u"20240101"_s));
        QVERIFY(click(editor, u"Modify"_s));
        QTRY_COMPARE(contents(window.card(u"Autumn"_s)).at(3), u"2024-01-01"_s);
        QVERIFY(window.card(u"Autumn"_s)->x() < window.card(u"Spring"_s)->x());
    }

    void log_followsThePlaybacksWhileItIsShown()
    {
        MainWindow window;
        window.addPlan(u"Morning"_s);
        window.open();
        window.chooseScreen(u"History"_s);
        window.tick("08:00:00");
        QTRY_VERIFY(window.card(u"Morning"_s));
        QCOMPARE(contents(window.card(u"Morning"_s)).last(), u"------"_s);
        window.players.playing->stop();
        window.tick("08:00:30");
        QTRY_COMPARE(contents(window.card(u"Morning"_s)).last(), u"2026-03-02 08:00:30"_s);
    }
};

QTEST_MAIN(TestScreens)
#include "TestScreens.moc"
