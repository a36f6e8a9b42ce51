// The installed program when it is killed and when its display stops.

#include "support/BelfryProcess.h"

#include <QRandomGenerator>
#include <QThread>

#include <map>

using namespace Qt::StringLiterals;

class TestFaults final : public QObject
{
    Q_OBJECT

private:
    const QString sound = QStringLiteral(BELFRY_INSTALLED "/share/belfry/chime.wav");

private Q_SLOTS:
    void killedAtAnyMoment_keepsWhatItAcknowledged()
    {
        QStringList lines{u"click|Edit"_s};
        lines << u"click|Add Plan"_s << u"type|Title:|New"_s << u"type|Music:|"_s + sound << u"click|Add"_s
              << u"see|New"_s;
        lines << u"click|Edit|New"_s << u"type|Title:|Renamed"_s << u"click|Modify"_s << u"see|Renamed"_s;
        lines << u"click|Play|Renamed"_s;
        lines << u"click|Select|Sample chime"_s << u"click|Delete"_s << u"click|Delete"_s
              << u"click|Add Plan"_s;
        // What is stored by the time that so many lines have been executed.
        const std::map<qsizetype, QStringList> stored{
            {0, {u"Sample chime"_s}},
            {6, {u"Sample chime"_s, u"New"_s}},
            {10, {u"Sample chime"_s, u"Renamed"_s}},
            {11, {u"Sample chime"_s, u"Renamed"_s, u"played Renamed"_s}},
            {15, {u"Renamed"_s, u"played Renamed"_s}}};
        for (int round = 0; round < 6; ++round) {
            BelfryProcess belfry;
            belfry.launch();
            belfry.tell(lines);
            const auto last = round == 0 ? 0 : QRandomGenerator::global()->bounded(lines.size() + 1);
            const auto isReached = [&] {
                return QFile::exists(belfry.documents) && belfry.executed.size() >= last;
            };
            QVERIFY2(QTest::qWaitFor(isReached, 60000),
                     (belfry.executed.join(QString()).toUtf8() + belfry.readAllStandardError()).constData());
            QThread::usleep(QRandomGenerator::global()->bounded(30'000));
            belfry.crash();
            const auto next = stored.upper_bound(belfry.executed.size());
            belfry.launch();
            QVERIFY(belfry.work({u"click|Edit"_s}));
            const QStringList found =
                rowsIn(belfry.database,
                       u"select title from plan union all select 'played ' || title from history"_s);
            QVERIFY2(found == std::prev(next)->second || (next != stored.end() && found == next->second),
                     qPrintable(found.join(u',') + u" after "_s + belfry.executed.join(QString())));
        }
    }

    void stoppedDisplay_doesNotStopTheClock()
    {
        QProcess display;
        const auto end = qScopeGuard([&display] {
            ::kill(pid_t(display.processId()), SIGCONT);
            display.kill();
            display.waitForFinished();
        });
        display.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s});
        QVERIFY(display.waitForReadyRead());
        BelfryProcess belfry;
        belfry.makeBell(sound);
        belfry.set("QT_QPA_PLATFORM", u"xcb"_s);
        belfry.set("DISPLAY", u':' + QString::fromLatin1(display.readAll().trimmed()));
        belfry.setClock(u"07:59:00"_s);
        belfry.launch();
        QVERIFY(belfry.work({u"see|Bell"_s}));
        belfry.setClock(u"07:59:56"_s);
        QVERIFY(belfry.work({u"see|07:59:57"_s}));
        ::kill(pid_t(display.processId()), SIGSTOP);
        QTRY_COMPARE_WITH_TIMEOUT(rowsIn(belfry.database, u"select begin from history"_s),
                                  QStringList{u"2026-03-02 08:00:00"_s}, 20000);
        ::kill(pid_t(display.processId()), SIGCONT);
        QVERIFY(belfry.endsCleanly());
    }
};

QTEST_GUILESS_MAIN(TestFaults)
#include "TestFaults.moc"
