#pragma once

#include <QDeadlineTimer>
#include <QString>

#include <cstdint>
#include <memory>

struct AVIOContext;

/// The bytes of a regular file, in the form in which FFmpeg reads them.
///
/// The file is held open, so that it can be read to its end when it is deleted meanwhile. Reading is
/// limited by allow(), so that a file that leads a decoder on for ever costs a bounded time.
class SoundBytes final
{
    Q_DISABLE_COPY_MOVE(SoundBytes)

public:
    /// Opens the file at `path`. Anything that is not a regular file with something in it is refused
    /// without being touched: the result is null then, and `error` says why.
    static std::unique_ptr<SoundBytes> open(const QString &path, QString &error);

    ~SoundBytes();

    AVIOContext *context() const { return avio; }

    /// True when the limit of the last allow() has been reached.
    bool isSpent() const;

    /// True when the system could not read the file.
    bool hasFailed() const { return failed; }

    /// Lets `count` more bytes be read until `deadline`; reading on after that is an error.
    void allow(qint64 count, QDeadlineTimer deadline = QDeadlineTimer(QDeadlineTimer::Forever));

private:
    SoundBytes(int file, qint64 size);

    static int read(void *self, quint8 *buffer, int count);
    static int64_t seek(void *self, int64_t offset, int whence);

    int file;
    qint64 size;
    AVIOContext *avio = nullptr;
    qint64 allowance = 0;
    QDeadlineTimer deadline;
    bool failed = false;
};
