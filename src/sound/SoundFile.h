#pragma once

#include "sound/SoundConverter.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

class SoundBytes;
struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;

/// A sound file of any supported format, decoded from its beginning to its end as often as wanted.
///
/// One pass over the file is read piece by piece; rewind() begins the next one without a gap. A call
/// takes less than a second of the processor and some 128 MB at most, however odd the file is.
class SoundFile final
{
    Q_DISABLE_COPY_MOVE(SoundFile)

public:
    enum class Status {
        More,    ///< There is more to read.
        Ended,   ///< The pass is over.
        Damaged, ///< The file cannot be read any further.
    };

    /// Opens the file at `path` and decodes a little of it. It takes as long as the disk takes: only the
    /// processor's time is limited. On failure, also when the sound cannot be converted, returns null and
    /// says why in `error`.
    static std::unique_ptr<SoundFile> open(const QString &path, QString &error);

    ~SoundFile();

    /// The length of a pass in seconds. Until the end has been decoded once it is what the file says, and
    /// no less than what has been decoded.
    double duration() const;

    /// True once the end has been decoded, which makes duration() exact.
    bool hasExactDuration() const { return length.has_value(); }

    /// Decodes about `count` frames, fewer at the end of the pass, and appends those from where seek()
    /// went to `out`.
    Status read(std::vector<SoundFrame> &out, int count);

    /// Begins the next pass; its sound goes on seamlessly from that of the last. False when it cannot.
    bool rewind();

    /// Goes to a position in seconds from the beginning, which is to say that read() will pass over what
    /// lies before it: only so does it find the place exactly in every format.
    bool seek(double seconds);

    /// Appends the last few frames, which read() holds back for the sake of a following pass.
    void finish(std::vector<SoundFrame> &out) { converter.finish(out); }

private:
    struct Free
    {
        void operator()(AVFormatContext *context) const;
        void operator()(AVCodecContext *context) const;
        void operator()(AVFrame *frame) const;
        void operator()(AVPacket *packet) const;
    };

    explicit SoundFile(std::unique_ptr<SoundBytes> bytes);

    QString openFormat(const QString &path);
    QString openCodec();
    QString decodeBeginning();
    Status decodeFrame();
    bool sendPacket();
    bool convertFrame(std::vector<SoundFrame> &out);
    double end() const;

    std::unique_ptr<SoundBytes> bytes;
    std::unique_ptr<AVFormatContext, Free> format;
    std::unique_ptr<AVCodecContext, Free> codec;
    std::unique_ptr<AVFrame, Free> frame;
    std::unique_ptr<AVPacket, Free> packet;
    AVStream *stream = nullptr;
    SoundConverter converter;
    qint64 firstPacket = 0; // its time stamp
    double position = 0;    // of the next sample decoded, in seconds
    double seekTarget = 0;  // where sound is wanted from; what lies before is dropped
    double furthestPosition = 0;
    std::optional<double> length;
};
