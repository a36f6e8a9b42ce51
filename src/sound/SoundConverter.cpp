#include "sound/SoundConverter.h"

#include <algorithm>
#include <array>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int minRate = 4000;
constexpr int maxRate = 384000;

using Planes = std::array<const quint8 *, AV_NUM_DATA_POINTERS>;

// Pointers to sample `first` of each channel; one for all channels when they are interleaved.
Planes planesFrom(const AVFrame &frame, int first)
{
    const auto sampleFormat = AVSampleFormat(frame.format);
    const bool planar = av_sample_fmt_is_planar(sampleFormat);
    const int stride = av_get_bytes_per_sample(sampleFormat) * (planar ? 1 : frame.ch_layout.nb_channels);
    Planes planes = {};
    for (int i = 0; i < (planar ? frame.ch_layout.nb_channels : 1); ++i)
        planes[size_t(i)] = frame.extended_data[i] + ptrdiff_t(first) * stride;
    return planes;
}

} // namespace

void SoundConverter::Free::operator()(SwrContext *context) const
{
    swr_free(&context);
}

bool SoundConverter::convert(const AVFrame &frame, int first, int count, std::vector<SoundFrame> &out)
{
    const Format wanted = formatOf(frame);
    if (!resampler || wanted != format) {
        flush(out);
        if (!configure(wanted))
            return false;
    }
    auto planes = planesFrom(frame, first);
    process(planes.data(), count, out);
    return true;
}

void SoundConverter::flush(std::vector<SoundFrame> &out)
{
    if (resampler)
        process(nullptr, 0, out);
    resampler.reset();
}

SoundConverter::Format SoundConverter::formatOf(const AVFrame &frame)
{
    AVChannelLayout layout = {};
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_NATIVE)
        layout.u.mask = frame.ch_layout.u.mask;
    else
        av_channel_layout_default(&layout, frame.ch_layout.nb_channels);
    return {frame.sample_rate, frame.format, frame.ch_layout.nb_channels, layout.u.mask};
}

bool SoundConverter::configure(const Format &wanted)
{
    AVChannelLayout in = {};
    if (wanted.rate < minRate || wanted.rate > maxRate || wanted.channels > AV_NUM_DATA_POINTERS ||
        av_channel_layout_from_mask(&in, wanted.layout) < 0)
        return false;
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    SwrContext *context = nullptr;
    swr_alloc_set_opts2(&context, &stereo, AV_SAMPLE_FMT_S16, sampleRate, &in,
                        AVSampleFormat(wanted.sampleFormat), wanted.rate, 0, nullptr);
    resampler.reset(context);
    format = wanted;
    // Mono plays at full level on both channels: libswresample would attenuate it by 3 dB.
    const double unattenuated[] = {1, 1};
    if (context && wanted.channels == 1)
        swr_set_matrix(context, unattenuated, 1);
    if (context && swr_init(context) >= 0)
        return true;
    resampler.reset();
    return false;
}

void SoundConverter::process(const quint8 **in, int count, std::vector<SoundFrame> &out)
{
    const auto before = out.size();
    const int capacity = std::max(0, swr_get_out_samples(resampler.get(), count));
    out.resize(before + size_t(capacity));
    auto *target = reinterpret_cast<quint8 *>(out.data() + before);
    const int converted = capacity > 0 ? swr_convert(resampler.get(), &target, capacity, in, count) : 0;
    out.resize(before + size_t(std::max(0, converted)));
}
