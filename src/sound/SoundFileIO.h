#pragma once

#include "sound/SoundMetadata.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>

struct AVIOContext;

/// Custom I/O for FFmpeg: the bytes of a regular file without the metadata that SoundMetadata hides.
///
/// The file is held open, so that it can be read to its end when it is deleted meanwhile. Reading is
/// limited by setBudget(), so that a file that leads a decoder on indefinitely costs a bounded time. It fails
/// at an Ogg stream with too many comments.
class SoundFileIO final
{
    Q_DISABLE_COPY_MOVE(SoundFileIO)

public:
    /// Opens the file at `path`. Anything that is not a regular file with something in it is refused
    /// without being touched: the result is null then, and `error` says why.
    static std::unique_ptr<SoundFileIO> open(const QString &path, QString &error);

    ~SoundFileIO();

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
    SoundFileIO(int file, qint64 size);

    static int read(void *self, quint8 *buffer, int count);
    static int64_t seek(void *self, int64_t offset, int whence);

    const int file;
    const qint64 size;
    const SoundMetadata::Range hidden;
    const bool isOgg;
    qint64 position = 0; // in what FFmpeg sees
    AVIOContext *avio = nullptr;
    qint64 remainingBytes = 0;
    std::chrono::nanoseconds timeLimit{}; // of this thread's processor time
    bool failed = false;
    bool tooManyComments = false;
};
