#include "core/TimeText.h"

#include "support/FakeClock.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class TestTimeText final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsAreLocalTime_andWhatIsNoTextIsNow()
    {
        const FakeClock now("2026-03-09 12:00:00");
        const auto read = [&now](const QString &text) {
            return TimeText::toDate(text, TimeText::timestampPattern, now).toString(Qt::ISODate);
        };
        const QDateTime moment(QDate(2026, 3, 9), QTime(19, 5, 9));
        QCOMPARE(TimeText::formatDate(moment.toUTC(), TimeText::timestampPattern), u"2026-03-09 19:05:09"_s);
        QCOMPARE(read(u"2024-02-29 07:30:00"_s), u"2024-02-29T07:30:00"_s);
        QCOMPARE(read(u"2026-03-29 02:30:00"_s), u"2026-03-29T03:30:00"_s); // skipped by summer time
        QCOMPARE(read(u"2026-03-09 7.30:00"_s), u"2026-03-09T12:00:00"_s);
    }

    void formatDuration_truncatesFractionsAndKnowsNoHours()
    {
        const double unknown = std::numeric_limits<double>::quiet_NaN();
        QStringList texts;
        for (const double seconds : {0.0, 59.9, 60.0, 7530.0, unknown, 9223372036854775808.0})
            texts << TimeText::formatDuration(seconds);
        QCOMPARE(texts.join(u' '), u"00:00 00:59 01:00 125:30 00:00 00:00"_s);
    }
};

QTEST_GUILESS_MAIN(TestTimeText)
#include "TestTimeText.moc"
