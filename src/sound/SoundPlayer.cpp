#include "sound/SoundPlayer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr qint64 decodeAhead = qint64(4) * sampleRate;

// How long the timeline waits at its start for a server, so that the sound is heard from its beginning,
constexpr auto maxStartLatency = 500ms;
// and for the device of a server that is connected.
constexpr auto maxWakeTime = 10s;
// In frames: an output that deviates more from the timeline is opened again.
constexpr qint64 maxDrift = sampleRate;

// An answer that took longer was read late and says nothing about now.
constexpr auto maxTimingAge = 100ms;

constexpr auto pollInterval = 500ms;
constexpr auto startupPollInterval = 50ms;
// The server's playback position is a little uncertain: the output stays open for a while after the end.
constexpr auto closeDelay = 1s;

} // namespace

SoundPlayer::SoundPlayer(std::unique_ptr<SoundFile> file, AudioOutputFactory makeOutput)
    : makeOutput(std::move(makeOutput))
    , buffer(std::move(file))
{
    processTimer.setSingleShot(true);
    processTimer.setTimerType(Qt::PreciseTimer);
    connect(&processTimer, &QTimer::timeout, this, &SoundPlayer::process);
}

SoundPlayer::~SoundPlayer() = default;

bool SoundPlayer::isPlaying() const
{
    return (state == State::Starting || state == State::Playing) && playhead() < buffer.playbackEnd();
}

double SoundPlayer::currentTime() const
{
    if (state == State::Stopped || state == State::Finished)
        return position;
    return isPlaying() ? buffer.position(playhead()) : 0;
}

double SoundPlayer::duration() const
{
    return buffer.duration();
}

int SoundPlayer::numberOfLoops() const
{
    return loops;
}

bool SoundPlayer::play()
{
    if (isPlaying())
        return true;
    stop();
    if (!buffer.start(position, loops))
        return false;
    state = State::Starting;
    anchorFrame = writeFrame = 0;
    anchorTimer.invalidate();
    openOutput();
    processTimer.start(0);
    return true;
}

void SoundPlayer::stop()
{
    position = currentTime();
    state = State::Stopped;
    output.reset();
    processTimer.stop();
}

void SoundPlayer::setCurrentTime(double seconds)
{
    const bool goesOn = isPlaying();
    stop();
    position = std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, duration());
    if (goesOn)
        play();
}

void SoundPlayer::setNumberOfLoops(int newLoops)
{
    loops = newLoops;
    if (isPlaying())
        setCurrentTime(currentTime());
}

void SoundPlayer::setDelegate(AVAudioPlayerDelegate *newDelegate)
{
    delegate = newDelegate;
}

qint64 SoundPlayer::playhead() const
{
    return state == State::Playing ? anchorFrame + anchorTimer.nsecsElapsed() / 1000 * sampleRate / 1000000
                                   : 0;
}

void SoundPlayer::syncTimeline(qint64 frame)
{
    state = State::Playing;
    anchorFrame = frame;
    anchorTimer.start();
}

void SoundPlayer::openOutput()
{
    output = makeOutput();
    connect(output.get(), &AudioOutput::opened, this, &SoundPlayer::outputOpened);
    connect(output.get(), &AudioOutput::writable, this, &SoundPlayer::feed);
    connect(output.get(), &AudioOutput::progressed, this, &SoundPlayer::outputProgressed);
}

void SoundPlayer::process()
{
    if (state == State::Finished)
        return output.reset();
    if (buffer.decodedEnd() < playhead() + decodeAhead)
        buffer.decode();
    if (state == State::Starting)
        awaitStart();
    if (!isPlaying())
        return finish();
    feed();
    // The device has stopped, or the server's buffer ran empty while this thread was held.
    if (output->isOpen() && writeFrame + maxDrift < playhead())
        output->reopen();
    output->requestTimingUpdate();
    scheduleProcess();
}

void SoundPlayer::awaitStart()
{
    if (!anchorTimer.isValid()) {
        // The timeout starts here, not in play(), after which the main thread may have been held.
        if (buffer.decodedEnd() > 0)
            anchorTimer.start();
    } else if (std::chrono::milliseconds(anchorTimer.elapsed()) >=
               (output->isConnected() ? maxWakeTime : maxStartLatency)) {
        state = State::Playing;
    }
}

void SoundPlayer::scheduleProcess()
{
    using std::chrono::milliseconds;
    const qint64 frame = playhead();
    const bool isWaiting = state == State::Starting || (output->isOpen() && !hasProgressed);
    milliseconds next = isWaiting ? startupPollInterval : pollInterval;
    if (!buffer.isComplete() && buffer.decodedEnd() < frame + decodeAhead)
        next = 0ms;
    if (state == State::Playing) {
        const qint64 left = std::min(buffer.playbackEnd() - frame, decodeAhead);
        next = std::min(next, milliseconds(left * 1000 / sampleRate + 1));
    }
    processTimer.start(next);
}

// Also called by signals of the output, which must not be reopened then.
void SoundPlayer::feed()
{
    writeFrame += output->write(buffer.from(writeFrame));
    if (buffer.isComplete() && writeFrame >= buffer.decodedEnd())
        output->drain();
    buffer.dropBefore(output->isOpen() ? std::min(playhead(), playedFrame) : playhead());
}

void SoundPlayer::outputOpened()
{
    if (state != State::Starting && state != State::Playing)
        return;
    outputStartFrame = writeFrame = playedFrame = playhead();
    hasProgressed = false;
    feed();
    processTimer.start(0);
}

void SoundPlayer::outputProgressed(qint64 frames, std::chrono::nanoseconds age)
{
    if ((state != State::Starting && state != State::Playing) || age > maxTimingAge)
        return;
    playedFrame = outputStartFrame + frames;
    const bool isFirst = !std::exchange(hasProgressed, true);
    if (isFirst || std::abs(playedFrame - playhead()) <= maxDrift)
        syncTimeline(playedFrame);
    else
        QMetaObject::invokeMethod(output.get(), &AudioOutput::reopen, Qt::QueuedConnection);
}

void SoundPlayer::finish()
{
    state = State::Finished;
    position = 0;
    output->finish();
    processTimer.start(closeDelay);
    if (delegate)
        delegate->audioPlayerDidFinishPlaying(*this, !buffer.isDamaged());
}
