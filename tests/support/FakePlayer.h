#pragma once

#include "platform/AVAudioPlayer.h"

#include <QStringList>

/// Makes fake players, and records what they do. A path that contains "broken" cannot be opened.
class FakePlayerFactory final : public AVAudioPlayerFactory
{
public:
    std::unique_ptr<AVAudioPlayer> makePlayer(const QString &path, QString &error) override;

    QStringList played;               ///< The paths played, in order.
    AVAudioPlayer *playing = nullptr; ///< The player that plays now; null when none does.
};

/// A player that plays until it is stopped or another one plays. Its file is 90.5 seconds long.
class FakePlayer final : public AVAudioPlayer
{
    Q_DISABLE_COPY_MOVE(FakePlayer)

public:
    FakePlayer(FakePlayerFactory &factory, const QString &path) : factory(factory), path(path) {}
    ~FakePlayer() override { stop(); }

    bool isPlaying() const override { return factory.playing == this; }
    double currentTime() const override { return position; }
    double duration() const override { return 90.5; }
    int numberOfLoops() const override { return loops; }
    bool play() override
    {
        factory.playing = this;
        factory.played += path;
        return true;
    }
    void stop() override
    {
        if (isPlaying())
            factory.playing = nullptr;
    }
    void setCurrentTime(double seconds) override { position = seconds; }
    void setNumberOfLoops(int count) override { loops = count; }
    void setDelegate(AVAudioPlayerDelegate * /*delegate*/) override {}

private:
    FakePlayerFactory &factory;
    QString path;
    double position = 0;
    int loops = 0;
};

inline std::unique_ptr<AVAudioPlayer> FakePlayerFactory::makePlayer(const QString &path, QString &error)
{
    if (!path.isEmpty() && !path.contains(QStringLiteral("broken")))
        return std::make_unique<FakePlayer>(*this, path);
    error = QStringLiteral("no audio");
    return nullptr;
}
