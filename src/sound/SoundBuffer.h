#pragma once

#include "sound/SoundFile.h"

#include <span>
#include <vector>

/// The stretch of a playback that has been decoded and is still needed.
///
/// A playback is a file from some position on and then its repeats, counted in frames from 0. The
/// stretch moves along: decode() lengthens it at its end, dropBefore() shortens it at its beginning.
class SoundBuffer final
{
    Q_DISABLE_COPY_MOVE(SoundBuffer)

public:
    explicit SoundBuffer(std::unique_ptr<SoundFile> file);

    /// The frames from number `first` on, as far as they are decoded and not dropped.
    std::span<const SoundFrame> from(qint64 first) const;

    /// The number of the first frame that is not decoded yet.
    qint64 decodedEnd() const { return begin + qint64(frames.size()); }

    /// True when everything up to the end of the last repeat is decoded, or up to where the file is damaged.
    bool isComplete() const { return complete; }

    /// True when the file could not be decoded to its end.
    bool isDamaged() const { return damaged; }

    /// Where the playback ends: exact once isComplete(). The largest number for one that never ends.
    qint64 playbackEnd() const;

    /// The position in the file, in seconds, of frame number `frame`.
    double position(qint64 frame) const;

    /// The length of the file in seconds, see SoundFile.
    double duration() const { return file->duration(); }

    /// Begins a playback at `seconds` with `loops` repeats (negative: endless ones). False when the file
    /// cannot be read there.
    bool start(double seconds, int loops);

    /// Decodes one more piece, about 0.2 s.
    void decode();

    void dropBefore(qint64 frame);

private:
    void nextPass();
    void giveUp();

    std::unique_ptr<SoundFile> file;
    std::vector<SoundFrame> frames;
    qint64 begin = 0;     // the number of frames.front()
    double startedAt = 0; // seconds
    int repeats = 0;      // in all
    int repeatsLeft = 0;
    bool passHasSound = false;
    bool complete = false;
    bool damaged = false;
};
