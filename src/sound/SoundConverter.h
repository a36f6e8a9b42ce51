#pragma once

#include "sound/SoundFrame.h"

#include <memory>
#include <vector>

struct AVFrame;
struct SwrContext;

/// Converts decoded audio of any sample rate, sample format and channel layout to SoundFrames.
///
/// The resampler keeps its state between calls, so that consecutive chunks join without a gap.
class SoundConverter final
{
    Q_DISABLE_COPY_MOVE(SoundConverter)

public:
    SoundConverter() = default;

    /// Appends `count` of the samples in `frame`, from its sample `first` on, to `out`. The
    /// resampler may hold the last of them back until the next call. False when the format cannot be
    /// converted.
    bool convert(const AVFrame &frame, int first, int count, std::vector<SoundFrame> &out);

    /// Appends what is held back, and resets the resampler.
    void flush(std::vector<SoundFrame> &out);

private:
    struct Format
    {
        int rate = 0;
        int sampleFormat = -1;
        int channels = 0;
        quint64 layout = 0;
        bool operator==(const Format &) const = default;
    };
    struct Free
    {
        void operator()(SwrContext *context) const;
    };

    static Format formatOf(const AVFrame &frame);
    bool configure(const Format &wanted);
    void process(const quint8 **in, int count, std::vector<SoundFrame> &out);

    std::unique_ptr<SwrContext, Free> resampler;
    Format format;
};
