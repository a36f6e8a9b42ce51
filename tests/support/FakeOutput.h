#pragma once

#include "platform/AudioOutput.h"

#include <algorithm>
#include <limits>
#include <malloc.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/allocator_interface.h>
#endif

/// A sound server that does what the test says: nothing is played and nothing granted by itself.
class FakeOutput final : public AudioOutput
{
public:
    /// Makes fakes; `last` is the newest.
    static AudioOutputFactory factory(FakeOutput *&last)
    {
        return [&last] {
            auto made = std::make_unique<FakeOutput>();
            last = made.get();
            return made;
        };
    }

    /// What the whole program has on its heap.
    static size_t allocatedBytes()
    {
#ifdef __SANITIZE_ADDRESS__
        return __sanitizer_get_current_allocated_bytes();
#else
        const auto heap = mallinfo2();
        return heap.uordblks + heap.hblkhd;
#endif
    }

    void open()
    {
        isReady = true;
        Q_EMIT opened();
    }
    void play(qint64 frames)
    {
        Q_EMIT progressed(played += frames);
    }
    void grant(qint64 frames)
    {
        room += frames;
        Q_EMIT writable();
    }

    bool isConnected() const override
    {
        return isReady;
    }
    bool isOpen() const override
    {
        return isReady;
    }
    qint64 write(std::span<const SoundFrame> frames) override
    {
        const qint64 count = isReady ? std::min(room, qint64(frames.size())) : 0;
        room -= count;
        written += count;
        return count;
    }
    void drain() override {}
    void requestTimingUpdate() override {}
    void finish() override {}
    void reopen() override {}

    bool isReady = false;
    qint64 room = std::numeric_limits<qint64>::max();
    qint64 written = 0;
    qint64 played = 0;
};
