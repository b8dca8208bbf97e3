#pragma once
// A private sound server whose default input hears the default output, a tone played into that
// output, and the measures a recorded take is checked by.

#include "dsp/SndFile.h"
#include "playback/engine/DeviceOutput.h"
#include "support/EventWait.h"
#include "support/PulseNullSink.h"

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

// Frequency from the first and last rising zero crossings, interpolated within their samples.
inline double frequencyOf(const std::vector<float>& x, int rate, size_t from) {
    double first = -1, last = -1;
    int crossings = 0;
    for (size_t i = std::max<size_t>(from, 1); i < x.size(); ++i) {
        if (x[i - 1] < 0 && x[i] >= 0) {
            const double t = double(i - 1) + x[i - 1] / (x[i - 1] - x[i]);
            if (first < 0) first = t;
            last = t;
            ++crossings;
        }
    }
    return crossings > 1 ? (crossings - 1) * rate / (last - first) : 0.0;
}

// The peak level of a sine with that RMS, dB.
inline double sinePeakDbOf(const std::vector<float>& x, size_t from, size_t to) {
    double energy = 0;
    to = std::min(to, x.size());
    for (size_t i = from; i < to; ++i)
        energy += double(x[i]) * x[i];
    return to > from ? 20.0 * std::log10(std::sqrt(2.0 * energy / double(to - from))) : -200.0;
}

class RecordingServerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        server_ = std::make_unique<PulseNullSink>();
        reachable_ = false;
        if (!server_->available()) return;
        // Qt keeps the server it met first and looks again only every 3 s after losing it.
        reachable_ = testenv::waitUntil(
            [] {
                for (const QAudioDevice& d : QMediaDevices::audioInputs())
                    if (d.id() == PulseNullSink::kSource) return true;
                return false;
            },
            8000);
    }
    static void TearDownTestSuite() { server_.reset(); }

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

    static inline std::unique_ptr<PulseNullSink> server_;
    static inline bool reachable_ = false;
};

} // namespace recordingtest
