#include "sound/SoundFile.h"

#include "support/SoundFiles.h"
#include "support/SoundRecording.h"
#include "support/Table.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <cmath>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

QStringList words(const char *line)
{
    return QString::fromLatin1(line).split(u' ', Qt::SkipEmptyParts);
}

// What `passes` passes over the file sound like, from where it stands.
SoundRecording decode(SoundFile &file, int passes)
{
    std::vector<SoundFrame> frames;
    for (int pass = 0; pass < passes && (pass == 0 || file.rewind()); ++pass) {
        while (file.read(frames, 9600) == SoundFile::Status::More) {
        }
    }
    file.flush(frames);
    SoundRecording sound;
    for (const SoundFrame &frame : frames)
        sound.samples.push_back(frame.left);
    return sound;
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// Of this program, in KiB.
long peakMemory()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Puts `number` behind the name of a box of an MPEG-4 file, `offset` bytes after it.
void patch(QByteArray &file, const char *box, qsizetype offset, quint32 number)
{
    qToBigEndian(number, file.data() + file.indexOf(box) + 4 + offset);
}

} // namespace

class TestSoundFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFormat_isDecodedWholeAndRepeatedWithoutGap_data()
    {
        // In ms what the format may add, and what may be heard where two passes meet, of 32768.
        columns<QString, int, QStringList, int, int>("name", "rate", "options", "tail", "seam");
        const auto row = [](const char *title, const char *name, int rate, const char *options, int tail,
                            int seam) {
            QTest::newRow(title) << QString::fromLatin1(name) << rate << words(options) << tail << seam;
        };
        row("PCM, wav", "a.wav", 44100, "-c:a pcm_s16le", 0, 300);
        row("PCM, wav, 96 kHz 5.1", "c.wav", 96000, "-c:a pcm_s24le -ac 6", 0, 300);
        row("PCM, aiff", "a.aiff", 48000, "-c:a pcm_s16be", 0, 300);
        row("PCM, caf", "a.caf", 44100, "-c:a pcm_f32be", 0, 300);
        row("IMA4, wav", "ima.wav", 44100, "-c:a adpcm_ima_wav", 40, -1);
        row("IMA4, caf", "ima.caf", 44100, "-c:a adpcm_ima_qt", 2, -1);
        row("ALAC, m4a", "alac.m4a", 44100, "-c:a alac", 0, 300);
        row("FLAC", "a.flac", 44100, "-c:a flac", 0, 300);
        row("MP3", "a.mp3", 44100, "-c:a libmp3lame", 0, 2000);
        row("MP3, 8 kHz", "low.mp3", 8000, "-c:a libmp3lame", 0, 9000);
        row("MP3 that says nothing of its length", "bare.mp3", 44100, "-q:a 2 -write_xing 0 -id3v2_version 0",
            60, -1);
        row("AAC, m4a", "aac.m4a", 44100, "-c:a aac", 0, 9000);
        row("AAC, ADTS", "a.aac", 44100, "-c:a aac", 60, -1);
        row("AAC, fragmented mp4", "fragments.mp4", 44100,
            "-c:a aac -movflags frag_keyframe+empty_moov -frag_duration 300000", 60, -1);
        row("Vorbis", "a.ogg", 44100, "-c:a libvorbis", 0, 4000);
        row("Opus", "a.opus", 48000, "-c:a libopus", 10, -1);
    }

    void everyFormat_isDecodedWholeAndRepeatedWithoutGap()
    {
        QFETCH(const QString, name);
        QFETCH(const int, rate);
        QFETCH(const QStringList, options);
        QFETCH(const int, tail);
        QFETCH(const int, seam);
        QVERIFY(SoundFiles::make(path(name), SoundFiles::tone(u"1000"_s, 2, rate), options));

        const auto file = open(name);
        QVERIFY2(file, qUtf8Printable(error));
        const SoundRecording sound = decode(*file, 3);
        const double longest = 2 + tail / 1000.0;
        QVERIFY(file->hasExactDuration());
        QVERIFY2(file->duration() > 1.999 && file->duration() < longest + 0.001,
                 qPrintable(QString::number(file->duration(), 'f', 4)));
        QVERIFY2(std::abs(sound.length() - 3 * file->duration()) < 0.001,
                 qPrintable(QString::number(sound.length(), 'f', 4)));
        QVERIFY(std::abs(sound.pitch(0.5, 1.5) - 1000) < 1);
        QVERIFY(std::abs(sound.pitch(4.5, 5.5) - 1000) < 1);
        if (seam >= 0) {
            const int uneven = sound.unevenness(1.9, 4.1, 48);
            QVERIFY2(uneven < seam, qPrintable(QString::number(uneven)));
        }
    }

    void whatIsNoSound_isRefusedInTime()
    {
        const auto openError = [this](const QString &name) {
            QElapsedTimer timer;
            timer.start();
            const auto file = open(name);
            return file || timer.elapsed() > 10'000 ? u"in vain"_s : error;
        };
        QCOMPARE(SoundFile::open(QString(), error), nullptr);
        QCOMPARE(error, u"No file name"_s);
        QCOMPARE(openError(u"none.mp3"_s), u"The file does not exist"_s);
        QCOMPARE(openError(u"."_s), u"Is a directory"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(path(u"pipe.mp3"_s)).constData(), 0600), 0);
        QCOMPARE(openError(u"pipe.mp3"_s), u"Not a regular file"_s);
        QVERIFY(SoundFiles::make(path(u"film.mp4"_s), u"testsrc=d=1:s=64x64"_s, words("-c:v mpeg4")));
        QCOMPARE(openError(u"film.mp4"_s), u"No audio stream"_s);
        QVERIFY(QFile(path(u"film.mp4"_s)).resize(0));
        QCOMPARE(openError(u"film.mp4"_s), u"The file is empty"_s);
        QFile sparse(path(u"sparse.mp3"_s));
        QVERIFY(sparse.open(QIODevice::WriteOnly) && sparse.resize(2'000'000'000));
        QCOMPARE(openError(u"sparse.mp3"_s), u"Timed out opening the file"_s);
        for (const auto &format : {u"r=2000"_s, u"cl=hexadecagonal"_s}) {
            QVERIFY(SoundFiles::make(path(u"odd.wav"_s), u"anullsrc=d=1:"_s + format));
            QCOMPARE(openError(u"odd.wav"_s), u"Unsupported sample rate or number of channels"_s);
        }
        // Two lists of other files, which must not be opened.
        for (const char *text : {"This is not a sound.\n", "#EXTM3U\n#EXTINF:1,\nfile:///dev/zero\n",
                                 "ffconcat version 1.0\nfile /dev/zero\n"}) {
            QVERIFY(write(path(u"text.mp3"_s), text));
            QCOMPARE(openError(u"text.mp3"_s), u"Unknown format"_s);
        }
    }

    void damagedFile_isPlayedAsFarAsItGoes_data()
    {
        columns<QString, QStringList>("name", "options");
        for (const char *name : {"x.mp3", "x.aac", "x.caf", "x.wav", "x.aiff", "x.flac", "x.opus"})
            QTest::newRow(name) << QString::fromLatin1(name) << QStringList();
        QTest::newRow("x.m4a") << u"x.m4a"_s << words("-movflags faststart");
    }

    void damagedFile_isPlayedAsFarAsItGoes()
    {
        QFETCH(const QString, name);
        QFETCH(const QStringList, options);
        QVERIFY(SoundFiles::make(path(name), SoundFiles::tone(u"1000"_s, 3), options));
        const QByteArray whole = contents(path(name));
        QVERIFY(write(path(name), whole.first(whole.size() / 2)));
        const auto cut = open(name);
        QVERIFY2(cut, qUtf8Printable(error));
        const double length = decode(*cut, 1).length();
        QVERIFY2(length > 0.9 && length < 2, qPrintable(QString::number(length)));
        // A scratch in the middle costs no more than itself.
        QByteArray scratched = whole;
        scratched.replace(whole.size() / 2, 100, QByteArray(100, '\x55'));
        QVERIFY(write(path(name), scratched));
        const auto file = open(name);
        QVERIFY2(file, qUtf8Printable(error));
        const double left = decode(*file, 1).length();
        QVERIFY2(left > 2 && left < 3.2, qPrintable(QString::number(left)));
    }

    void falseClaims_costNothing()
    {
        // A tag with a picture of 200 MB, which is not read.
        QVERIFY(SoundFiles::make(path(u"plain.mp3"_s), SoundFiles::tone(u"1000"_s, 1)));
        QFile tagged(path(u"tagged.mp3"_s));
        QVERIFY(tagged.open(QIODevice::WriteOnly) && tagged.write(QByteArray("ID3\4\0\0\x5f\0\0\0", 10)));
        QVERIFY(tagged.seek(10 + 0x5f * (1 << 21)) && tagged.write(contents(path(u"plain.mp3"_s))));
        tagged.close();
        const auto withTag = open(u"tagged.mp3"_s);
        QVERIFY2(withTag, qUtf8Printable(error));
        QCOMPARE(decode(*withTag, 2).length(), 2.0);

        // A second block that FFmpeg refuses if it sees it, as it would read each picture.
        QVERIFY(SoundFiles::make(path(u"x.flac"_s), SoundFiles::tone(u"1000"_s, 1)));
        const QByteArray flac = contents(path(u"x.flac"_s));
        QVERIFY(write(path(u"x.flac"_s), flac.first(42) + flac.mid(4)));
        const auto withBlocks = open(u"x.flac"_s);
        QVERIFY2(withBlocks, qUtf8Printable(error));
        QCOMPARE(decode(*withBlocks, 2).length(), 2.0);

        // Comments, each of which FFmpeg would compare with all others, also in a second stream chained to
        // the first.
        QByteArray comments = ";FFMETADATA1\n";
        for (int i = 0; i < 20'000; ++i)
            comments += QByteArray::number(i) + "=x\n";
        QVERIFY(write(path(u"comments.txt"_s), comments));
        const QStringList input = {u"-i"_s, path(u"comments.txt"_s), u"-map_metadata"_s, u"1"_s};
        for (const char *codec : {"libvorbis", "libopus", "flac"}) {
            const QStringList options = {u"-f"_s, u"ogg"_s, u"-c:a"_s, QString::fromLatin1(codec)};
            QVERIFY(SoundFiles::make(path(u"few.ogg"_s), SoundFiles::tone(u"1000"_s, 1), options));
            QVERIFY(SoundFiles::make(path(u"many.ogg"_s), SoundFiles::tone(u"1000"_s, 1), input + options));
            QCOMPARE(open(u"many.ogg"_s), nullptr);
            QCOMPARE(error, u"Too many comments"_s);
            QVERIFY(
                write(path(u"chain.ogg"_s), contents(path(u"few.ogg"_s)) + contents(path(u"many.ogg"_s))));
            const auto chain = open(u"chain.ogg"_s);
            QVERIFY(!chain || decode(*chain, 1).length() < 1.1);
        }

        QVERIFY(SoundFiles::make(path(u"x.m4a"_s), SoundFiles::tone(u"1000"_s, 3)));
        const QByteArray whole = contents(path(u"x.m4a"_s));
        QByteArray claim = whole;
        patch(claim, "stsz", 4, 1);           // each sample has one byte,
        patch(claim, "stsz", 8, 84'000'000);  // there are so many,
        patch(claim, "stsc", 12, 84'000'000); // all in one chunk
        QVERIFY(write(path(u"claim.m4a"_s), claim));
        const auto before = peakMemory();
        open(u"claim.m4a"_s);
        QVERIFY(peakMemory() - before < 128 << 10);
    }

private:
    QString path(const QString &name) const { return folder.filePath(name); }
    std::unique_ptr<SoundFile> open(const QString &name)
    {
        error.clear();
        return SoundFile::open(path(name), error);
    }

    QTemporaryDir folder;
    QString error;
};

QTEST_GUILESS_MAIN(TestSoundFile)
#include "TestSoundFile.moc"
