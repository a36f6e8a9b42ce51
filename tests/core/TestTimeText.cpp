#include "core/TimeText.h"

#include "support/SetClock.h"
#include "support/Table.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class TestTimeText final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formatDate_isThePaddedLocalText()
    {
        const QDateTime moment(QDate(2026, 3, 9), QTime(7, 5, 9, 999));
        QCOMPARE(TimeText::formatDate(moment, TimeText::timestampPattern), u"2026-03-09 07:05:09"_s);
        QCOMPARE(TimeText::formatDate(moment, TimeText::minutePattern), u"07:05"_s);
        QCOMPARE(TimeText::formatDate(moment.toUTC(), TimeText::secondPattern), u"07:05:09"_s);
    }

    void texts_surviveOtherLocales_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::newRow("Arabic digits") << QLocale(QLocale::Arabic, QLocale::Egypt);
        QTest::newRow("twelve hours") << QLocale(QLocale::English, QLocale::UnitedStates);
    }
    void texts_surviveOtherLocales()
    {
        QFETCH(QLocale, locale);
        QLocale::setDefault(locale);
        const QDateTime moment(QDate(2026, 3, 9), QTime(19, 5));
        const QString text = TimeText::formatDate(moment, TimeText::timestampPattern);
        QCOMPARE(text, u"2026-03-09 19:05:00"_s);
        QCOMPARE(TimeText::toDate(text, TimeText::timestampPattern, SetClock("2000-01-01 00:00:00")), moment);
        QCOMPARE(TimeText::formatDuration(61), u"01:01"_s);
        QLocale::setDefault(QLocale::c());
    }

    void toDate_readsWhatFits_andElseIsNow_data()
    {
        columns<QString, QDateTime>("text", "moment");
        const QDateTime now(QDate(2026, 3, 9), QTime(12, 0));
        QTest::newRow("a joined plan time")
            << u"2026-03-09 07:30:00"_s << QDateTime(QDate(2026, 3, 9), QTime(7, 30));
        QTest::newRow("a holiday") << u"2024-02-29 00:00:00"_s << QDateTime(QDate(2024, 2, 29), QTime(0, 0));
        QTest::newRow("a time that summer time skips")
            << u"2026-03-29 02:30:00"_s << QDateTime(QDate(2026, 3, 29), QTime(3, 30));
        QTest::newRow("no such day") << u"2026-02-30 00:00:00"_s << now;
        QTest::newRow("edited by hand") << u"2026-03-09 7.30:00"_s << now;
        QTest::newRow("empty") << QString() << now;
    }
    void toDate_readsWhatFits_andElseIsNow()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, moment);
        QCOMPARE(TimeText::toDate(text, TimeText::timestampPattern, SetClock("2026-03-09 12:00:00")), moment);
    }

    void currentWeekday_countsFromSunday()
    {
        SetClock clock("2026-03-01 00:00:00");
        for (int day = 0; day < 8; ++day, clock.advance(24 * 3600 * 1000))
            QCOMPARE(TimeText::currentWeekday(clock), day % 7);
    }

    void formatDuration_data()
    {
        columns<double, QString>("seconds", "text");
        QTest::newRow("nothing") << 0.0 << u"00:00"_s;
        QTest::newRow("the fraction is cut off") << 59.9 << u"00:59"_s;
        QTest::newRow("a minute") << 60.0 << u"01:00"_s;
        QTest::newRow("no hours") << 3600.0 << u"60:00"_s;
        QTest::newRow("three digits") << 7530.0 << u"125:30"_s;
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << u"00:00"_s;
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << u"00:00"_s;
        QTest::newRow("too long") << 1e19 << u"00:00"_s;
    }
    void formatDuration()
    {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        QCOMPARE(TimeText::formatDuration(seconds), text);
    }
};

QTEST_GUILESS_MAIN(TestTimeText)
#include "TestTimeText.moc"
