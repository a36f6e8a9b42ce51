#include "store/HolidayStore.h"
#include "ui/HolidayEdit.h"

#include "support/Controls.h"
#include "support/EditorDesk.h"

#include <QAbstractSpinBox>
#include <QCalendarWidget>
#include <QLineEdit>
#include <QMessageBox>

using namespace Qt::StringLiterals;

namespace {

Holiday autumn()
{
    return {.id = u"4F7C2A10-0000-4000-8000-000000000001"_s,
            .title = u"New Year's Day"_s,
            .begin = u"2024-10-01"_s,
            .end = u"2024-10-07"_s};
}

using Desk = EditorDesk<HolidayEdit, HolidayStore>;

void modify(Desk &desk, const Holiday &holiday)
{
    QVERIFY(desk.store.addHoliday(holiday));
    desk.edit(holiday);
}

QAbstractSpinBox *field(const Desk &desk, const QString &name)
{
    return control<QAbstractSpinBox>(desk.editor, name);
}

} // namespace

class TestHolidayEdit final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void newHoliday_isTodayAndNeedsATitle()
    {
        Desk desk;
        desk.edit();
        QVERIFY(click(desk.editor, u"Add"_s));
        QPointer alert = desk.editor->findChild<QMessageBox *>();
        QVERIFY(alert);
        QCOMPARE(alert->windowTitle(), u"Tip"_s);
        QCOMPARE(alert->informativeText(), u"Please input the Title"_s);
        QVERIFY(click(alert, u"OK"_s));
        QTRY_VERIFY(!alert);
        QVERIFY(type(desk.editor, u"Title:"_s, u" "_s));
        desk.clock.advance(86'400'000);
        QVERIFY(click(desk.editor, u"Add"_s));
        QTRY_VERIFY(!desk.editor);
        const Holiday stored = desk.store.holidays->value(0);
        QCOMPARE(QStringList({stored.title, stored.begin, stored.end}),
                 QStringList({u" "_s, u"2026-03-29"_s, u"2026-03-29"_s}));
        QCOMPARE(stored.id.size(), 36);
        QCOMPARE(stored.id, stored.id.toUpper());
    }

    void existingHoliday_isChangedInPlace()
    {
        Desk desk;
        modify(desk, autumn());
        field(desk, u"End:"_s)->setFocus(Qt::TabFocusReason);
        QTest::keyClick(field(desk, u"End:"_s), Qt::Key_Down);
        QTest::keyClick(field(desk, u"End:"_s), Qt::Key_Enter);
        QTRY_VERIFY(!desk.editor);
        Holiday changed = autumn();
        changed.end = u"2023-10-07"_s;
        QCOMPARE(desk.store.holidays.value(), QList{changed});
    }

    void date_isTyped_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("date");
        const auto row = [](const char *name, const char *locale, const char *stored, const char *shown,
                            const char *keys, const char *date) {
            QTest::newRow(name) << QString::fromLatin1(locale) << QString::fromLatin1(stored)
                                << QString::fromUtf8(shown) << QString::fromUtf8(keys)
                                << QString::fromLatin1(date);
        };
        row("no locale", "C", "2024-10-31", "2024-10-31", "20260503", "2026-05-03");
        row("no locale, with dashes", "C", "2024-10-31", "2024-10-31", "2026-05-03", "2026-05-03");
        row("German digits", "de_DE", "2024-10-31", "31.10.2024", "03052026", "2026-05-03");
        row("German with dots", "de_DE", "2024-10-31", "31.10.2024", "3.5.2026", "2026-05-03");
        row("German with a short year", "de_DE", "2024-10-31", "31.10.2024", "03.05.26", "2026-05-03");
        row("American", "en_US", "2024-10-31", "10/31/2024", "5/3/2026", "2026-05-03");
        row("American, all digits", "en_US", "2024-10-31", "10/31/2024", "05/03/2026", "2026-05-03");
        row("Chinese", "zh_CN", "2024-10-31", "2024/10/31", "2026/5/3", "2026-05-03");
        row("Chinese with a short year", "zh_CN", "2024-10-31", "2024/10/31", "26/05/03", "2026-05-03");
        row("Arabic, with its own digits", "ar_EG", "2024-10-31", "٣١/١٠/٢٠٢٤", "٠٣٠٥٢٠٢٦", "2026-05-03");
        row("nothing, Arabic", "ar_EG", "2024-10-31", "٣١/١٠/٢٠٢٤", "", "2024-10-31");
        row("nothing, in the first year", "de_DE", "0001-01-01", "01.01.0001", "", "0001-01-01");
        row("nothing, in the last year", "de_DE", "9999-12-31", "31.12.9999", "", "9999-12-31");
        row("nothing, over an unreadable day", "de_DE", "2024-02-30", "29.03.2026", "", "2026-03-29");
    }

    void date_isTyped()
    {
        QFETCH(QString, locale);
        QFETCH(QString, keys);
        QLocale::setDefault(QLocale(locale));
        Holiday holiday = autumn();
        QFETCH(QString, stored);
        holiday.begin = stored;
        Desk desk;
        modify(desk, holiday);
        QTEST(field(desk, u"Begin:"_s)->text(), "shown");
        field(desk, u"Begin:"_s)->setFocus(Qt::TabFocusReason);
        typeKeys(field(desk, u"Begin:"_s), keys);
        QVERIFY(click(desk.editor, u"Modify"_s));
        QTEST(desk.store.holidays->first().begin, "date");
    }

    void date_isTypedWhereTheMouseWent()
    {
        Desk desk;
        modify(desk, autumn());
        auto *line = field(desk, u"Begin:"_s)->findChild<QLineEdit *>();
        const int month = line->fontMetrics().horizontalAdvance(u"2024-1"_s);
        QTest::mouseClick(line, Qt::LeftButton, {}, {month, line->height() / 2});
        QTest::keyClicks(field(desk, u"Begin:"_s), u"0228"_s);
        QVERIFY(click(desk.editor, u"Modify"_s));
        QCOMPARE(desk.store.holidays->first().begin, u"2024-02-28"_s);
    }

    void calendar_opensByKeyAndSetsTheDay()
    {
        Desk desk;
        modify(desk, autumn());
        field(desk, u"Begin:"_s)->setFocus();
        QTest::keyClick(field(desk, u"Begin:"_s), Qt::Key_F4);
        QVERIFY(QApplication::activePopupWidget());
        auto *calendar = QApplication::activePopupWidget()->findChild<QCalendarWidget *>();
        QTest::keyClick(calendar->focusProxy() ? calendar->focusProxy() : calendar->focusWidget(),
                        Qt::Key_Right);
        QTest::keyClick(calendar->focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(!QApplication::activePopupWidget());
        QVERIFY(click(desk.editor, u"Modify"_s));
        QCOMPARE(desk.store.holidays->first().begin, u"2024-10-02"_s);
    }
};

QTEST_MAIN(TestHolidayEdit)
#include "TestHolidayEdit.moc"
