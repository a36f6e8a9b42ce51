#pragma once

#include "sound/SoundFrame.h"

#include <memory>
#include <vector>

struct AVFrame;
struct SwrContext;

/// Turns decoded sound of any rate, sample format and number of channels into SoundFrames.
///
/// It goes on from one call to the next, so that sound that was cut into pieces comes out whole.
class SoundConverter final
{
    Q_DISABLE_COPY_MOVE(SoundConverter)

public:
    SoundConverter() = default;

    /// Appends `count` of the samples in `frame`, from its sample `first` on, to `out`. The last of them
    /// may come with the next call only. Returns false when the format cannot be converted.
    bool convert(const AVFrame &frame, int first, int count, std::vector<SoundFrame> &out);

    /// Appends what is still held back; what comes next does not continue it.
    void finish(std::vector<SoundFrame> &out);

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
    bool prepare(const Format &wanted);
    void run(const quint8 **in, int count, std::vector<SoundFrame> &out);

    std::unique_ptr<SwrContext, Free> resampler;
    Format format;
};
