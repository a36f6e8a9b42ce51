#pragma once

#include "sound/SoundFile.h"

#include <span>
#include <vector>

/// The sliding window of a playback that is decoded and still needed.
///
/// A playback is a file from some position on and then its repeats, counted in frames from 0. decode()
/// extends the window at its end, dropBefore() trims it at its beginning.
class SoundBuffer final
{
    Q_DISABLE_COPY_MOVE(SoundBuffer)

public:
    explicit SoundBuffer(std::unique_ptr<SoundFile> file);

    /// The decoded frames from number `first` on. Empty when `first` has been dropped or is not decoded yet.
    std::span<const SoundFrame> from(qint64 first) const;

    /// The number of the first frame that is not decoded yet.
    qint64 decodedEnd() const { return begin + qint64(frames.size()); }

    /// True when the last repeat is decoded to its end, or to where the file is damaged.
    bool isComplete() const { return complete; }

    /// True when the file could not be decoded to its end.
    bool isDamaged() const { return damaged; }

    /// The frame at which the playback ends: exact once isComplete(). The largest number for an endless one.
    qint64 playbackEnd() const;

    /// The position in the file, in seconds, of frame number `frame`.
    double position(qint64 frame) const;

    /// The length of the file in seconds, see SoundFile.
    double duration() const { return file->duration(); }

    /// Begins a playback at `seconds` with `loops` repeats (negative: endless). False when nothing can be
    /// decoded there.
    bool start(double seconds, int loops);

    /// Decodes about 0.2 s more.
    void decode();

    /// Frees the frames before number `frame`, half a second or more at a time.
    void dropBefore(qint64 frame);

private:
    void startNextLoop();
    void fail();

    std::unique_ptr<SoundFile> file;
    std::vector<SoundFrame> frames;
    qint64 begin = 0;     // the number of frames.front()
    double startedAt = 0; // seconds
    int repeats = 0;      // in total
    int repeatsLeft = 0;
    bool loopHasAudio = false;
    bool complete = false;
    bool damaged = false;
};
