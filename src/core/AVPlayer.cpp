#include "core/AVPlayer.h"

#include "platform/FilePath.h"
#include "platform/Log.h"

using namespace Qt::StringLiterals;

AVPlayer::AVPlayer(AVAudioPlayerFactory &factory, Resources resources, QObject *parent)
    : ObservableObject(parent)
    , factory(factory)
    , resources(std::move(resources))
{}

void AVPlayer::play(const QString &path, bool isLoop)
{
    const QString file = FilePath::existing(path) ? path : resources.path(path).value_or(path);
    QString error;
    std::shared_ptr<AVAudioPlayer> next = factory.makePlayer(file, error);
    if (!next)
        return Log::print(u"错误: "_s + error);
    player = next;
    next->setDelegate(this);
    next->setNumberOfLoops(isLoop ? 100 : 0);
    next->play();
}

// The scheduler polls for the end of a playback.
void AVPlayer::audioPlayerDidFinishPlaying(AVAudioPlayer & /*player*/, bool /*successfully*/) {}
