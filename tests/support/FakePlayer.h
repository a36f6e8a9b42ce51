#pragma once

#include "platform/AVAudioPlayer.h"

#include <QStringList>

/// A player that plays for as long as the test wants.
class FakePlayer final : public AVAudioPlayer
{
public:
    /// Makes fakes, and records what they do. A path that contains "broken" cannot be opened.
    struct Stage final : AVAudioPlayerFactory
    {
        std::unique_ptr<AVAudioPlayer> makePlayer(const QString &path, QString &error) override
        {
            if (!path.isEmpty() && !path.contains(QStringLiteral("broken")))
                return std::make_unique<FakePlayer>(*this, path);
            ++failures;
            error = QStringLiteral("no audio");
            return nullptr;
        }

        QStringList played; ///< The paths played, in order.
        FakePlayer *sounding = nullptr;
        int failures = 0;
    };

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
