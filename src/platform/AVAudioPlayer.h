#pragma once

#include <QString>

#include <functional>
#include <memory>

class AVAudioPlayer;

/// Hears that a playback has come to its end.
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
/// It plays on its own, in time with the clock on the wall whether or not a sound server is there to
/// make it heard. Destroying it ends its sound. No call waits for a sound server or throws.
class AVAudioPlayer
{
public:
    virtual ~AVAudioPlayer() = default;

    /// True from play() until stop() or the end of the last repetition.
    virtual bool isPlaying() const = 0;

    /// The position in the file in seconds, 0 … duration(). At the end of a playback it is 0 again.
    virtual double currentTime() const = 0;

    /// The length of the file in seconds. An estimate of the file's own until it has been decoded once.
    virtual double duration() const = 0;

    /// How often the file is repeated after its first play; negative: endlessly. 0 at creation.
    virtual int numberOfLoops() const = 0;

    /// Starts at currentTime(), or goes on. Returns false when nothing can be played.
    virtual bool play() = 0;

    /// Ends the sound at once and keeps the position.
    virtual void stop() = 0;

    /// Goes to a position in seconds, clamped to 0 … duration(), playing or not.
    virtual void setCurrentTime(double seconds) = 0;

    virtual void setNumberOfLoops(int loops) = 0;

    /// Who is told of the end; not owned, may be null.
    virtual void setDelegate(AVAudioPlayerDelegate *delegate) = 0;
};

/// Makes a player for the file at a path. On failure returns null and describes it in `error`.
using AVAudioPlayerFactory =
    std::function<std::unique_ptr<AVAudioPlayer>(const QString &path, QString &error)>;
