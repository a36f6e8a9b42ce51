#include "core/AVPlayer.h"

#include "support/FakePlayer.h"
#include "support/StandardOutput.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>

using namespace Qt::StringLiterals;

class TestAVPlayer final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    FakePlayerFactory players;
    AVPlayer player{players, Resources(folder.filePath(u"share"_s))};

    QString makeFile(const QString &name) const
    {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::WriteOnly) ? file.fileName() : QString();
    }

private Q_SLOTS:
    void play_findsTheFileOrElseTheResource()
    {
        QVERIFY(QDir(folder.path()).mkdir(u"share"_s) && QDir::setCurrent(folder.path()));
        const QString resource = makeFile(u"share/chime.wav"_s);
        const QString oddName = makeFile(u"a 50%'\"\n 铃.wav"_s);
        player.play(oddName, true);
        QCOMPARE(player.player.value()->numberOfLoops(), 100);
        player.play(u"chime.wav"_s, false);
        QCOMPARE(player.player.value()->numberOfLoops(), 0);
        QVERIFY(!makeFile(u"chime.wav"_s).isEmpty());
        player.play(u"chime.wav"_s, false);
        // Qt cannot make nor delete a file of such a name.
        const QByteArray notUtf8 = QFile::encodeName(folder.path()) + "/b\xff\xe4.wav";
        QVERIFY(::close(::creat(notUtf8.constData(), 0600)) == 0);
        player.play(QFile::decodeName(notUtf8), false);
        ::unlink(notUtf8.constData());
        // What is missing is for the player to report.
        player.play(u"chime"_s, false);
        QCOMPARE(players.played,
                 (QStringList{oddName, resource, u"chime.wav"_s, QFile::decodeName(notUtf8), u"chime"_s}));
    }

    void play_thatFails_leavesWhatPlays()
    {
        player.play(makeFile(u"a.wav"_s), false);
        const auto playing = player.player.value();
        QCOMPARE(printedBy([this] { player.play(makeFile(u"broken.wav"_s), false); }), {u"错误: no audio"_s});
        QCOMPARE(player.player.value(), playing);
        QCOMPARE(players.playing, playing.get());
    }
};

QTEST_GUILESS_MAIN(TestAVPlayer)
#include "TestAVPlayer.moc"
