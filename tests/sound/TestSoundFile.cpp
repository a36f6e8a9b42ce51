#include "sound/SoundFile.h"

#include "sound/SoundFileIO.h"
#include "support/SoundFiles.h"
#include "support/SoundRecording.h"
#include "support/StandardOutput.h"
#include "support/Table.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {
#include <libavformat/avio.h>
}

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

constexpr off_t wholeDisk = off_t(1) << 40;
static off_t diskEnd = wholeDisk;
extern "C" Q_DECL_EXPORT ssize_t pread(int file, void *buffer, size_t count, off_t offset)
{
    errno = EIO;
    return offset >= diskEnd ? -1 : ::syscall(SYS_pread64, file, buffer, count, offset);
}

namespace {

constexpr int anything = 1 << 16;

// Files of two seconds of a tone. How much longer the format may make them, in ms; how loud the tone is; by
// how much it may differ from itself where the file is repeated.
struct Format
{
    const char *name, *options;
    int rate, tail, peak, seam;
};
constexpr Format formats[] = {
    {"16 bit.wav", "-c:a pcm_s16le", 44100, 0, 16384, 20},
    {"surround.wav", "-c:a pcm_s24le -ac 6", 96000, 0, 4799, 20},
    {"big-endian.aiff", "-c:a pcm_s16be", 48000, 0, 16384, 20},
    {"float.caf", "-c:a pcm_f32be", 44100, 0, 16384, 20},
    {"ima4.wav", "-c:a adpcm_ima_wav", 44100, 40, 16384, anything},
    {"ima4.caf", "-c:a adpcm_ima_qt", 44100, 2, 16384, anything},
    {"alac.m4a", "-c:a alac -movflags faststart", 44100, 0, 16384, 20},
    {"x.flac", "-c:a flac", 44100, 0, 16384, 20},
    {"x.mp3", "-c:a libmp3lame", 44100, 0, 15570, 2000},
    {"8 kHz.mp3", "-c:a libmp3lame", 8000, 0, 15570, 9000},
    {"without its length.mp3", "-q:a 2 -write_xing 0 -id3v2_version 0", 44100, 60, 16384, anything},
    {"aac.m4a", "-c:a aac -movflags faststart", 44100, 0, 16384, 9000},
    {"adts.aac", "-c:a aac", 44100, 60, 16384, anything},
    {"fragmented.mp4", "-c:a aac -movflags empty_moov -frag_duration 300000", 44100, 60, 16384, anything},
    {"vorbis.ogg", "-c:a libvorbis -page_duration 100000", 44100, 0, 16384, 4000},
    {"x.opus", "-c:a libopus -page_duration 100000", 48000, 10, 16384, anything},
};

// One loop over the file and `repeats` more, from where it stands.
SoundRecording decode(SoundFile &file, int repeats = 0)
{
    std::vector<SoundFrame> frames;
    do {
        while (file.read(frames, 9600) == SoundFile::Status::More) {
        }
    } while (repeats-- > 0 && file.rewind());
    file.flush(frames);
    SoundRecording sound;
    for (const SoundFrame &frame : frames)
        sound.samples.push_back(frame.left);
    return sound;
}

} // namespace

class TestSoundFile final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    QString error;

    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }

    QByteArray contents(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void write(const char *name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    std::unique_ptr<SoundFile> open(const char *name)
    {
        error.clear();
        return SoundFile::open(path(name), error);
    }

    double lengthOf(const QByteArray &bytes)
    {
        write("changed", bytes);
        const auto file = open("changed");
        return file ? decode(*file).length() : 0;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QList<SoundFiles::Recipe> files;
        const auto add = [&](const char *name, const QString &source, const QString &options = {}) {
            files += {path(name), source, options.split(u' ', Qt::SkipEmptyParts)};
        };
        for (const auto &[name, options, rate, tail, peak, seam] : formats)
            add(name, SoundFiles::tone(u"1000"_s, 2, rate), QString::fromLatin1(options));
        add("film.ogv", u"testsrc=d=2:s=64x64[out0];"_s + SoundFiles::tone(u"1000"_s, 2) + u"[out1]"_s,
            u"-c:v libtheora -c:a libvorbis"_s);
        add("film.mp4", u"testsrc=d=1:s=64x64"_s, u"-c:v mpeg4"_s);
        add("other.au", SoundFiles::tone(u"1000"_s, 1));
        add("adpcm_ms.wav", SoundFiles::tone(u"1000"_s, 1, 8000), u"-c:a adpcm_ms"_s);
        add("42 MB.wav", u"anullsrc=d=15:cl=7.1"_s, u"-c:a pcm_f64le"_s);
        add("slow.wav", u"anullsrc=d=1:r=2000"_s);
        add("wide.wav", u"anullsrc=d=1:cl=hexadecagonal"_s);
        QString options = u"-f ogg -ar 16000"_s;
        for (int i = 0; i < 1010; ++i)
            options += u" -metadata %1=x"_s.arg(i);
        for (const char *codec : {"libvorbis", "libopus", "libspeex", "flac"})
            add(codec, SoundFiles::tone(u"1000"_s, 1), options + u" -c:a "_s + QLatin1String(codec));
        QVERIFY(SoundFiles::make(files));
        QVERIFY(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600) == 0);
        write("empty", {});
        write("zeros.mp3", QByteArray(1, '\0'));
        QVERIFY(QFile::resize(path("zeros.mp3"), 2'000'000'000));
        write("concat.mp3", "ffconcat version 1.0\nfile /dev/zero\n");
        QByteArray claim = contents("aac.m4a"); // of 84 million samples of one byte each, all in one chunk
        for (const auto &[box, offset, number] :
             {std::tuple("stsz", 4, 1), {"stsz", 8, 84'000'000}, {"stsc", 12, 84'000'000}})
            qToBigEndian(number, claim.data() + claim.indexOf(box) + 4 + offset);
        write("claim.m4a", claim);
        write("chained", contents("vorbis.ogg") + contents("libvorbis"));
    }

    void format_isDecodedExactly_repeatedWithoutGap_andPlayedAsFarAsItIsWhole_data()
    {
        columns<Format>("format");
        for (const Format &format : formats)
            QTest::newRow(format.name) << format;
    }

    void format_isDecodedExactly_repeatedWithoutGap_andPlayedAsFarAsItIsWhole()
    {
        QFETCH(const Format, format);
        const auto file = open(format.name);
        QVERIFY2(file && !file->hasExactDuration(), qPrintable(error));
        const SoundRecording sound = decode(*file, 2);
        QVERIFY(file->hasExactDuration());
        const double length = file->duration();
        QVERIFY(length > 1.999);
        QCOMPARE_LT(length, 2.001 + format.tail / 1000.0);
        QCOMPARE_LT(std::abs(sound.length() - 3 * length), 0.001);
        QCOMPARE_LT(sound.unevenness(0.5, 1.5, 48), 1000);
        QCOMPARE_LT(sound.unevenness(length * 2 + 0.5, length * 2 + 1.5, 48), 1000);
        QCOMPARE_LT(sound.unevenness(1.9, 4.1, 48), format.seam);
        const int peak = *std::max_element(sound.samples.begin() + 24000, sound.samples.begin() + 72000);
        QCOMPARE_LT(std::abs(peak - format.peak), 700);
        QVERIFY(file->seek(0.7));
        const SoundRecording later = decode(*file, 1);
        QCOMPARE_LT(std::abs(later.length() - (2 * length - 0.7)), 0.001);
        QCOMPARE_LT(std::abs(later.samples[24000] - sound.samples[57600]), 300);
        QCOMPARE_LT(std::abs(later.samples[40] - sound.samples[33640]), 300);
        const QByteArray whole = contents(format.name);
        if (QByteArray(format.name) != "fragmented.mp4") // FFmpeg 7 does not open it when it is cut off
            QCOMPARE_LT(std::abs(lengthOf(whole.first(whole.size() / 4 * 3)) - 1.25), 0.45);
        const QByteArray scratch(100, 'x');
        const double scratched = lengthOf(QByteArray(whole).replace(whole.size() / 4 * 3, 100, scratch));
        QCOMPARE_LT(std::abs(scratched - 1.8), 0.3);
    }

    void unplayableFile_isRefused_data()
    {
        columns<QString>("expected");
        const auto row = [](const QString &expected, std::initializer_list<const char *> names) {
            for (const char *name : names)
                QTest::newRow(name) << expected;
        };
        row(u"The file does not exist"_s, {"none"});
        row(u"Is a directory"_s, {"."});
        row(u"Not a regular file"_s, {"pipe"});
        row(u"The file is empty"_s, {"empty"});
        row(u"The sound is damaged"_s, {"claim.m4a"});
        row(u"No audio stream"_s, {"film.mp4"});
        row(u"Unsupported codec"_s, {"adpcm_ms.wav"});
        row(u"Unsupported sample rate or number of channels"_s, {"slow.wav", "wide.wav"});
        row(u"Timed out opening the file"_s, {"zeros.mp3"});
        row(u"Unknown format"_s, {"concat.mp3", "other.au"});
        row(u"Too many comments"_s, {"libvorbis", "libopus", "libspeex", "flac", "chained"});
    }

    void unplayableFile_isRefused()
    {
        QFETCH(const QString, expected);
        QCOMPARE(printedBy([&] { QVERIFY(!open(QTest::currentDataTag())); }, STDERR_FILENO), QStringList());
        QCOMPARE(error, expected);
    }

    void failingDisk_isNoticed()
    {
        const auto file = open("42 MB.wav");
        diskEnd = 1 << 20;
        QCOMPARE_LT(decode(*file).length(), 1.0);
        QVERIFY(!file->hasExactDuration());
        diskEnd = 0;
        QCOMPARE(open("x.mp3"), nullptr);
        QCOMPARE(error, u"The file cannot be read"_s);
    }

    void cleanup() { diskEnd = wholeDisk; }

    // Pictures that FFmpeg would read: in a tag, and in a FLAC block, which has no picture here and is
    // refused.
    void metadata_isHidden()
    {
        const QByteArray mp3 = contents("without its length.mp3");
        QFile tagged(path("tagged.mp3"));
        QVERIFY(tagged.open(QIODevice::WriteOnly) && tagged.write(QByteArray("ID3\4\0\0\x5f\0\0\0", 10)));
        QVERIFY(tagged.seek(10 + (0x5f << 21)) && tagged.write(mp3));
        tagged.close();
        const auto file = open("tagged.mp3");
        QVERIFY(file);
        QCOMPARE_LT(std::abs(file->duration() - 2), 1); // FFmpeg takes it from the size.
        QCOMPARE(decode(*file).length(), lengthOf(mp3));
        const QByteArray flac = contents("x.flac").first(30'000); // less than is read at once
        const QByteArray block = QByteArray("\0\1\x86\xa0", 4) + QByteArray(100'000, 'x');
        QCOMPARE(lengthOf(flac.first(42) + block + flac.mid(42)), lengthOf(flac));
        const auto hiddenIn = [this](const QByteArray &bytes) {
            write("changed", bytes);
            QFile changed(path("changed"));
            return changed.open(QIODevice::ReadOnly)
                       ? SoundMetadata::hiddenRange(changed.handle(), bytes.size()).length
                       : -1;
        };
        QCOMPARE(hiddenIn(flac.first(4) + '\x80' + flac.mid(5)), 0);
        QCOMPARE(hiddenIn(flac.first(42) + QByteArray("\1\xff\xff\xff", 4)), 4);
        QCOMPARE(hiddenIn(QByteArray("ID3\4\0\x10\0\0\0\0"
                                     "xxxxxxxxxx"
                                     "ID3\4\0\0\0\0\1\0",
                                     30) +
                          mp3),
                 158);
        QFile ogg(path("libvorbis"));
        QVERIFY(ogg.open(QIODevice::ReadOnly));
        const qint64 page = contents("libvorbis").indexOf("OggS", 1); // which may lie across two reads
        QVERIFY(SoundMetadata::hasTooManyOggComments(ogg.handle(), page + 26, page + 30));
    }

    void changeOfFormat_isFollowed_andOtherStreamsAreSkipped()
    {
        write("change.mp3", contents("x.mp3") + contents("8 kHz.mp3"));
        const auto file = open("change.mp3");
        std::vector<SoundFrame> frames;
        QVERIFY(file->read(frames, 3 * 48000) == SoundFile::Status::More);
        QCOMPARE_LT(std::abs(file->duration() - 3), 0.1); // though the file says 2
        QCOMPARE_LT(std::abs(decode(*file).length() - 1), 0.2);
        QCOMPARE(lengthOf(contents("film.ogv")), 2.0);
    }

    void budget_isLimitedButRenewed()
    {
        const auto io = SoundFileIO::open(path("x.mp3"), error);
        io->setBudget(1, 1h);
        QVERIFY(!io->isBudgetExhausted());
        quint8 byte;
        QCOMPARE(io->context()->read_packet(io.get(), &byte, 1), 1);
        QVERIFY(io->isBudgetExhausted());
        io->setBudget(1, 0ms);
        QTRY_VERIFY(io->isBudgetExhausted());
        QCOMPARE(decode(*open("42 MB.wav")).length(), 15.0);
    }

    void cleanupTestCase()
    {
        const QDir descriptors(u"/proc/self/fd"_s);
        QCOMPARE_LT(descriptors.entryList(QDir::System | QDir::Files).size(), 30);
    }
};

QTEST_GUILESS_MAIN(TestSoundFile)
#include "TestSoundFile.moc"
