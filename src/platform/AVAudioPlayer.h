#pragma once

#include <QObject>
#include <QString>

#include <memory>

class AVAudioPlayer;

/// Is told when a playback ends.
class AVAudioPlayerDelegate
{
public:
    virtual ~AVAudioPlayerDelegate() = default;

    /// The playback of `player` has ended by itself: `successfully` is false when its file could not be
    /// decoded to the end.
    virtual void audioPlayerDidFinishPlaying(AVAudioPlayer &player, bool successfully) = 0;
};

/// The platform audio player: one sound file, played once or repeated.
///
/// It plays in real time, whether or not there is a sound server to make it audible. Destroying it ends its
/// sound. No call waits for a sound server or throws.
class AVAudioPlayer
{
public:
    virtual ~AVAudioPlayer() = default;

    /// True from play() until stop() or the end of the last repetition.
    virtual bool isPlaying() const = 0;

    /// The position in the file in seconds, 0 … duration(). At the end of a playback it is 0 again.
    virtual double currentTime() const = 0;

    /// The length of the file in seconds: what the file says, until it has been decoded once.
    virtual double duration() const = 0;

    /// How many times the file is repeated after its first play; negative: endlessly. 0 at creation.
    virtual int numberOfLoops() const = 0;

    /// Starts at currentTime(); has no effect while it plays. Returns false when nothing can be played.
    virtual bool play() = 0;

    /// Ends the sound at once and keeps the position.
    virtual void stop() = 0;

    /// Goes to a position in seconds, clamped to 0 … duration(), playing or not.
    virtual void setCurrentTime(double seconds) = 0;

    virtual void setNumberOfLoops(int loops) = 0;

    /// The object that is told of the end; not owned, may be null.
    virtual void setDelegate(AVAudioPlayerDelegate *delegate) = 0;
};

/// Makes players.
class AVAudioPlayerFactory
{
public:
    virtual ~AVAudioPlayerFactory() = default;

    /// A player for the file at `path`, or null with the reason in `error`.
    virtual std::unique_ptr<AVAudioPlayer> makePlayer(const QString &path, QString &error) = 0;
};

Q_DECLARE_INTERFACE(AVAudioPlayerFactory, "AVAudioPlayerFactory")
