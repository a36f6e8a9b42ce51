#include "sound/SoundStream.h"

#include "sound/SoundServer.h"

#include <algorithm>
#include <pulse/context.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>
#include <utility>

namespace {

constexpr qint64 frameSize = sizeof(SoundFrame);
constexpr pa_sample_spec format = {PA_SAMPLE_S16NE, sampleRate, 2};

// The buffer on the server, in frames: it bridges the time in which the main thread is held. A prebuffer of
// one frame starts the playback at once.
constexpr auto targetLength = 5 * sampleRate;
constexpr auto minimumRequest = sampleRate / 10;
constexpr pa_buffer_attr wantedBuffer = {uint32_t(-1), targetLength *frameSize, frameSize,
                                         minimumRequest *frameSize, uint32_t(-1)};

// The device then buffers one request. Without this flag it would buffer nearly as much as the whole stream,
// and the sound would start late.
constexpr auto flags = PA_STREAM_EARLY_REQUESTS;

// Servers keep one volume, mute state and device for all programs of a role, and silence some roles: "music"
// during a call, "event" by the switch for system sounds. None does so with this one.
constexpr auto role = "alarm";

struct FreeProperties
{
    void operator()(pa_proplist *properties) const { pa_proplist_free(properties); }
};

// libpulse cannot disconnect a stream that the server has not confirmed yet.
void disconnectWhenReady(pa_stream *stream, void *)
{
    if (pa_stream_get_state(stream) == PA_STREAM_READY)
        pa_stream_disconnect(stream);
}

} // namespace

SoundStream::SoundStream(std::shared_ptr<SoundServer> soundServer) : server(std::move(soundServer))
{
    connect(server.get(), &SoundServer::connected, this, &SoundStream::open);
    connect(server.get(), &SoundServer::disconnected, this, &SoundStream::close);
    server->attach();
    open();
}

SoundStream::~SoundStream()
{
    // First: flush() runs callbacks of libpulse, which must not open another stream.
    finish();
    close();
    server->flush();
}

bool SoundStream::isOpen() const
{
    return stream && pa_stream_get_state(stream) == PA_STREAM_READY;
}

qint64 SoundStream::write(std::span<const SoundFrame> frames)
{
    if (!isOpen())
        return 0;
    const size_t room = pa_stream_writable_size(stream);
    const size_t count = room == size_t(-1) ? 0 : std::min(room / sizeof(SoundFrame), frames.size());
    if (count == 0 ||
        pa_stream_write(stream, frames.data(), count * frameSize, nullptr, 0, PA_SEEK_RELATIVE) < 0)
        return 0;
    return qint64(count);
}

void SoundStream::drain()
{
    if (!isOpen() || std::exchange(drained, true))
        return;
    if (pa_operation *operation = pa_stream_drain(stream, nullptr, nullptr))
        pa_operation_unref(operation);
}

void SoundStream::requestTimingUpdate()
{
    if (timingRequest.isValid() || !isOpen())
        return;
    if (pa_operation *operation = pa_stream_update_timing_info(stream, nullptr, nullptr)) {
        pa_operation_unref(operation);
        timingRequest.start();
    }
}

void SoundStream::finish()
{
    if (!std::exchange(finished, true))
        server->detach();
}

void SoundStream::reopen()
{
    close();
    open();
}

void SoundStream::open()
{
    if (!server->connection() || stream || finished)
        return;
    const std::unique_ptr<pa_proplist, FreeProperties> properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_MEDIA_ROLE, role);
    stream = pa_stream_new_with_proplist(server->connection(), "Belfry", &format, nullptr, properties.get());
    if (!stream)
        return server->fail();
    pa_stream_set_state_callback(
        stream, [](pa_stream *, void *self) { static_cast<SoundStream *>(self)->stateChanged(); }, this);
    pa_stream_set_write_callback(
        stream, [](pa_stream *, size_t, void *self) { Q_EMIT static_cast<SoundStream *>(self)->writable(); },
        this);
    pa_stream_set_latency_update_callback(
        stream, [](pa_stream *, void *self) { static_cast<SoundStream *>(self)->timingUpdated(); }, this);
    if (pa_stream_connect_playback(stream, nullptr, &wantedBuffer, flags, nullptr, nullptr) < 0)
        server->fail();
}

void SoundStream::close()
{
    if (!stream)
        return;
    pa_stream_set_state_callback(stream, disconnectWhenReady, nullptr);
    pa_stream_set_write_callback(stream, nullptr, nullptr);
    pa_stream_set_latency_update_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
    stream = nullptr;
    playedFrames = 0;
    drained = false;
    timingRequest.invalidate();
}

void SoundStream::stateChanged()
{
    const auto state = pa_stream_get_state(stream);
    if (!PA_STREAM_IS_GOOD(state))
        return server->fail();
    if (state == PA_STREAM_READY)
        Q_EMIT opened();
}

void SoundStream::timingUpdated()
{
    if (!timingRequest.isValid())
        return;
    const std::chrono::nanoseconds age(timingRequest.nsecsElapsed());
    timingRequest.invalidate();
    const pa_timing_info *timing = pa_stream_get_timing_info(stream);
    if (!timing || timing->read_index_corrupt)
        return;
    const qint64 played = timing->read_index / frameSize - qint64(timing->sink_usec) * sampleRate / 1000000;
    if (played <= playedFrames)
        return;
    playedFrames = played;
    server->reportPlayback();
    Q_EMIT progressed(playedFrames, age);
}
