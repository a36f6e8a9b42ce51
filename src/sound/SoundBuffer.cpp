#include "sound/SoundBuffer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int chunkFrames = sampleRate / 5;
constexpr qint64 endless = std::numeric_limits<qint64>::max();
constexpr double maxEstimate = 1e18; // fits a qint64
// Each trim moves all that remains.
constexpr qint64 minTrim = sampleRate / 2;

} // namespace

SoundBuffer::SoundBuffer(std::unique_ptr<SoundFile> file) : file(std::move(file)) {}

std::span<const SoundFrame> SoundBuffer::from(qint64 first) const
{
    if (first < begin || first >= decodedEnd())
        return {};
    return std::span(frames).subspan(size_t(first - begin));
}

qint64 SoundBuffer::playbackEnd() const
{
    if (complete)
        return decodedEnd();
    if (repeats < 0)
        return endless;
    const double estimate = (file->duration() * (double(repeats) + 1) - startedAt) * sampleRate;
    return std::max(decodedEnd(), qint64(std::min(estimate, maxEstimate)));
}

double SoundBuffer::position(qint64 frame) const
{
    const double seconds = startedAt + double(frame) / sampleRate;
    const double duration = file->duration();
    if (file->hasExactDuration() && seconds > duration)
        return duration > 0 ? std::fmod(seconds, duration) : 0;
    return std::min(seconds, duration);
}

bool SoundBuffer::start(double seconds, int loops)
{
    frames.clear();
    begin = 0;
    startedAt = seconds;
    repeats = repeatsLeft = loops;
    // A file without audio is damaged, but after a position in its middle there may be none.
    loopHasAudio = seconds > 0;
    complete = damaged = false;
    if (file->seek(seconds))
        decode();
    else
        fail();
    return !damaged || !frames.empty();
}

void SoundBuffer::decode()
{
    if (complete)
        return;
    const auto before = frames.size();
    const auto status = file->read(frames, chunkFrames);
    loopHasAudio = loopHasAudio || frames.size() > before;
    if (status == SoundFile::Status::Damaged)
        fail();
    else if (status == SoundFile::Status::Ended)
        startNextLoop();
}

void SoundBuffer::dropBefore(qint64 frame)
{
    const qint64 count = std::min(frame, decodedEnd()) - begin;
    if (count < minTrim)
        return;
    frames.erase(frames.begin(), frames.begin() + count);
    begin += count;
}

void SoundBuffer::startNextLoop()
{
    if (repeatsLeft == 0) {
        file->flush(frames);
        complete = true;
    } else if (!loopHasAudio || !file->rewind()) {
        fail();
    } else {
        repeatsLeft -= repeatsLeft > 0 ? 1 : 0;
        loopHasAudio = false;
    }
}

void SoundBuffer::fail()
{
    complete = damaged = true;
}
