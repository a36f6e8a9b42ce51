#pragma once

#include "platform/AVAudioPlayer.h"
#include "sound/AudioOutput.h"
#include "sound/SoundBuffer.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

/// The platform audio player: decodes a file and has an output play it.
///
/// The timeline of the playback follows the position that the output reports, and the steady clock while
/// there is no server, or one that does not answer: the sound comes back in sync when a server does. A device
/// that needs a while to wake is waited for, so that the sound is heard from its beginning. Four seconds are
/// decoded and given to the output in advance.
class SoundPlayer final : public QObject, public AVAudioPlayer
{
    Q_DISABLE_COPY_MOVE(SoundPlayer)

public:
    /// Plays `file`. `makeOutput` is called at each start of a playback.
    SoundPlayer(std::unique_ptr<SoundFile> file, AudioOutputFactory makeOutput);
    ~SoundPlayer() override;

    bool isPlaying() const override;
    double currentTime() const override;
    double duration() const override;
    int numberOfLoops() const override;
    bool play() override;
    void stop() override;
    void setCurrentTime(double seconds) override;

    /// While it plays, the count begins again.
    void setNumberOfLoops(int newLoops) override;

    void setDelegate(AVAudioPlayerDelegate *newDelegate) override;

private:
    enum class State {
        Stopped,
        Starting, // waiting for the output: the timeline stands at 0
        Playing,
        Finished, // the output is still open
    };

    qint64 playhead() const;
    void syncTimeline(qint64 frame);
    void openOutput();
    void process();
    void awaitStart();
    void scheduleProcess();
    void feed();
    void outputOpened();
    void outputProgressed(qint64 frames, std::chrono::nanoseconds age);
    void finish();

    AudioOutputFactory makeOutput;
    SoundBuffer buffer;
    std::unique_ptr<AudioOutput> output;
    AVAudioPlayerDelegate *delegate = nullptr;
    QTimer processTimer;
    State state = State::Stopped;
    int loops = 0;
    double position = 0; // in seconds, where the next playback begins

    // The timeline while Playing: `anchorFrame` was being heard when `anchorTimer` started. While Starting
    // `anchorTimer` measures the wait; if that times out, the time waited counts as played.
    qint64 anchorFrame = 0;
    QElapsedTimer anchorTimer;

    qint64 outputStartFrame = 0; // the first frame that the output was given
    qint64 writeFrame = 0;       // the next one to give it
    qint64 playedFrame = 0;      // the frame that it last reported
    bool hasProgressed = false;  // since it opened
};
