// The least that a sound can be late by, which Belfry is compared with: bare libpulse, the stream open and
// corked, the sound already handed over, and uncorked at a second of every minute.
//
//     SoundFloor SECOND          plays two seconds of a tone in that second of each minute, until it is ended

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <pulse/error.h>
#include <pulse/stream.h>
#include <pulse/thread-mainloop.h>

namespace {

constexpr pa_sample_spec format = {PA_SAMPLE_S16NE, 48000, 1};
constexpr uint32_t unset = ~uint32_t(0);

std::array<int16_t, 2 * 48000> tone()
{
    std::array<int16_t, 2 * 48000> samples{};
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = i / 54 % 2 == 0 ? 12000 : -12000;
    return samples;
}

[[noreturn]] void fail(pa_context *context)
{
    std::fprintf(stderr, "SoundFloor: %s\n", pa_strerror(pa_context_errno(context)));
    std::exit(EXIT_FAILURE);
}

void sleepUntil(time_t moment)
{
    const timespec until{moment, 0};
    while (clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &until, nullptr) != 0) {
    }
}

// Waits until the object, a context or a stream, is ready. The loop is locked.
template<typename Object, typename State>
void await(pa_threaded_mainloop *loop, pa_context *context, Object *object, State state(const Object *),
           State ready)
{
    while (state(object) != ready) {
        if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)))
            fail(context);
        pa_threaded_mainloop_wait(loop);
    }
}

pa_stream *openCorked(pa_threaded_mainloop *loop, pa_context *context)
{
    static const auto samples = tone();
    // All of it is with the server before the second, which fetches it in steps of 0.1 s, as with Belfry.
    const pa_buffer_attr buffering = {unset, sizeof samples, 0, 48000 / 10 * sizeof samples[0], unset};
    pa_stream *stream = pa_stream_new(context, "floor", &format, nullptr);
    pa_stream_set_state_callback(
        stream,
        [](pa_stream *, void *l) { pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop *>(l), 0); },
        loop);
    pa_stream_connect_playback(stream, nullptr, &buffering, PA_STREAM_START_CORKED, nullptr, nullptr);
    await(loop, context, stream, pa_stream_get_state, PA_STREAM_READY);
    if (pa_stream_write(stream, samples.data(), sizeof samples, nullptr, 0, PA_SEEK_RELATIVE) < 0)
        fail(context);
    return stream;
}

} // namespace

int main(int argc, char *argv[])
{
    const time_t second = argc > 1 ? std::atoi(argv[1]) : 0;
    pa_threaded_mainloop *loop = pa_threaded_mainloop_new();
    pa_context *context = pa_context_new(pa_threaded_mainloop_get_api(loop), "floor");
    pa_context_set_state_callback(
        context,
        [](pa_context *, void *l) { pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop *>(l), 0); },
        loop);
    pa_threaded_mainloop_lock(loop);
    pa_context_connect(context, nullptr, PA_CONTEXT_NOFLAGS, nullptr);
    pa_threaded_mainloop_start(loop);
    await(loop, context, context, pa_context_get_state, PA_CONTEXT_READY);
    for (;;) {
        const time_t now = std::time(nullptr) + 5; // by when the stream is open
        const time_t begin = now - now % 60 + second + (now % 60 > second ? 60 : 0);
        pa_stream *stream = openCorked(loop, context);
        pa_threaded_mainloop_unlock(loop);
        sleepUntil(begin);
        pa_threaded_mainloop_lock(loop);
        pa_operation_unref(pa_stream_cork(stream, 0, nullptr, nullptr));
        pa_threaded_mainloop_unlock(loop);
        sleepUntil(begin + 4);
        pa_threaded_mainloop_lock(loop);
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
}
