#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>
#include <vector>

/// One channel of sound at 48,000 samples a second, and what there is to hear in it.
struct SoundRecording
{
    static constexpr double rate = 48000;

    /// A stretch that is not silent; in seconds from the beginning.
    struct Sound
    {
        double start;
        double end;
        double length() const { return end - start; }
    };

    std::vector<qint16> samples;

    double length() const { return double(samples.size()) / rate; }

    /// The sounds that are louder than a hundredth, parted by silences of more than `gap` seconds.
    std::vector<Sound> sounds(double gap = 0.02) const
    {
        std::vector<Sound> found;
        for (size_t i = 0; i < samples.size(); ++i) {
            if (std::abs(samples[i]) < 330)
                continue;
            const double at = double(i) / rate;
            if (found.empty() || at - found.back().end > gap)
                found.push_back({at, at});
            found.back().end = double(i + 1) / rate;
        }
        return found;
    }

    /// The pitch in Hz between two moments, from the zero crossings; 0 where there is none.
    double pitch(double from, double to) const
    {
        const auto end = std::min(samples.size(), size_t(std::max(0.0, to) * rate));
        size_t first = 0;
        size_t last = 0;
        int rises = -1;
        bool wasLow = false;
        for (auto i = size_t(std::max(0.0, from) * rate); i < end; ++i) {
            if (wasLow && samples[i] > 330) {
                last = i;
                first = ++rises == 0 ? i : first;
            }
            wasLow = samples[i] < -330 || (wasLow && samples[i] <= 330);
        }
        return rises > 0 ? rises * rate / double(last - first) : 0;
    }

    /// How far the sound between two moments strays from repeating itself every `period` samples.
    int unevenness(double from, double to, size_t period) const
    {
        int most = 0;
        for (auto i = std::max(period, size_t(from * rate)); i < std::min(samples.size(), size_t(to * rate));
             ++i)
            most = std::max(most, std::abs(samples[i] - samples[i - period]));
        return most;
    }
};
