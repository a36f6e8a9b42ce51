#include "sound/SoundMetadata.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <string_view>
#include <unistd.h>

namespace {

constexpr int maxId3Tags = 16;

constexpr std::string_view flacMark = "fLaC";
constexpr qint64 flacStreamInfoEnd = 42;
constexpr quint8 flacLastBlock = 0x80; // a bit of the first byte of a block, the others are its type
constexpr quint8 flacComments = 4;     // as the type of a block
constexpr int maxFlacBlocks = 1000;

// An Ogg page: RFC 3533. The lengths of its segments, a byte each, follow the header.
constexpr std::string_view oggMark("OggS\0", 5); // with the version
constexpr qint64 oggPageNumber = 18;
constexpr qint64 oggHeaderSize = 27;
constexpr quint32 maxOggComments = 1000;

constexpr qint64 maxSearched = qint64(32) * 1024;

// False when the file ends before the end of `bytes`.
template<typename Bytes>
bool readAt(int file, qint64 offset, Bytes &bytes)
{
    return ::pread(file, bytes.data(), bytes.size(), offset) == ssize_t(bytes.size());
}

template<size_t size>
bool beginsWith(const std::array<quint8, size> &bytes, std::string_view mark)
{
    return std::equal(mark.begin(), mark.end(), bytes.begin());
}

// 0 beyond the end of the file.
quint32 littleEndianAt(int file, qint64 offset)
{
    std::array<quint8, 4> bytes = {};
    return readAt(file, offset, bytes) ? qFromLittleEndian<quint32>(bytes.data()) : 0;
}

// A tag has a header of ten bytes, whose last four hold seven bits each of the length of the rest.
qint64 id3Length(int file)
{
    qint64 total = 0;
    std::array<quint8, 10> header = {};
    for (int i = 0; i < maxId3Tags && readAt(file, total, header) && beginsWith(header, "ID3"); ++i) {
        qint64 length = 0;
        for (size_t byte = 6; byte < 10; ++byte)
            length = length << 7 | (header[byte] & 0x7f);
        const bool hasFooter = header[5] & 0x10;
        total += length + (hasFooter ? 20 : 10);
    }
    return total;
}

// Each block has a header of four bytes, whose last three hold the length of the rest.
qint64 flacBlocksLength(int file, bool isStreamInfoLast)
{
    qint64 total = 0;
    std::array<quint8, 4> block = {};
    bool isLast = isStreamInfoLast;
    for (int i = 0; i < maxFlacBlocks && !isLast && readAt(file, flacStreamInfoEnd + total, block); ++i) {
        isLast = block[0] & flacLastBlock;
        total += qint64(block.size()) + (block[1] << 16 | block[2] << 8 | block[3]);
    }
    return total;
}

// The length of the mark before the comments, which depends on the codec.
qint64 commentsMarkLength(std::string_view packet)
{
    if (packet == "OpusTags")
        return 8;
    if (packet.starts_with("\3vorbis"))
        return 7;
    const bool isFlac = (quint8(packet.front()) & ~flacLastBlock) == flacComments;
    return isFlac ? 4 : 0; // Speex has none
}

// How many comments the stream of the page at `page` has, if that is its second page, else 0. There they
// begin: a mark, the length of the encoder's name, the name, the number of comments.
quint32 oggCommentCount(int file, qint64 page)
{
    std::array<quint8, 1> segments = {};
    if (littleEndianAt(file, page + oggPageNumber) != 1 || !readAt(file, page + oggHeaderSize - 1, segments))
        return 0;
    std::array<char, 8> packet = {};
    const qint64 begin = page + oggHeaderSize + segments[0];
    if (!readAt(file, begin, packet))
        return 0;
    const qint64 nameLength = begin + commentsMarkLength({packet.data(), packet.size()});
    return littleEndianAt(file, nameLength + 4 + littleEndianAt(file, nameLength));
}

} // namespace

SoundMetadata::Range SoundMetadata::hiddenRange(int file, qint64 size)
{
    std::array<quint8, 5> head = {};
    if (readAt(file, 0, head) && beginsWith(head, flacMark)) {
        const qint64 length = flacBlocksLength(file, head.back() & flacLastBlock);
        return {flacStreamInfoEnd,
                std::clamp(length, qint64(0), std::max(qint64(0), size - flacStreamInfoEnd))};
    }
    return {0, std::min(id3Length(file), size)};
}

void SoundMetadata::endFlacMetadata(std::span<quint8> bytes, qint64 offset)
{
    const qint64 index = qint64(flacMark.size()) - offset;
    if (index >= 0 && index < qint64(bytes.size()))
        bytes[size_t(index)] |= flacLastBlock;
}

bool SoundMetadata::isOgg(int file, qint64 offset)
{
    std::array<quint8, oggMark.size()> mark = {};
    return readAt(file, offset, mark) && beginsWith(mark, oggMark);
}

bool SoundMetadata::hasTooManyOggComments(int file, qint64 begin, qint64 end)
{
    begin = std::max(begin - oggHeaderSize, qint64(0)); // a header may lie across the beginning
    std::array<char, maxSearched + oggHeaderSize> bytes = {};
    const auto wanted = std::min(end - begin, qint64(bytes.size()));
    const auto got = ::pread(file, bytes.data(), size_t(wanted), begin);
    const std::string_view text(bytes.data(), size_t(std::max(got, ssize_t(0))));
    for (auto at = text.find(oggMark); at != text.npos; at = text.find(oggMark, at + 1)) {
        if (oggCommentCount(file, begin + qint64(at)) > maxOggComments)
            return true;
    }
    return false;
}
