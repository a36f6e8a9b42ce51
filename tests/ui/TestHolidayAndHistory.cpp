#include "support/MainWindow.h"
#include "support/Table.h"
#include "toolkit/Style.h"
#include "ui/HolidayEdit.h"

#include <QLineEdit>

using namespace Qt::StringLiterals;

class TestHolidayAndHistory final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cards_showTheirControlsInEditModeOnly_data()
    {
        columns<QString, QString, QString, QColor>("screen", "icons", "lines", "color");
        QTest::newRow("a holiday is edited and selected")
            << u"Holiday"_s << u"Edit|Select|"_s << u"2024-10-01|2024-10-07"_s << Style::holidayColor;
        QTest::newRow("an entry of the log is selected")
            << u"History"_s << u"Select|"_s << u"2026-03-02 07:59:58|------"_s << Style::historyColor;
    }

    void cards_showTheirControlsInEditModeOnly()
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
        QCOMPARE(contents(card).join(u'|'), title + u'|' + lines);
        QTEST(background(card), "color");
        QVERIFY(card->width() >= 240 && card->height() <= 100);
        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(contents(card).join(u'|'), title + u'|' + icons + lines);
        press(Qt::Key_E, Qt::ControlModifier);
        QTRY_COMPARE(contents(card).join(u'|'), title + u'|' + lines);
    }

    void holiday_isEditedFromItsCard()
    {
        MainWindow desk;
        desk.addHoliday(u"Spring"_s, u"2024-04-01"_s);
        const Holiday holiday = desk.addHoliday(u"Autumn"_s);
        desk.holidayStore.toggleChecked(holiday);
        desk.openInEditMode();
        desk.chooseScreen(u"Holiday"_s);
        QTRY_VERIFY(desk.card(u"Autumn"_s));
        QVERIFY(click(desk.card(u"Autumn"_s), u"Edit"_s));
        const QPointer editor = desk.dialog<HolidayEdit>();
        QVERIFY(editor);
        QCOMPARE(control<QLineEdit>(editor, u"Title:"_s)->text(), u"Autumn"_s);
        QVERIFY(type(editor, u"Title:"_s, u"New Year's Day"_s));
        QVERIFY(typeDigits(editor, u"Begin:"_s, u"20240101"_s));
        QVERIFY(click(editor, u"Modify"_s));
        QTRY_VERIFY(desk.card(u"New Year's Day"_s));
        Card *card = desk.card(u"New Year's Day"_s);
        QCOMPARE(contents(card).mid(3), (QStringList{u"2024-01-01"_s, u"2024-10-07"_s}));
        QVERIFY(control<QAbstractButton>(card, u"Select"_s)->isChecked());
        QVERIFY(card->x() < desk.card(u"Spring"_s)->x());
        QCOMPARE(desk.base.rows(u"select title from holiday where id = '%1'"_s.arg(holiday.id)),
                 QStringList(u"New Year's Day"_s));
    }

    void log_followsThePlaybacksWhileItIsShown()
    {
        MainWindow desk;
        desk.addPlan(u"Morning"_s);
        desk.addPlan(u"Later"_s, u"08:05"_s);
        desk.historyStore.addHistory(u"Yesterday"_s);
        desk.open();
        desk.chooseScreen(u"History"_s);
        desk.base.run(u"update history set begin = '2026-03-01 08:00:00'"_s);
        desk.tick("08:00:00");
        QTRY_VERIFY(desk.card(u"Morning"_s));
        Card *morning = desk.card(u"Morning"_s);
        QCOMPARE(contents(morning).last(), u"------"_s);
        desk.stage.sounding->stop();
        desk.tick("08:00:30");
        QTRY_COMPARE(contents(morning).last(), u"2026-03-02 08:00:30"_s);
        desk.tick("08:05:00");
        QTRY_VERIFY(desk.card(u"Later"_s));
        QCOMPARE(desk.card(u"Morning"_s), morning);
        QVERIFY(desk.card(u"Later"_s)->x() < morning->x());
    }
};

QTEST_MAIN(TestHolidayAndHistory)
#include "TestHolidayAndHistory.moc"
