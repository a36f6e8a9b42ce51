#include "sound/SoundStream.h"

#include "sound/SoundServer.h"

#include <algorithm>
#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>
#include <utility>

namespace {

constexpr qint64 frameSize = sizeof(SoundFrame);
constexpr pa_sample_spec format = {PA_SAMPLE_S16NE, sampleRate, 2};

// The buffer on the server, in frames, so that the sound goes on while this thread is held. The first frame
// starts the playback.
constexpr auto targetLength = 5 * sampleRate;
constexpr auto minimumRequest = sampleRate / 10;
constexpr pa_buffer_attr wantedBuffer = {uint32_t(-1), targetLength *frameSize, frameSize,
                                         minimumRequest *frameSize, uint32_t(-1)};

// With this flag the server mixes no more in advance than one request, however large the buffer is. Without
// it the sound would start late.
constexpr auto flags = PA_STREAM_EARLY_REQUESTS;

// Servers keep one volume, mute switch and device for all programs of a role, and let some roles be silenced
// by others ("music" by a call, "event" by the switch for system sounds). This one has no such rules.
constexpr auto role = "alarm";

// An answer that took longer, in ms, was read late and says nothing about now.
constexpr qint64 maxTimingAge = 100;

struct FreeProperties
{
    void operator()(pa_proplist *properties) const { pa_proplist_free(properties); }
};

// A stream that the server is just making cannot be disconnected yet.
void disconnectWhenReady(pa_stream *stream, void *)
{
    if (pa_stream_get_state(stream) == PA_STREAM_READY)
        pa_stream_disconnect(stream);
}

void discard(pa_operation *operation)
{
    if (operation)
        pa_operation_unref(operation);
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
    // First, for what flush() calls may lead back here.
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
    if (!std::exchange(started, true))
        startPlayback();
    return qint64(count);
}

void SoundStream::drain()
{
    if (isOpen() && !std::exchange(drained, true))
        discard(pa_stream_drain(stream, nullptr, nullptr));
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
        return server->fail(QString::fromUtf8(pa_strerror(pa_context_errno(server->connection()))));
    pa_stream_set_state_callback(
        stream, [](pa_stream *, void *self) { static_cast<SoundStream *>(self)->stateChanged(); }, this);
    pa_stream_set_write_callback(
        stream, [](pa_stream *, size_t, void *self) { Q_EMIT static_cast<SoundStream *>(self)->writable(); },
        this);
    pa_stream_set_latency_update_callback(
        stream, [](pa_stream *, void *self) { static_cast<SoundStream *>(self)->timingUpdated(); }, this);
    if (pa_stream_connect_playback(stream, nullptr, &wantedBuffer, flags, nullptr, nullptr) < 0)
        server->fail(QString::fromUtf8(pa_strerror(pa_context_errno(server->connection()))));
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
    started = drained = false;
    timingRequest.invalidate();
}

// A server that has granted another buffer than was asked for may wait for more before it begins.
void SoundStream::startPlayback()
{
    const pa_buffer_attr *granted = pa_stream_get_buffer_attr(stream);
    if (granted && granted->prebuf > frameSize)
        discard(pa_stream_trigger(stream, nullptr, nullptr));
}

void SoundStream::stateChanged()
{
    const auto state = pa_stream_get_state(stream);
    if (!PA_STREAM_IS_GOOD(state))
        return server->fail(QString::fromUtf8(pa_strerror(pa_context_errno(pa_stream_get_context(stream)))));
    if (state == PA_STREAM_READY)
        Q_EMIT opened();
}

void SoundStream::timingUpdated()
{
    if (!timingRequest.isValid())
        return;
    const bool isRecent = timingRequest.elapsed() <= maxTimingAge;
    timingRequest.invalidate();
    const pa_timing_info *timing = pa_stream_get_timing_info(stream);
    if (!timing || timing->read_index_corrupt)
        return;
    const qint64 played = timing->read_index / frameSize - qint64(timing->sink_usec) * sampleRate / 1000000;
    if (played <= playedFrames)
        return startPlayback();
    playedFrames = played;
    server->reportPlayback();
    if (isRecent)
        Q_EMIT progressed(playedFrames);
}
