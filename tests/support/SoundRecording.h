#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstdlib>
#include <vector>

/// One channel of sound at 48,000 samples per second. Times are in seconds from its beginning.
struct SoundRecording
{
    static constexpr double rate = 48000;

    struct Sound
    {
        double start;
        double end;
        double length() const { return end - start; }
    };

    std::vector<qint16> samples;

    double length() const { return double(samples.size()) / rate; }

    /// The sounds above 1 % of full volume, separated by silences of more than 20 ms.
    std::vector<Sound> sounds() const
    {
        std::vector<Sound> found;
        for (size_t i = 0; i < samples.size(); ++i) {
            if (std::abs(samples[i]) < 330)
                continue;
            const double at = double(i) / rate;
            if (found.empty() || at - found.back().end > 0.02)
                found.push_back({at, at});
            found.back().end = double(i + 1) / rate;
        }
        return found;
    }

    /// By how much the samples between two moments differ at most from those `period` samples earlier.
    int unevenness(double from, double to, size_t period) const
    {
        int most = 0;
        const auto end = std::min(samples.size(), size_t(to * rate));
        for (auto i = std::max(period, size_t(from * rate)); i < end; ++i)
            most = std::max(most, std::abs(samples[i] - samples[i - period]));
        return most;
    }
};
