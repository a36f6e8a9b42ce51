#include "sound/SoundFileIO.h"

#include "platform/FilePath.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

using namespace Qt::StringLiterals;

namespace {

constexpr int bufferSize = 32 * 1024;

std::chrono::nanoseconds processorTime()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

QString systemError(int code)
{
    if (code == EACCES)
        return u"Permission denied"_s;
    return u"The file cannot be read: %1"_s.arg(qt_error_string(code));
}

// Why a file of this kind cannot be played, or an empty text.
QString unsupportedFileError(const struct stat &entry)
{
    if (S_ISDIR(entry.st_mode))
        return u"Is a directory"_s;
    if (!S_ISREG(entry.st_mode))
        return u"Not a regular file"_s;
    return entry.st_size == 0 ? u"The file is empty"_s : QString();
}

} // namespace

std::unique_ptr<SoundFileIO> SoundFileIO::open(const QString &path, QString &error)
{
    const auto bytes = FilePath::existing(path);
    if (!bytes) {
        error = path.isEmpty() ? u"No file name"_s : u"The file does not exist"_s;
        return nullptr;
    }
    struct stat entry = {};
    if (::stat(bytes->constData(), &entry) != 0) {
        error = systemError(errno);
        return nullptr;
    }
    if (error = unsupportedFileError(entry); !error.isEmpty())
        return nullptr;
    const int file = ::open(bytes->constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file < 0) {
        error = systemError(errno);
        return nullptr;
    }
    return std::unique_ptr<SoundFileIO>(new SoundFileIO(file, entry.st_size));
}

SoundFileIO::SoundFileIO(int file, qint64 size)
    : file(file)
    , size(size)
    , hidden(SoundMetadata::hiddenRange(file, size))
    , isOgg(SoundMetadata::isOgg(file, hidden.length))
{
    auto *buffer = static_cast<quint8 *>(av_malloc(bufferSize));
    avio = avio_alloc_context(buffer, bufferSize, 0, this, &SoundFileIO::read, nullptr, &SoundFileIO::seek);
    Q_CHECK_PTR(avio);
}

SoundFileIO::~SoundFileIO()
{
    av_freep(&avio->buffer);
    avio_context_free(&avio);
    ::close(file);
}

bool SoundFileIO::isBudgetExhausted() const
{
    return remainingBytes <= 0 || processorTime() > timeLimit;
}

void SoundFileIO::setBudget(qint64 count, std::chrono::milliseconds time)
{
    remainingBytes = count;
    timeLimit = processorTime() + time;
}

int SoundFileIO::read(void *self, quint8 *buffer, int count)
{
    auto *io = static_cast<SoundFileIO *>(self);
    if (io->isBudgetExhausted())
        return AVERROR_EXIT;
    const bool isBeforeHidden = io->position < io->hidden.begin;
    const qint64 offset = io->position + (isBeforeHidden ? 0 : io->hidden.length);
    const qint64 available = isBeforeHidden ? io->hidden.begin - io->position : bufferSize;
    const auto got = ::pread(io->file, buffer, size_t(std::min(qint64(count), available)), offset);
    if (got < 0) {
        io->failed = true;
        return AVERROR(errno);
    }
    if (io->isOgg && SoundMetadata::hasTooManyOggComments(io->file, offset, offset + got)) {
        io->tooManyComments = true;
        return AVERROR_EXIT;
    }
    if (isBeforeHidden)
        SoundMetadata::endFlacMetadata({buffer, size_t(got)}, io->position);
    io->position += got;
    io->remainingBytes -= got;
    return got == 0 ? AVERROR_EOF : int(got);
}

int64_t SoundFileIO::seek(void *self, int64_t offset, int whence)
{
    auto *io = static_cast<SoundFileIO *>(self);
    if (whence & AVSEEK_SIZE)
        return io->size - io->hidden.length;
    // FFmpeg's own layer has already resolved every other kind.
    if (whence != SEEK_SET || offset < 0)
        return AVERROR(EINVAL);
    return io->position = offset;
}
