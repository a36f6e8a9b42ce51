#pragma once

#include "platform/AVAudioPlayer.h"

#include <QStringList>

/// A sound that plays for as long as the test wants. A path that holds "broken" cannot be opened.
class FakePlayer final : public AVAudioPlayer
{
public:
    /// What the fakes of one factory have in common, for the test to look at and to steer.
    struct Stage
    {
        QStringList played; ///< The paths played, in order.
        FakePlayer *sounding = nullptr;
        int failures = 0;
    };

    /// Makes fakes that note what they do on `stage`, which must outlive them.
    static AVAudioPlayerFactory factory(Stage &stage)
    {
        return [&stage](const QString &path, QString &error) -> std::unique_ptr<AVAudioPlayer> {
            if (path.isEmpty() || path.contains(QStringLiteral("broken"))) {
                ++stage.failures;
                error = QStringLiteral("no audio");
                return nullptr;
            }
            return std::make_unique<FakePlayer>(stage, path);
        };
    }

    FakePlayer(Stage &stage, const QString &path) : stage(stage), path(path) {}
    ~FakePlayer() override { stop(); }
    Q_DISABLE_COPY_MOVE(FakePlayer)

    bool isPlaying() const override { return stage.sounding == this; }
    double currentTime() const override { return position; }
    double duration() const override { return 90.5; }
    int numberOfLoops() const override { return loops; }
    bool play() override
    {
        stage.sounding = this;
        stage.played += path;
        return true;
    }
    void stop() override
    {
        if (isPlaying())
            stage.sounding = nullptr;
    }
    void setCurrentTime(double seconds) override { position = seconds; }
    void setNumberOfLoops(int count) override { loops = count; }
    void setDelegate(AVAudioPlayerDelegate * /*delegate*/) override {}

private:
    Stage &stage;
    QString path;
    double position = 0;
    int loops = 0;
};
