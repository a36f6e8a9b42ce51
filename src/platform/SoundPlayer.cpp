#include "platform/SoundPlayer.h"

#include "platform/SoundServer.h"
#include "platform/SoundStream.h"

#include <algorithm>
#include <chrono>
#include <cmath>

using namespace std::chrono_literals;

namespace {

constexpr qint64 ahead = qint64(4) * soundFrameRate;
// A server that is there within this time gets the sound from its beginning: nothing of the attack is lost.
constexpr qint64 mostLateness = soundFrameRate / 2;
// A server that is farther away than this from where it should be was held up, and starts afresh.
constexpr qint64 mostDeviation = soundFrameRate;

constexpr auto usualTurn = 500ms;
constexpr auto firstTurns = 50ms;
// The server's count of what has been heard is a little uncertain: the last sound gets time to fade.
constexpr auto release = 1s;

} // namespace

std::unique_ptr<SoundPlayer> SoundPlayer::create(const QString &path, std::shared_ptr<SoundServer> server,
                                                 QString &error)
{
    auto file = SoundFile::open(path, error);
    if (!file)
        return nullptr;
    return std::unique_ptr<SoundPlayer>(new SoundPlayer(std::move(file), std::move(server)));
}

SoundPlayer::SoundPlayer(std::unique_ptr<SoundFile> file, std::shared_ptr<SoundServer> server)
    : server(std::move(server))
    , buffer(std::move(file))
{
    turnTimer.setSingleShot(true);
    turnTimer.setTimerType(Qt::PreciseTimer);
    connect(&turnTimer, &QTimer::timeout, this, &SoundPlayer::turn);
}

SoundPlayer::~SoundPlayer() = default;

bool SoundPlayer::isPlaying() const
{
    return active && !isOver();
}

double SoundPlayer::currentTime() const
{
    if (!active)
        return position;
    return isOver() ? 0 : buffer.position(frame());
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
    active = true;
    markedFrame = 0;
    sinceMark.invalidate();
    stream = std::make_unique<SoundStream>(server);
    connect(stream.get(), &SoundStream::opened, this, &SoundPlayer::streamOpened);
    connect(stream.get(), &SoundStream::moved, this, &SoundPlayer::streamMoved);
    turnTimer.start(0);
    return true;
}

void SoundPlayer::stop()
{
    position = currentTime();
    active = false;
    stream.reset();
    turnTimer.stop();
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

qint64 SoundPlayer::frame() const
{
    return sinceMark.isValid() ? markedFrame + sinceMark.nsecsElapsed() / 1000 * soundFrameRate / 1000000
                               : markedFrame;
}

bool SoundPlayer::isOver() const
{
    return frame() >= buffer.playbackEnd();
}

void SoundPlayer::setFrame(qint64 now)
{
    markedFrame = now;
    sinceMark.start();
}

void SoundPlayer::turn()
{
    if (!active)
        return stream.reset();
    if (buffer.decodedEnd() < frame() + ahead)
        buffer.decode();
    // Time begins to run here and not in play(), after which the caller may have been busy for long.
    if (!sinceMark.isValid() && (buffer.decodedEnd() > 0 || buffer.isComplete()))
        setFrame(0);
    if (isOver())
        return finish();
    feed();
    stream->askProgress();
    scheduleTurn();
}

void SoundPlayer::scheduleTurn()
{
    using std::chrono::milliseconds;
    const qint64 now = frame();
    milliseconds next = stream->isOpen() && !streamHasMoved ? firstTurns : usualTurn;
    if (!buffer.isComplete() && buffer.decodedEnd() < now + ahead)
        next = 0ms;
    const qint64 left = buffer.playbackEnd() - now;
    turnTimer.start(std::min(next, milliseconds(std::min(left, ahead) * 1000 / soundFrameRate + 1)));
}

void SoundPlayer::feed()
{
    sent += stream->write(buffer.from(sent));
    if (buffer.isComplete() && sent >= buffer.decodedEnd())
        stream->drain();
    const qint64 now = frame();
    // The server has run dry while this thread was held: what it gets now is late.
    if (stream->isOpen() && sent < now && now < buffer.decodedEnd())
        stream->reopen();
    buffer.dropBefore((stream->isOpen() ? std::min(now, sent) : now) - mostLateness);
}

void SoundPlayer::streamOpened()
{
    if (sinceMark.isValid() && markedFrame == 0 && frame() < mostLateness)
        setFrame(0);
    streamBegin = sent = frame();
    streamHasMoved = false;
    // What may end in a release of the stream must not happen here, in the middle of libpulse.
    feed();
    turnTimer.start(0);
}

void SoundPlayer::streamMoved(qint64 frames)
{
    const qint64 heard = streamBegin + frames;
    if (std::exchange(streamHasMoved, true) && std::abs(heard - frame()) > mostDeviation)
        return stream->reopen();
    setFrame(heard);
}

void SoundPlayer::finish()
{
    active = false;
    position = 0;
    stream->finish();
    turnTimer.start(release);
    if (delegate)
        delegate->audioPlayerDidFinishPlaying(*this, !buffer.isDamaged());
}

AVAudioPlayerFactory soundPlayerFactory(std::shared_ptr<SoundServer> server)
{
    return [server = std::move(server)](const QString &path, QString &error) {
        return SoundPlayer::create(path, server, error);
    };
}
