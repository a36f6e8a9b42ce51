#pragma once

#include <QtGlobal>

#include <span>

/// The metadata of sound files that FFmpeg must not see: it would read every cover picture, and compare each
/// comment with all others.
///
/// `file` is a file descriptor; its offset is neither used nor changed. Offsets and lengths are in bytes.
namespace SoundMetadata {

struct Range
{
    qint64 begin = 0;
    qint64 length = 0;
};

/// The ID3v2 tags before the sound, or the metadata blocks of a FLAC file except the first, STREAMINFO.
/// Empty when there are none. `size` is that of the file.
Range hiddenRange(int file, qint64 size);

/// Makes STREAMINFO the last metadata block of a FLAC file. `bytes` are part of the file, from `offset` on.
void endFlacMetadata(std::span<quint8> bytes, qint64 offset);

/// True when an Ogg page begins at `offset`.
bool isOgg(int file, qint64 offset);

/// True when an Ogg stream that begins between `begin` and `end`, at most 32 KiB apart, has more than 1,000
/// comments.
bool hasTooManyOggComments(int file, qint64 begin, qint64 end);

} // namespace SoundMetadata
