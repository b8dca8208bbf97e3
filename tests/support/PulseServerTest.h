#pragma once
// Tests on the private sound server: the server shared by the whole process, a wait until Qt
// Multimedia plays through it and lists its input, and tones played into its default output.

#include "playback/engine/DeviceOutput.h"
#include "support/EventWait.h"
#include "support/PulseNullSink.h"

#include <QAudioDevice>
#include <QMediaDevices>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <numbers>

namespace testenv {

// A sine of `hz` on each channel, its phase kept across calls (the state belongs to the audio thread).
inline DeviceOutput::Render sineRender(double hz, float leftAmplitude, float rightAmplitude) {
    auto phase = std::make_shared<double>(0.0);
    return [phase, hz, leftAmplitude, rightAmplitude](float* stereo, int64_t frames) {
        const double step = 2.0 * std::numbers::pi * hz / PulseNullSink::kRate;
        for (int64_t i = 0; i < frames; ++i) {
            const auto s = static_cast<float>(std::sin(*phase));
            stereo[2 * i] = leftAmplitude * s;
            stereo[2 * i + 1] = rightAmplitude * s;
            *phase = std::fmod(*phase + step, 2.0 * std::numbers::pi);
        }
    };
}

class PulseServerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { startServer(); }
    // The server stays for the suites after this one.
    static void TearDownTestSuite() {}

    // Qt keeps the server it met first and looks again only every 3 s after losing it: wait until it
    // plays through this one and lists its input.
    static void startServer() {
        if (!server_ || !server_->available()) server_ = std::make_unique<PulseNullSink>();
        reachable_ = false;
        if (!server_->available()) return;
        reachable_ = waitUntil(
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

    void SetUp() override {
        if (!server_->available())
            GTEST_SKIP() << "no private PulseAudio daemon could be started: "
                         << server_->failure().toStdString();
        ASSERT_TRUE(reachable_) << "Qt Multimedia cannot play through the private server or list its input";
    }

    // A sine at `hz` and `peakDb` into the default output for as long as the result lives.
    static std::unique_ptr<DeviceOutput> playTone(double hz, double peakDb) {
        const auto amplitude = static_cast<float>(std::pow(10.0, peakDb / 20.0));
        QString error;
        auto out = DeviceOutput::open(PulseNullSink::kSink, PulseNullSink::kRate,
                                      sineRender(hz, amplitude, amplitude), &error);
        EXPECT_TRUE(out) << error.toStdString();
        // The sink's monitor carries the tone a moment after the stream starts.
        pumpEventsFor(300);
        return out;
    }

    static inline std::unique_ptr<PulseNullSink>& server_ = sharedPulseNullSink();
    static inline bool reachable_ = false;
};

} // namespace testenv
