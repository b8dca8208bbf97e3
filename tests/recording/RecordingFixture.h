#pragma once
// A private sound server whose default input hears the default output, a tone played into that
// output, and the measures a recorded take is checked by.

#include "support/PulseServerTest.h"
#include "support/TestAudio.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <numbers>
#include <vector>

namespace recordingtest {

using testenv::PulseNullSink;

constexpr double kToneHz = 440.0;
constexpr double kToneDb = -6.0; // peak, dB below full scale

// One channel of a file, as float.
struct Take {
    int rate = 0;
    int channels = 0;
    int subFormat = 0;
    std::vector<float> left;
    double seconds() const { return rate > 0 ? double(left.size()) / rate : 0.0; }
};

inline Take readTake(const QString& path) {
    const Decoded d = TestAudio::decode(path);
    Take take{d.rate, d.channels, d.subFormat, {}};
    for (int64_t i = 0; i < d.frames; ++i)
        take.left.push_back(d.samples[static_cast<size_t>(i * d.channels)]);
    return take;
}

inline double powerAt(const std::vector<float>& x, int rate, size_t from, size_t to, double hz) {
    double re = 0, im = 0;
    for (size_t i = from; i < to; ++i) {
        const double w = 2.0 * std::numbers::pi * hz * double(i) / rate;
        re += x[i] * std::cos(w);
        im -= x[i] * std::sin(w);
    }
    return re * re + im * im;
}

// The strongest frequency near the tone over (at most) the second after `from`: a spectral peak, so a
// short gap in the take does not move it.
inline double frequencyOf(const std::vector<float>& x, int rate, size_t from) {
    const size_t to = std::min(x.size(), from + static_cast<size_t>(rate));
    if (to <= from) return 0.0;
    const auto peakIn = [&](double lo, double hi, double step) {
        double best = lo, bestPower = -1;
        for (double hz = lo; hz <= hi; hz += step) {
            const double p = powerAt(x, rate, from, to, hz);
            if (p > bestPower) {
                bestPower = p;
                best = hz;
            }
        }
        return best;
    };
    const double coarse = peakIn(kToneHz - 40, kToneHz + 40, 1.0);
    return peakIn(coarse - 1.0, coarse + 1.0, 0.05);
}

// The peak level of a sine with the median RMS of its 20 ms windows, dB.
inline double sinePeakDbOf(const std::vector<float>& x, size_t from, size_t to, int rate) {
    to = std::min(to, x.size());
    const auto window = static_cast<size_t>(rate / 50);
    std::vector<double> levels;
    for (size_t start = from; start + window <= to; start += window) {
        double energy = 0;
        for (size_t i = start; i < start + window; ++i)
            energy += double(x[i]) * x[i];
        levels.push_back(std::sqrt(2.0 * energy / double(window)));
    }
    if (levels.empty()) return -200.0;
    std::nth_element(levels.begin(), levels.begin() + std::ptrdiff_t(levels.size() / 2), levels.end());
    const double median = levels[levels.size() / 2];
    return median > 0 ? 20.0 * std::log10(median) : -200.0;
}

class RecordingServerTest : public testenv::PulseServerTest {
protected:
    static std::unique_ptr<DeviceOutput> playTone() { return PulseServerTest::playTone(kToneHz, kToneDb); }
};

} // namespace recordingtest
