#include "support/MainWindow.h"
#include "toolkit/Group.h"
#include "toolkit/LinearProgress.h"
#include "toolkit/Style.h"

using namespace Qt::StringLiterals;

namespace {

// What a card shows, in reading order: its texts, those that are off in brackets, and the names of its icons.
QString contents(const Card *card)
{
    QStringList shown;
    for (const QWidget *widget : card->findChild<Group *>()->findChildren<QWidget *>()) {
        const auto *label = qobject_cast<const QLabel *>(widget);
        const QString text = label && !label->text().isEmpty() ? label->text() : widget->accessibleName();
        if (widget->isVisible() && !text.isEmpty())
            shown << (widget->isEnabled() ? text : u'(' + text + u')');
    }
    return shown.join(u'|');
}

QColor background(Card *card)
{
    return card->grab().toImage().pixelColor(card->width() / 2, 2);
}

} // namespace

class TestScreens final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plan_showsItselfAndTheControlsOfTheMode()
    {
        MainWindow window;
        Plan plan = window.addPlan(u"Bell"_s);
        window.open();
        Card *card = window.card(u"Bell"_s);
        QCOMPARE(contents(card), u"Bell|08:00 - 09:30|(Sun)|Mon|Tue|Wed|Thu|Fri|(Sat)|Bell.ogg"_s);
        plan.isLoop = plan.week0 = true;
        plan.week3 = false;
        QVERIFY(window.planStore.updatePlan(plan));
        const QString texts = u"08:00 - 09:30|Sun|Mon|Tue|(Wed)|Thu|Fri|(Sat)|Bell.ogg"_s;
        QTRY_COMPARE(contents(card), u"Bell|Repeat|"_s + texts);
        const auto hasItsHeight = [card] {
            return card->height() == card->sizeHint().height() && card->height() >= 100;
        };
        QVERIFY(card->width() >= 240 && card->height() <= 140 && hasItsHeight());
        QCOMPARE(background(card), Style::planColor);
        window.tick("08:00:00");
        QTRY_COMPARE(contents(card), u"Bell|Repeat|Stop|"_s + texts + u"|00:00|Progress|00:00"_s);
        QCOMPARE(background(card), Style::green);
        QVERIFY(card->height() <= 140 && hasItsHeight());
        window.appStore.isEditMode = true;
        QTRY_COMPARE(contents(card), u"Bell|Repeat|Edit|Stop|Select|"_s + texts + u"|00:00|Progress|00:00"_s);
        window.players.playing->stop();
        window.tick("08:00:31");
        QTRY_COMPARE(contents(card), u"Bell|Repeat|Edit|Play|Select|"_s + texts);
        QCOMPARE(background(card), Style::planColor);
        QFont large = window.view.font();
        large.setPointSize(24);
        window.view.setFont(large);
        QTRY_VERIFY(card->height() > 140 && hasItsHeight());
    }

    void manualStart_takesOverFromWhatPlays_untilTheManualStop()
    {
        MainWindow window;
        window.addPlan(u"A"_s);
        const Plan b = window.addPlan(u"B"_s, u"10:00"_s);
        window.open(true);
        window.tick("08:00:00");
        window.players.playing->setCurrentTime(45);
        window.tick("08:00:45");
        for (int clicks = 0; clicks < 3; ++clicks)
            QVERIFY(click(window.card(u"B"_s), u"Play"_s));
        QCOMPARE(window.players.played.size(), 2);
        QCOMPARE(window.players.played.last(), b.content);
        QTRY_COMPARE(background(window.card(u"B"_s)), Style::green);
        QCOMPARE(background(window.card(u"A"_s)), Style::planColor);
        // The position is that of A until the next tick.
        QVERIFY(contents(window.card(u"B"_s)).endsWith(u"|00:45|Progress|01:30"_s));
        window.players.playing->setCurrentTime(12);
        window.tick("08:00:57");
        QTRY_VERIFY(contents(window.card(u"B"_s)).endsWith(u"|00:12|Progress|01:30"_s));
        const auto *progress = window.card(u"B"_s)->findChild<LinearProgress *>();
        QCOMPARE(progress->value(), qRound(12 / 90.5 * progress->maximum()));
        QVERIFY(click(window.card(u"B"_s), u"Stop"_s));
        QVERIFY(!window.players.playing);
        QCOMPARE(window.avPlayer.player.value()->currentTime(), 12.0);
        QTRY_COMPARE(background(window.card(u"B"_s)), Style::planColor);
        QCOMPARE(window.log(), (QStringList{u"A 08:00:00 - 08:00:45"_s, u"B 08:00:45 - 08:00:57"_s}));
        window.clock.advance(86'400'000);
        QVERIFY(click(window.card(u"B"_s), u"Play"_s));
        QCOMPARE(window.log(), QStringList{u"B 08:00:57 - "_s}); // a start deletes those of earlier days
    }

    void holidayAndHistory_showTheirControlsInEditModeOnly()
    {
        const QString title = u"<i>Week</i> of 'العربية' 🔔 "_s.repeated(20);
        MainWindow window;
        window.addHoliday(title);
        window.historyStore.addHistory(title);
        window.open();
        const struct
        {
            QString screen, controls, lines;
            QColor color;
        } cases[]{
            {u"Holiday"_s, u"Edit|Select|"_s, u"2024-10-01|2024-10-07"_s, Style::holidayColor},
            {u"History"_s, u"Select|"_s, u"2026-03-02 07:59:58|------"_s, Style::historyColor},
        };
        for (const auto &[screen, controls, lines, color] : cases) {
            window.chooseScreen(screen);
            QTRY_VERIFY(window.card(title));
            Card *card = window.card(title);
            QCOMPARE(background(card), color);
            QVERIFY(card->width() >= 240 && card->height() <= 100);
            for (const bool isEditMode : {false, true, false}) {
                window.appStore.isEditMode = isEditMode;
                QTRY_COMPARE(contents(card), title + u'|' + (isEditMode ? controls : QString()) + lines);
            }
        }
        window.historyStore.finishHistory();
        QTRY_VERIFY(contents(window.card(title)).endsWith(u"|2026-03-02 07:59:58|2026-03-02 07:59:58"_s));
    }
};

QTEST_MAIN(TestScreens)
#include "TestScreens.moc"
