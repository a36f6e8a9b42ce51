#pragma once

#include "platform/AVAudioPlayer.h"
#include "platform/SoundBuffer.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

class SoundServer;
class SoundStream;

/// The platform audio player: decodes a file and has the sound server play it.
///
/// The time line of the playback is its own. It follows what the server says has been heard, and goes on
/// by the steady clock when there is no server, or one that does not answer: the sound comes back in step
/// when a server does. Four seconds of sound are always decoded and given to the server in advance.
class SoundPlayer final : public QObject, public AVAudioPlayer
{
    Q_DISABLE_COPY_MOVE(SoundPlayer)

public:
    /// A player for the file at `path`, or null with the reason in `error`.
    static std::unique_ptr<SoundPlayer> create(const QString &path, std::shared_ptr<SoundServer> server,
                                               QString &error);

    ~SoundPlayer() override;

    bool isPlaying() const override;
    double currentTime() const override;
    double duration() const override;
    int numberOfLoops() const override;
    bool play() override;
    void stop() override;
    void setCurrentTime(double seconds) override;

    /// While it plays, the count begins anew.
    void setNumberOfLoops(int newLoops) override;

    void setDelegate(AVAudioPlayerDelegate *newDelegate) override;

private:
    SoundPlayer(std::unique_ptr<SoundFile> file, std::shared_ptr<SoundServer> server);

    qint64 frame() const;
    bool isOver() const;
    void setFrame(qint64 now);
    void turn();
    void scheduleTurn();
    void feed();
    void streamOpened();
    void streamMoved(qint64 frames);
    void finish();

    std::shared_ptr<SoundServer> server;
    SoundBuffer buffer;
    std::unique_ptr<SoundStream> stream;
    AVAudioPlayerDelegate *delegate = nullptr;
    QTimer turnTimer;
    int loops = 0;
    double position = 0; // in seconds, where the next playback begins
    bool active = false;

    // The time line: `markedFrame` was being heard when `sinceMark` started; before that, time stands still.
    qint64 markedFrame = 0;
    QElapsedTimer sinceMark;

    qint64 streamBegin = 0; // the frame that the stream began with
    qint64 sent = 0;        // the frame that it is to be given next
    bool streamHasMoved = false;
};

/// Makes players that share the connection to the sound server.
AVAudioPlayerFactory soundPlayerFactory(std::shared_ptr<SoundServer> server);
