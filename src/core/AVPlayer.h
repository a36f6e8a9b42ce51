#pragma once

#include "platform/AVAudioPlayer.h"
#include "platform/ObservableObject.h"
#include "platform/Resources.h"

#include <memory>

/// The one audio player of the program: loads an audio file, plays it once or repeatedly, and publishes
/// position and duration for the screens.
///
/// It only loads and starts. Its callers stop and rewind the platform player that it publishes, and the
/// scheduler updates position and duration during playback; afterwards they keep their last values.
class AVPlayer final : public ObservableObject, private AVAudioPlayerDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AVPlayer)

public:
    /// `factory` makes the platform players and must outlive this; `resources` is searched for what is no
    /// path.
    AVPlayer(AVAudioPlayerFactory &factory, Resources resources, QObject *parent = nullptr);

    /// The platform player of the last successful play(), kept after its playback ends; null before the
    /// first.
    Published<std::shared_ptr<AVAudioPlayer>> player{this};

    Published<double> current{this, 0.0};  ///< Position in seconds.
    Published<double> duration{this, 0.0}; ///< Length in seconds.
    Published<QString> currentTime{this, QStringLiteral("00:00")};
    Published<QString> durationTime{this, QStringLiteral("00:00")};

    /// Plays the file at `path`, or else the resource of that name: once, or 101 times if `isLoop`. The
    /// previous playback ends. If the file cannot be opened, the reason is printed on standard output and
    /// the previous playback goes on.
    void play(const QString &path, bool isLoop);

private:
    void audioPlayerDidFinishPlaying(AVAudioPlayer &player, bool successfully) override;

    AVAudioPlayerFactory &factory;
    const Resources resources;
};
