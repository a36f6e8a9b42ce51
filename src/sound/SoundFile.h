#pragma once

#include "sound/SoundConverter.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

class SoundFileIO;
struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;

/// A sound file of any supported format, decoded from its beginning to its end any number of times.
///
/// One pass over the file is read in chunks; rewind() begins the next one without a gap. A call takes less
/// than a second of processor time and some 128 MB at most, however odd the file is.
class SoundFile final
{
    Q_DISABLE_COPY_MOVE(SoundFile)

public:
    enum class Status {
        More,    ///< There is more to read.
        Ended,   ///< The pass is over.
        Damaged, ///< The file cannot be read any further.
    };

    /// Opens the file at `path` and decodes its first frame. Only processor time is limited: a slow disk is
    /// waited for. On failure, also when the audio cannot be converted, returns null and the reason in
    /// `error`.
    static std::unique_ptr<SoundFile> open(const QString &path, QString &error);

    ~SoundFile();

    /// The length of a pass in seconds. Until the end has been decoded once it is what the file says, and
    /// no less than what has been decoded.
    double duration() const;

    /// True once the end has been decoded, which makes duration() exact.
    bool hasExactDuration() const { return length.has_value(); }

    /// Decodes about `count` frames, fewer at the end of the pass, and appends those after the position of
    /// the last seek() to `out`.
    Status read(std::vector<SoundFrame> &out, int count);

    /// Begins the next pass, without a gap to the last one. False when the file cannot be read again.
    bool rewind();

    /// Begins a pass at a position in seconds: read() will decode the file from its beginning and discard
    /// what lies before. No other way is exact in every format.
    bool seek(double seconds);

    /// Appends the last few frames, which read() holds back so that the next pass can join.
    void flush(std::vector<SoundFrame> &out) { converter.flush(out); }

private:
    struct Free
    {
        void operator()(AVFormatContext *context) const;
        void operator()(AVCodecContext *context) const;
        void operator()(AVFrame *frame) const;
        void operator()(AVPacket *packet) const;
    };

    explicit SoundFile(std::unique_ptr<SoundFileIO> io);

    QString openFormat(const QString &path);
    QString openCodec();
    QString decodeBeginning();
    Status decodeFrame();
    bool sendPacket();
    bool convertFrame(std::vector<SoundFrame> &out);
    double endPosition() const;

    std::unique_ptr<SoundFileIO> io;
    std::unique_ptr<AVFormatContext, Free> format;
    std::unique_ptr<AVCodecContext, Free> codec;
    std::unique_ptr<AVFrame, Free> frame;
    std::unique_ptr<AVPacket, Free> packet;
    AVStream *stream = nullptr;
    SoundConverter converter;
    qint64 firstPacket = 0; // its timestamp
    double position = 0;    // of the next sample decoded, in seconds
    double seekTarget = 0;  // in seconds; what lies before is discarded
    double furthestPosition = 0;
    std::optional<double> length; // in seconds, once the end has been decoded
};
