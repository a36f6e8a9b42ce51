#include "sound/SoundBytes.h"

#include "platform/FilePath.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
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
constexpr int maxTags = 16;
// A FLAC file begins with its mark and the block "streaminfo", whose first byte has this bit if it is the
// last.
constexpr qint64 flacHead = 42;
constexpr qint64 flacBlockType = 4;
constexpr quint8 flacLastBlock = 0x80;
constexpr int flacComments = 4; // as the type of a block
constexpr int maxFlacBlocks = 1000;
// The layout of an Ogg page: RFC 3533. The lengths of its segments, a byte each, follow the header.
constexpr std::string_view oggMark("OggS\0", 5); // with the version
constexpr qint64 oggPageNumber = 18;
constexpr qint64 oggHeader = 27;
constexpr quint32 maxOggComments = 1000;

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

// Why a file of this kind is not to be opened, or an empty text.
QString unsupportedFileError(const struct stat &entry)
{
    if (S_ISDIR(entry.st_mode))
        return u"Is a directory"_s;
    if (!S_ISREG(entry.st_mode))
        return u"Not a regular file"_s;
    return entry.st_size == 0 ? u"The file is empty"_s : QString();
}

} // namespace

std::unique_ptr<SoundBytes> SoundBytes::open(const QString &path, QString &error)
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
    return std::unique_ptr<SoundBytes>(new SoundBytes(file, entry.st_size));
}

SoundBytes::SoundBytes(int file, qint64 size) : file(file), size(size)
{
    auto *buffer = static_cast<quint8 *>(av_malloc(bufferSize));
    avio = avio_alloc_context(buffer, bufferSize, 0, this, &SoundBytes::read, nullptr, &SoundBytes::seek);
    Q_CHECK_PTR(avio);
    hideTags();
    hideFlacMetadata();
    std::array<char, 4> mark = {};
    isOgg = ::pread(file, mark.data(), mark.size(), hiddenLength) == ssize_t(mark.size()) &&
            oggMark.starts_with(std::string_view(mark.data(), mark.size()));
}

SoundBytes::~SoundBytes()
{
    av_freep(&avio->buffer);
    avio_context_free(&avio);
    ::close(file);
}

bool SoundBytes::isBudgetExhausted() const
{
    return remainingBytes <= 0 || processorTime() > timeLimit;
}

void SoundBytes::setBudget(qint64 count, std::chrono::milliseconds time)
{
    remainingBytes = count;
    timeLimit = processorTime() + time;
}

// An ID3v2 tag has a header of ten bytes, whose last four hold seven bits each of the length of the rest.
void SoundBytes::hideTags()
{
    std::array<quint8, 10> header = {};
    for (int i = 0; i < maxTags; ++i) {
        if (::pread(file, header.data(), header.size(), hiddenLength) != ssize_t(header.size()) ||
            std::memcmp(header.data(), "ID3", 3) != 0)
            break;
        qint64 length = 0;
        for (int byte = 6; byte < 10; ++byte)
            length = length << 7 | (header[size_t(byte)] & 0x7f);
        const bool hasFooter = header[5] & 0x10;
        hiddenLength += length + (hasFooter ? 20 : 10);
    }
    hiddenLength = std::min(hiddenLength, size);
}

// Each block has a header of four bytes, whose last three hold the length of the rest.
void SoundBytes::hideFlacMetadata()
{
    std::array<quint8, 5> head = {};
    if (hiddenLength > 0 || ::pread(file, head.data(), head.size(), 0) != ssize_t(head.size()) ||
        std::memcmp(head.data(), "fLaC", 4) != 0)
        return;
    isFlac = true;
    hiddenBegin = flacHead;
    bool isLast = head[flacBlockType] & flacLastBlock;
    for (int i = 0; i < maxFlacBlocks && !isLast; ++i) {
        std::array<quint8, 4> block = {};
        if (::pread(file, block.data(), block.size(), flacHead + hiddenLength) != ssize_t(block.size()))
            break;
        isLast = block[0] & flacLastBlock;
        hiddenLength += qint64(block.size()) + (block[1] << 16 | block[2] << 8 | block[3]);
    }
    hiddenLength = std::clamp(size - flacHead, qint64(0), hiddenLength);
}

// Whether a page that begins here says so. A further stream may begin anywhere in the file.
bool SoundBytes::findTooManyComments(qint64 begin, qint64 end) const
{
    begin = std::max(begin - oggHeader, qint64(0)); // the header may lie across the end of the last piece
    std::array<char, bufferSize + oggHeader> piece = {};
    const auto got = ::pread(file, piece.data(), size_t(std::min(end - begin, qint64(piece.size()))), begin);
    const std::string_view text(piece.data(), size_t(std::max(got, ssize_t(0))));
    for (auto at = text.find(oggMark); at != text.npos; at = text.find(oggMark, at + 1)) {
        if (commentCount(begin + qint64(at)) > maxOggComments)
            return true;
    }
    return false;
}

// How many comments a page says that its stream has, or 0 if it does not say so. The comments begin on the
// second page of a stream: a mark, which depends on the codec, the length of the encoder's name, the name,
// the count.
quint32 SoundBytes::commentCount(qint64 page) const
{
    quint8 segments = 0;
    if (numberAt(page + oggPageNumber) != 1 || ::pread(file, &segments, 1, page + oggHeader - 1) != 1)
        return 0;
    std::array<char, 8> packet = {};
    const qint64 begin = page + oggHeader + segments;
    if (::pread(file, packet.data(), packet.size(), begin) != ssize_t(packet.size()))
        return 0;
    const std::string_view mark(packet.data(), packet.size());
    int markLength = 0; // Speex
    if (mark == "OpusTags")
        markLength = 8;
    else if (mark.starts_with("\3vorbis"))
        markLength = 7;
    else if ((mark.front() & 0x7f) == flacComments)
        markLength = 4;
    const qint64 name = begin + markLength + 4;
    return numberAt(name + numberAt(name - 4));
}

// 32 bits, the lowest byte first; 0 beyond the end of the file.
quint32 SoundBytes::numberAt(qint64 offset) const
{
    std::array<quint8, 4> bytes = {};
    const auto got = ::pread(file, bytes.data(), bytes.size(), offset);
    return got == ssize_t(bytes.size()) ? qFromLittleEndian<quint32>(bytes.data()) : 0;
}

int SoundBytes::read(void *self, quint8 *buffer, int count)
{
    auto *bytes = static_cast<SoundBytes *>(self);
    if (bytes->isBudgetExhausted())
        return AVERROR_EXIT;
    const bool isBeforeHidden = bytes->position < bytes->hiddenBegin;
    const qint64 offset = bytes->position + (isBeforeHidden ? 0 : bytes->hiddenLength);
    const auto wanted = isBeforeHidden ? std::min(qint64(count), bytes->hiddenBegin - bytes->position)
                                       : std::min(count, bufferSize);
    const auto got = ::pread(bytes->file, buffer, size_t(wanted), offset);
    if (got < 0) {
        bytes->failed = true;
        return AVERROR(errno);
    }
    if (bytes->isOgg && bytes->findTooManyComments(offset, offset + got)) {
        bytes->tooManyComments = true;
        return AVERROR_EXIT;
    }
    if (const qint64 type = flacBlockType - bytes->position; bytes->isFlac && type >= 0 && type < got)
        buffer[type] |= flacLastBlock;
    bytes->position += got;
    bytes->remainingBytes -= got;
    return got == 0 ? AVERROR_EOF : int(got);
}

int64_t SoundBytes::seek(void *self, int64_t offset, int whence)
{
    auto *bytes = static_cast<SoundBytes *>(self);
    const qint64 length = bytes->size - bytes->hiddenLength;
    if (whence & AVSEEK_SIZE)
        return length;
    const int base = whence & ~AVSEEK_FORCE;
    const qint64 target = offset + (base == SEEK_CUR ? bytes->position : base == SEEK_END ? length : 0);
    if (target < 0)
        return AVERROR(EINVAL);
    return bytes->position = target;
}
