#include "sound/PulseMainLoop.h"

#include "support/SteadyClock.h"

#include <QTest>

#include <pulse/mainloop-api.h>
#include <pulse/timeval.h>
#include <unistd.h>

using namespace std::chrono_literals;

static int calls = 0;

template<typename... Arguments>
static void count(Arguments...)
{
    ++calls;
}

class TestPulseMainLoop final : public QObject
{
    Q_OBJECT

private:
    PulseMainLoop loop;
    pa_mainloop_api *const api = loop.api();

    // How many callbacks come in that time.
    static int callsWithin(std::chrono::nanoseconds time)
    {
        calls = 0;
        skipped += time;
        for (int turn = 0; turn < 5; ++turn)
            QCoreApplication::processEvents();
        return calls;
    }

private Q_SLOTS:
    void timer_firesOnceWhenItIsDueAndNotPostponed()
    {
        bool isPostponed = false;
        loop.setTimersPostponed([&] { return isPostponed; });
        timeval due;
        pa_timeval_add(pa_gettimeofday(&due), 10 * PA_USEC_PER_SEC);
        pa_time_event *event = api->time_new(api, &due, count, nullptr);
        QCOMPARE(callsWithin(9s), 0);
        isPostponed = true;
        QCOMPARE(callsWithin(2s), 0);
        isPostponed = false;
        QCOMPARE(callsWithin(500ms), 1);
        QCOMPARE(callsWithin(10s), 0);
        api->time_restart(event, pa_gettimeofday(&due));
        api->time_free(event);
        QCOMPARE(callsWithin(10s), 0);
    }

    void deferredEvent_runsWhileItIsEnabled()
    {
        pa_defer_event *event = api->defer_new(api, count, nullptr);
        QCOMPARE_GT(callsWithin(0s), 0);
        api->defer_enable(event, 0);
        loop.runDeferred();
        QCOMPARE(callsWithin(0s), 0);
        api->defer_enable(event, 1);
        QCOMPARE_GT(callsWithin(0s), 0);
        calls = 0;
        loop.runDeferred();
        QCOMPARE(calls, 1);
        api->defer_set_destroy(event, count);
        api->defer_free(event);
        QCOMPARE(calls, 2);
        loop.runDeferred();
        QCOMPARE(calls, 2);
    }

    void socket_isWatchedForWhatIsEnabled()
    {
        int ends[2];
        QVERIFY(::pipe(ends) == 0 && ::write(ends[1], "x", 1) == 1);
        pa_io_event *in = api->io_new(api, ends[0], PA_IO_EVENT_NULL, count, nullptr);
        pa_io_event *out = api->io_new(api, ends[1], PA_IO_EVENT_INPUT, count, nullptr);
        QVERIFY(callsWithin(0s) == 0 && !loop.isWaitingToWrite());
        api->io_enable(in, PA_IO_EVENT_INPUT);
        QVERIFY(callsWithin(0s) > 0 && !loop.isWaitingToWrite());
        api->io_free(in);
        QCOMPARE(callsWithin(0s), 0);
        api->io_enable(out, PA_IO_EVENT_OUTPUT);
        QVERIFY(callsWithin(0s) > 0 && loop.isWaitingToWrite());
        api->io_free(out);
    }
};

QTEST_GUILESS_MAIN(TestPulseMainLoop)
#include "TestPulseMainLoop.moc"
