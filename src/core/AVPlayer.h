#pragma once

#include "platform/AVAudioPlayer.h"
#include "platform/ObservableObject.h"
#include "platform/Resources.h"

#include <memory>

/// The one audio player of the system: loads a file, starts it once or repeated, and publishes the
/// position and length for the screens.
///
/// It only loads and starts. Its callers stop and rewind the platform player that it publishes, and the
/// scheduler writes the readouts while something plays; they keep their last values afterwards.
class AVPlayer final : public ObservableObject, private AVAudioPlayerDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AVPlayer)

public:
    /// `factory` makes the platform players; `resources` is where a name that is no path is looked up.
    AVPlayer(AVAudioPlayerFactory &factory, Resources resources, QObject *parent = nullptr);

    /// The platform player of the last play() that succeeded, kept after its playback has ended.
    Published<std::shared_ptr<AVAudioPlayer>> player{this};

    Published<double> current{this, 0.0};  ///< Position in seconds.
    Published<double> duration{this, 0.0}; ///< Length in seconds.
    Published<QString> currentTime{this, QStringLiteral("00:00")};
    Published<QString> durationTime{this, QStringLiteral("00:00")};

    /// Plays the file at `path`, or else the resource of that name, once or (`isLoop`) 101 times. What
    /// played before ends. A file that cannot be played costs a line on standard output that says why,
    /// and nothing else: what played before plays on.
    void play(const QString &path, bool isLoop);

private:
    void audioPlayerDidFinishPlaying(AVAudioPlayer &player, bool successfully) override;

    AVAudioPlayerFactory &factory;
    const Resources resources;
};
