#include "sound/SoundBuffer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int piece = sampleRate / 5;
constexpr qint64 endless = std::numeric_limits<qint64>::max();
constexpr double largestEstimate = 1e18;
constexpr qint64 leastDropped = sampleRate / 2;

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
    return std::max(decodedEnd(), qint64(std::min(estimate, largestEstimate)));
}

double SoundBuffer::position(qint64 frame) const
{
    const double seconds = startedAt + double(frame) / sampleRate;
    const double duration = file->duration();
    if (file->hasExactDuration() && seconds > duration && repeats != 0)
        return duration > 0 ? std::fmod(seconds, duration) : 0;
    return std::min(seconds, duration);
}

bool SoundBuffer::start(double seconds, int loops)
{
    frames.clear();
    begin = 0;
    startedAt = seconds;
    repeats = repeatsLeft = loops;
    // Nothing may lie behind the position, which is no damage; behind the beginning it is.
    passHasSound = seconds > 0;
    complete = damaged = !file->seek(seconds);
    if (!complete)
        decode();
    return !damaged || !frames.empty();
}

void SoundBuffer::decode()
{
    if (complete)
        return;
    const auto before = frames.size();
    const auto status = file->read(frames, piece);
    passHasSound = passHasSound || frames.size() > before;
    if (status == SoundFile::Status::Damaged)
        giveUp();
    else if (status == SoundFile::Status::Ended)
        nextPass();
}

void SoundBuffer::dropBefore(qint64 frame)
{
    const qint64 count = std::min(frame, decodedEnd()) - begin;
    if (count < leastDropped)
        return;
    frames.erase(frames.begin(), frames.begin() + count);
    begin += count;
}

void SoundBuffer::nextPass()
{
    if (repeatsLeft == 0) {
        file->finish(frames);
        complete = true;
    } else if (!passHasSound || !file->rewind()) {
        giveUp();
    } else {
        repeatsLeft -= repeatsLeft > 0 ? 1 : 0;
        passHasSound = false;
    }
}

void SoundBuffer::giveUp()
{
    file->finish(frames);
    complete = damaged = true;
}
