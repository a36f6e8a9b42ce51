#include "core/AVPlayer.h"

#include "support/FakePlayer.h"
#include "support/Table.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestAVPlayer final : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir folder;
    const QByteArray notUtf8 = QFile::encodeName(folder.path()) + "/b\xff\xe4.wav";

    QString makeFile(const QString &name)
    {
        QFile file(folder.filePath(name));
        QDir().mkpath(QFileInfo(file).path());
        return file.open(QIODevice::WriteOnly) ? file.fileName() : QString();
    }

private Q_SLOTS:
    // Qt could not, for the file's name.
    void cleanupTestCase() { ::unlink(notUtf8.constData()); }

    void play_findsTheFileOrElseTheResource_data()
    {
        columns<QString, QString>("path", "played");
        const QString file = makeFile(u"a 50%'\"\n 铃.wav"_s);
        const QString resource = makeFile(u"share/chime.wav"_s);
        QTest::newRow("a file of an odd name") << file << file;
        QVERIFY(::close(::creat(notUtf8.constData(), 0600)) == 0);
        QTest::newRow("a file whose name is not UTF-8")
            << QFile::decodeName(notUtf8) << QFile::decodeName(notUtf8);
        QTest::newRow("a resource") << u"chime.wav"_s << resource;
        QTest::newRow("a folder is not looked up as a resource") << folder.path() << folder.path();
        QTest::newRow("a resource is found by its whole name only") << u"chime"_s << QString();
        QTest::newRow("nothing") << QString() << QString();
    }
    void play_findsTheFileOrElseTheResource()
    {
        QFETCH(QString, path);
        QFETCH(QString, played);
        FakePlayer::Stage stage;
        AVPlayer player(FakePlayer::factory(stage), Resources(folder.filePath(u"share"_s)));
        player.play(path, false);
        QCOMPARE(stage.played, played.isEmpty() ? QStringList() : QStringList(played));
        QCOMPARE(stage.failures, played.isEmpty() ? 1 : 0);
    }

    void play_repeatsOnlyWhatIsLooped()
    {
        FakePlayer::Stage stage;
        AVPlayer player(FakePlayer::factory(stage), Resources(folder.path()));
        const QString file = makeFile(u"a.wav"_s);
        player.play(file, true);
        QCOMPARE(player.player.value()->numberOfLoops(), 100);
        player.play(file, false);
        QCOMPARE(player.player.value()->numberOfLoops(), 0);
    }

    void play_replacesWhatPlays_andAFailureLeavesIt()
    {
        FakePlayer::Stage stage;
        AVPlayer player(FakePlayer::factory(stage), Resources(folder.path()));
        QSignalSpy changes(&player, &ObservableObject::objectWillChange);
        player.play(makeFile(u"a.wav"_s), false);
        player.play(makeFile(u"b.wav"_s), false);
        QCOMPARE(changes.size(), 2);
        const auto second = player.player.value();
        QCOMPARE(stage.sounding, second.get());
        player.play(makeFile(u"broken.wav"_s), false);
        QCOMPARE(changes.size(), 2);
        QCOMPARE(player.player.value(), second);
        QVERIFY(second->isPlaying());
    }
};

QTEST_GUILESS_MAIN(TestAVPlayer)
#include "TestAVPlayer.moc"
