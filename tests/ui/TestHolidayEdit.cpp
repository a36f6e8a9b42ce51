#include "store/HolidayStore.h"
#include "ui/HolidayEdit.h"

#include "support/Controls.h"
#include "support/EditorDesk.h"
#include "support/Table.h"

#include <QAbstractSpinBox>
#include <QCalendarWidget>
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
        const QPointer alert = desk.editor->findChild<QMessageBox *>();
        QVERIFY(alert);
        QCOMPARE(alert->informativeText(), u"Please input the Title"_s);
        QVERIFY(click(alert, u"OK"_s));
        QTRY_VERIFY(!alert);
        QVERIFY(type(desk.editor, u"Title:"_s, u" "_s));
        desk.clock.advance(86'400'000);
        QVERIFY(click(desk.editor, u"Add"_s));
        QTRY_VERIFY(!desk.editor);
        const Holiday stored = desk.store.holidays->value(0);
        QVERIFY(!stored.id.isEmpty());
        const Holiday expected{false, stored.id, u" "_s, u"2026-03-29"_s, u"2026-03-29"_s};
        QCOMPARE(stored, expected);
    }

    void existingHoliday_isChangedInPlace()
    {
        Desk desk;
        desk.editStored(autumn());
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
        columns<QString, QString, QString, QString, QString>("locale", "stored", "shown", "keys", "date");
        const auto row = [](const char *name, const char *locale, const char *shown, const char *keys,
                            const char *date = "2026-05-03", const char *stored = "2024-10-31") {
            QTest::newRow(name) << QString::fromUtf8(locale) << QString::fromUtf8(stored)
                                << QString::fromUtf8(shown) << QString::fromUtf8(keys)
                                << QString::fromUtf8(date);
        };
        row("no locale", "C", "2024-10-31", "20260503");
        row("no locale, with dashes", "C", "2024-10-31", "2026-05-03");
        row("German digits", "de_DE", "31.10.2024", "03052026");
        row("German with dots", "de_DE", "31.10.2024", "3.5.2026");
        row("German with a short year", "de_DE", "31.10.2024", "03.05.26");
        row("American", "en_US", "10/31/2024", "5/3/2026");
        row("Chinese with a short year", "zh_CN", "2024/10/31", "26/05/03");
        row("Arabic, with its own digits", "ar_EG", "٣١/١٠/٢٠٢٤", "٠٣٠٥٢٠٢٦");
        row("nothing, Arabic", "ar_EG", "٣١/١٠/٢٠٢٤", "", "2024-10-31");
        row("nothing, in the first year", "de_DE", "01.01.0001", "", "0001-01-01", "0001-01-01");
        row("nothing, in the last year", "de_DE", "31.12.9999", "", "9999-12-31", "9999-12-31");
        row("nothing, over an unreadable day", "de_DE", "29.03.2026", "", "2026-03-29", "2024-02-30");
    }

    void date_isTyped()
    {
        QFETCH(QString, locale);
        QFETCH(QString, stored);
        QFETCH(QString, keys);
        QLocale::setDefault(QLocale(locale));
        Holiday holiday = autumn();
        holiday.begin = stored;
        Desk desk;
        desk.editStored(holiday);
        QTEST(field(desk, u"Begin:"_s)->text(), "shown");
        QVERIFY(typeDigits(desk.editor, u"Begin:"_s, keys));
        QVERIFY(click(desk.editor, u"Modify"_s));
        QTEST(desk.store.holidays->first().begin, "date");
    }

    void calendar_opensByKeyAndSetsTheDay()
    {
        Desk desk;
        desk.editStored(autumn());
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
