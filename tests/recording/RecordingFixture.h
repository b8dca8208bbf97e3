#pragma once
// A private sound server whose default input hears the default output, a tone played into that
// output, and the measures a recorded take is checked by.

#include "dsp/SndFile.h"
#include "playback/engine/DeviceOutput.h"
#include "support/EventWait.h"
#include "support/PulseNullSink.h"

#include <QAudioDevice>
#include <QElapsedTimer>
#include <QMediaDevices>
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
    Take take;
    SndFile file(path);
    if (!file.isOpen()) return take;
    take.rate = file.sampleRate();
    take.channels = file.channels();
    take.subFormat = file.subFormat();
    std::vector<float> all(static_cast<size_t>(file.frames() * file.channels()));
    const int64_t frames = file.readFrames(all.data(), file.frames());
    for (int64_t i = 0; i < frames; ++i)
        take.left.push_back(all[static_cast<size_t>(i * file.channels())]);
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

class RecordingServerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!server_ || !server_->available()) server_ = std::make_unique<PulseNullSink>();
        reachable_ = false;
        if (!server_->available()) return;
        // Qt keeps the server it met first and looks again only every 3 s after losing it: wait until
        // it plays through this one and lists its input.
        reachable_ = testenv::waitUntil(
            [] {
                QString error;
                const bool plays =
                    DeviceOutput::open(
                        PulseNullSink::kSink, PulseNullSink::kRate,
                        [](float* stereo, int64_t frames) { std::fill(stereo, stereo + 2 * frames, 0.0f); },
                        &error) != nullptr;
                const QList<QAudioDevice> inputs = QMediaDevices::audioInputs();
                return plays && std::any_of(inputs.begin(), inputs.end(), [](const QAudioDevice& d) {
                           return d.id() == PulseNullSink::kSource;
                       });
            },
            10000);
    }
    // The server stays for the suites after this one.
    static void TearDownTestSuite() {}

    void SetUp() override {
        if (!server_->available())
            GTEST_SKIP() << "no private PulseAudio daemon could be started: "
                         << server_->failure().toStdString();
        ASSERT_TRUE(reachable_) << "Qt Multimedia does not list the private server's input";
    }

    // A sine at kToneHz and kToneDb into the default output for as long as the result lives.
    static std::unique_ptr<DeviceOutput> playTone() {
        auto phase = std::make_shared<double>(0.0);
        const auto amplitude = static_cast<float>(std::pow(10.0, kToneDb / 20.0));
        QString error;
        auto out = DeviceOutput::open(
            PulseNullSink::kSink, PulseNullSink::kRate,
            [phase, amplitude](float* stereo, int64_t frames) {
                const double step = 2.0 * std::numbers::pi * kToneHz / PulseNullSink::kRate;
                for (int64_t i = 0; i < frames; ++i) {
                    const auto s = amplitude * static_cast<float>(std::sin(*phase));
                    stereo[2 * i] = stereo[2 * i + 1] = s;
                    *phase = std::fmod(*phase + step, 2.0 * std::numbers::pi);
                }
            },
            &error);
        EXPECT_TRUE(out) << error.toStdString();
        // The sink's monitor carries the tone a moment after the stream starts.
        testenv::pumpEventsFor(300);
        return out;
    }

    static inline std::unique_ptr<PulseNullSink>& server_ = testenv::sharedPulseNullSink();
    static inline bool reachable_ = false;
};

} // namespace recordingtest
