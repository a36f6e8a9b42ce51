#include "platform/SoundStream.h"

#include "platform/SoundServer.h"

#include <algorithm>
#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/operation.h>
#include <pulse/stream.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 frameSize = sizeof(SoundFrame);
constexpr pa_sample_spec format = {PA_SAMPLE_S16NE, soundFrameRate, 2};

// What the server is to keep, in frames. The first sound starts it; it fetches more in small steps,
// since those also settle how much it mixes in advance and therefore how promptly it starts.
constexpr auto kept = 5 * soundFrameRate;
constexpr auto step = soundFrameRate / 10;
constexpr pa_buffer_attr buffering = {uint32_t(-1), kept *frameSize, frameSize, step *frameSize,
                                      uint32_t(-1)};

// An answer that took longer, in ms, was read late and says nothing about now.
constexpr qint64 promptAnswer = 100;

// A stream that the server is just making cannot be disconnected yet.
void disconnectWhenReady(pa_stream *stream, void *)
{
    if (pa_stream_get_state(stream) == PA_STREAM_READY)
        pa_stream_disconnect(stream);
}

} // namespace

SoundStream::SoundStream(std::shared_ptr<SoundServer> soundServer) : server(std::move(soundServer))
{
    connect(server.get(), &SoundServer::connected, this, &SoundStream::open);
    connect(server.get(), &SoundServer::lost, this, &SoundStream::close);
    server->attach();
    open();
}

SoundStream::~SoundStream()
{
    close();
    server->flush();
    finish();
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

void SoundStream::askProgress()
{
    if (asked.isValid() || !isOpen())
        return;
    if (pa_operation *operation = pa_stream_update_timing_info(stream, nullptr, nullptr)) {
        pa_operation_unref(operation);
        asked.start();
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
    stream = pa_stream_new(server->connection(), "Belfry", &format, nullptr);
    if (!stream)
        return server->fail(QString::fromUtf8(pa_strerror(pa_context_errno(server->connection()))));
    pa_stream_set_state_callback(
        stream, [](pa_stream *, void *self) { static_cast<SoundStream *>(self)->stateChanged(); }, this);
    pa_stream_set_latency_update_callback(
        stream, [](pa_stream *, void *self) { static_cast<SoundStream *>(self)->progressReported(); }, this);
    if (pa_stream_connect_playback(stream, nullptr, &buffering, PA_STREAM_EARLY_REQUESTS, nullptr, nullptr) <
        0)
        server->fail(QString::fromUtf8(pa_strerror(pa_context_errno(server->connection()))));
}

void SoundStream::close()
{
    if (!stream)
        return;
    pa_stream_set_state_callback(stream, disconnectWhenReady, nullptr);
    pa_stream_set_latency_update_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
    stream = nullptr;
    heard = 0;
    drained = false;
    asked.invalidate();
}

void SoundStream::stateChanged()
{
    const auto state = pa_stream_get_state(stream);
    if (!PA_STREAM_IS_GOOD(state))
        return server->fail(QString::fromUtf8(pa_strerror(pa_context_errno(pa_stream_get_context(stream)))));
    server->noteLife(false);
    if (state == PA_STREAM_READY)
        Q_EMIT opened();
}

void SoundStream::progressReported()
{
    if (!asked.isValid())
        return;
    const bool isPrompt = asked.elapsed() <= promptAnswer;
    asked.invalidate();
    const pa_timing_info *timing = pa_stream_get_timing_info(stream);
    if (!timing || timing->read_index_corrupt)
        return;
    const qint64 played =
        timing->read_index / frameSize - qint64(timing->sink_usec) * soundFrameRate / 1000000;
    if (played <= heard)
        return;
    heard = played;
    server->noteLife(true);
    if (isPrompt)
        Q_EMIT moved(heard);
}
