#include "platform/SoundBytes.h"

#include "platform/FilePath.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

using namespace Qt::StringLiterals;

namespace {

constexpr int bufferSize = 32 * 1024;

QString systemError(int code)
{
    if (code == EACCES)
        return u"There is no permission to read the file."_s;
    return u"The file cannot be read: %1."_s.arg(qt_error_string(code));
}

// Why a file of this kind is not to be opened, or an empty text.
QString refusal(const struct stat &entry)
{
    if (S_ISDIR(entry.st_mode))
        return u"It is a folder."_s;
    if (!S_ISREG(entry.st_mode))
        return u"It is not a file but a device."_s;
    return entry.st_size == 0 ? u"The file is empty."_s : QString();
}

} // namespace

std::unique_ptr<SoundBytes> SoundBytes::open(const QString &path, QString &error)
{
    const auto bytes = FilePath::existing(path);
    if (!bytes) {
        error = path.isEmpty() ? u"No file is named."_s : u"The file does not exist."_s;
        return nullptr;
    }
    struct stat entry = {};
    if (::stat(bytes->constData(), &entry) != 0) {
        error = systemError(errno);
        return nullptr;
    }
    if (error = refusal(entry); !error.isEmpty())
        return nullptr;
    const int file = ::open(bytes->constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file < 0) {
        error = systemError(errno);
        return nullptr;
    }
    return std::unique_ptr<SoundBytes>(new SoundBytes(file, entry.st_size));
}

SoundBytes::SoundBytes(int file, qint64 size) : file(file), size(size)
{
    auto *buffer = static_cast<quint8 *>(av_malloc(bufferSize));
    avio = avio_alloc_context(buffer, bufferSize, 0, this, &SoundBytes::read, nullptr, &SoundBytes::seek);
    Q_CHECK_PTR(avio);
}

SoundBytes::~SoundBytes()
{
    av_freep(&avio->buffer);
    avio_context_free(&avio);
    ::close(file);
}

bool SoundBytes::isSpent() const
{
    return allowance <= 0 || deadline.hasExpired();
}

void SoundBytes::allow(qint64 count, QDeadlineTimer until)
{
    allowance = count;
    deadline = until;
}

int SoundBytes::read(void *self, quint8 *buffer, int count)
{
    auto *bytes = static_cast<SoundBytes *>(self);
    if (bytes->isSpent())
        return AVERROR_EXIT;
    const auto got = ::read(bytes->file, buffer, size_t(count));
    if (got < 0) {
        bytes->failed = true;
        return AVERROR(errno);
    }
    bytes->allowance -= got;
    return got == 0 ? AVERROR_EOF : int(got);
}

int64_t SoundBytes::seek(void *self, int64_t offset, int whence)
{
    const auto *bytes = static_cast<SoundBytes *>(self);
    if (whence & AVSEEK_SIZE)
        return bytes->size;
    const qint64 position = ::lseek(bytes->file, offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
}
