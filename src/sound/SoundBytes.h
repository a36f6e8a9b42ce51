#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>

struct AVIOContext;

/// The bytes of a regular file, in the form in which FFmpeg reads them, without the ID3v2 tag before the
/// sound: FFmpeg would read the cover picture in it.
///
/// The file is held open, so that it can be read to its end when it is deleted meanwhile. Reading is
/// limited by setBudget(), so that a file that leads a decoder on indefinitely costs a bounded time. It fails
/// at an Ogg stream with thousands of comments, which FFmpeg would compare with each other.
class SoundBytes final
{
    Q_DISABLE_COPY_MOVE(SoundBytes)

public:
    /// Opens the file at `path`. Anything that is not a regular file with something in it is refused
    /// without being touched: the result is null then, and `error` says why.
    static std::unique_ptr<SoundBytes> open(const QString &path, QString &error);

    ~SoundBytes();

    AVIOContext *context() const { return avio; }

    /// True when the budget is used up.
    bool isBudgetExhausted() const;

    /// True when the system could not read the file.
    bool hasFailed() const { return failed; }

    /// True when FFmpeg came to an Ogg stream with too many comments.
    bool hasTooManyComments() const { return tooManyComments; }

    /// Lets `count` more bytes be read while this thread uses no more than `time` of the processor; reading
    /// on after that is an error. Time in which the thread waits, as for a slow disk, does not count.
    void setBudget(qint64 count, std::chrono::milliseconds time);

private:
    SoundBytes(int file, qint64 size);

    static int read(void *self, quint8 *buffer, int count);
    static int64_t seek(void *self, int64_t offset, int whence);

    void hideTags();
    void hideFlacMetadata();
    bool findTooManyComments(qint64 begin, qint64 end) const;
    quint32 commentCount(qint64 page) const;
    quint32 numberAt(qint64 offset) const;

    int file;
    qint64 size;
    bool isFlac = false;
    bool isOgg = false;
    qint64 position = 0;     // in what FFmpeg sees, which is the file
    qint64 hiddenBegin = 0;  // without the bytes from here on,
    qint64 hiddenLength = 0; // so many of them
    AVIOContext *avio = nullptr;
    qint64 remainingBytes = 0;
    std::chrono::nanoseconds timeLimit{}; // of this thread's processor time
    bool failed = false;
    bool tooManyComments = false;
};
