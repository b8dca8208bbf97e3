#include "playback/engine/DeviceOutput.h"

#include "../../timeline/model/TimelineFixture.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "project/model/AEAsset.h"
#include "support/EventWait.h"
#include "support/PulseServerTest.h"
#include "support/TestAudio.h"
#include "timeline/model/AETimeLine.h"

#include <QElapsedTimer>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <numbers>

using testenv::PulseNullSink;

namespace {

constexpr int kRate = PulseNullSink::kRate;
constexpr double kToneHz = 1000.0;
const float kHalfScale = static_cast<float>(std::pow(10.0, -6.0 / 20.0));

DeviceOutput::Render sine(float leftAmplitude, float rightAmplitude) {
    return testenv::sineRender(kToneHz, leftAmplitude, rightAmplitude);
}

struct Heard {
    double peakDb = -200;
    // Share of the power at the tone's frequency: 1 for a clean sine.
    double toneShare = 0;
    // Share of 1 ms windows without sound: dropouts.
    double silentShare = 1;
    // Share of samples at full scale.
    double fullScaleShare = 0;
};

// One channel of a recording; its first 100 ms are left out, as the stream may still be starting.
Heard listen(const std::vector<float>& stereo, int channel) {
    Heard heard;
    const size_t skip = kRate / 10;
    const size_t frames = stereo.size() / 2;
    // Whole cycles of the tone (441 samples are 10 of them), so it falls on one frequency bin.
    const size_t n = frames > skip ? (frames - skip) / 441 * 441 : 0;
    if (n == 0) return heard;
    const auto at = [&](size_t i) { return static_cast<double>(stereo[2 * (skip + i) + channel]); };

    double peak = 0, energy = 0, re = 0, im = 0;
    size_t fullScale = 0;
    for (size_t i = 0; i < n; ++i) {
        const double x = at(i);
        peak = std::max(peak, std::abs(x));
        energy += x * x;
        fullScale += std::abs(x) > 0.99 ? 1 : 0;
        const double w = 2.0 * std::numbers::pi * kToneHz * static_cast<double>(i) / kRate;
        re += x * std::cos(w);
        im -= x * std::sin(w);
    }
    size_t silent = 0, windows = 0;
    for (size_t start = 0; start + 44 <= n; start += 44, ++windows) {
        double loudest = 0;
        for (size_t i = start; i < start + 44; ++i)
            loudest = std::max(loudest, std::abs(at(i)));
        silent += loudest < 0.05 ? 1 : 0;
    }
    heard.peakDb = peak > 0 ? 20.0 * std::log10(peak) : -200;
    heard.toneShare = energy > 0 ? 2.0 * (re * re + im * im) / (static_cast<double>(n) * energy) : 0;
    heard.silentShare = static_cast<double>(silent) / static_cast<double>(windows);
    heard.fullScaleShare = static_cast<double>(fullScale) / static_cast<double>(n);
    return heard;
}

void expectCleanTone(const std::vector<float>& recording, int channel, double peakDb) {
    ASSERT_GE(recording.size(), size_t(2 * kRate / 4)) << "the recorder delivered too little";
    const Heard heard = listen(recording, channel);
    EXPECT_NEAR(heard.peakDb, peakDb, 0.5) << "channel " << channel;
    EXPECT_GT(heard.toneShare, 0.95) << "channel " << channel << ": not a clean 1 kHz tone";
    EXPECT_LT(heard.silentShare, 0.02) << "channel " << channel << ": dropouts";
}

class DeviceOutputTest : public testenv::PulseServerTest {
protected:
    // A busy machine may starve a stream for a moment: a dropout that comes back three times is ours.
    static std::vector<float> recordClean(const QByteArray& sink, int ms) {
        std::vector<float> heard;
        for (int attempt = 0; attempt < 3; ++attempt) {
            heard = server_->record(sink, ms);
            if (listen(heard, 0).silentShare < 0.02) break;
        }
        return heard;
    }

    // An output that has pulled a fifth of a second, or none.
    static std::unique_ptr<DeviceOutput> started(const QByteArray& id, DeviceOutput::Render render,
                                                 bool int16 = false) {
        QString error;
        auto out = DeviceOutput::open(id, kRate, std::move(render), &error, int16);
        EXPECT_TRUE(out) << error.toStdString();
        if (out && !testenv::waitUntil([&] { return out->framesPulled() > kRate / 5; }, 3000)) {
            ADD_FAILURE() << "the stream did not start";
            out.reset();
        }
        return out;
    }
};

} // namespace

TEST_F(DeviceOutputTest, TheDefaultOutputPlaysTheToneAtTheDeviceRate) {
    auto out = started({}, sine(kHalfScale, kHalfScale));
    ASSERT_TRUE(out);
    EXPECT_EQ(out->deviceId(), PulseNullSink::kSink);
    EXPECT_EQ(out->deviceDescription(), PulseNullSink::kSinkDescription);
    EXPECT_EQ(out->sampleFormat(), DeviceOutput::SampleFormat::float32);
    // The server may grant less than asked (here about 60 ms of 80), never more.
    EXPECT_GT(out->bufferFrames(), kRate / 50);
    EXPECT_LE(out->bufferFrames(), kRate * DeviceOutput::kBufferMs / 1000);
    EXPECT_TRUE(out->running());

    // The recorder blocks the main thread throughout, so this also shows the stream does not need it.
    QElapsedTimer wall;
    wall.start();
    const int64_t before = out->framesPulled();
    const std::vector<float> heard = recordClean(PulseNullSink::kSink, 1000);
    const double perSecond = static_cast<double>(out->framesPulled() - before) * 1000.0 / wall.elapsed();
    EXPECT_NEAR(perSecond, kRate, 0.2 * kRate);
    EXPECT_TRUE(out->running());
    expectCleanTone(heard, 0, -6.0);
    expectCleanTone(heard, 1, -6.0);
}

TEST_F(DeviceOutputTest, TheSixteenBitPathPlaysTheSameAndClipsOverloads) {
    // The right channel is driven 3.5 dB over full scale.
    auto out = started({}, sine(kHalfScale, 1.5f), true);
    ASSERT_TRUE(out);
    EXPECT_EQ(out->sampleFormat(), DeviceOutput::SampleFormat::int16);
    const std::vector<float> heard = recordClean(PulseNullSink::kSink, 600);
    expectCleanTone(heard, 0, -6.0);
    // Clipped, not wrapped round: flat tops wherever 1.5·sin passes 1, a share of 1 - (2/π)·asin(2/3).
    const Heard right = listen(heard, 1);
    EXPECT_NEAR(right.peakDb, 0.0, 0.1);
    EXPECT_NEAR(right.fullScaleShare, 1.0 - 2.0 / std::numbers::pi * std::asin(2.0 / 3.0), 0.05);
}

// The outputs are listed with the default first; a chosen one gets the sound and the default none; an
// unknown one is refused with a message and never rendered for.
TEST_F(DeviceOutputTest, AChosenOutputGetsTheSoundAndTheDefaultNone) {
    const auto devices = outputDevices();
    ASSERT_EQ(devices.size(), 2u);
    EXPECT_EQ(devices[0].first, PulseNullSink::kSink);
    EXPECT_EQ(devices[1].first, PulseNullSink::kOtherSink);
    EXPECT_EQ(devices[0].second, PulseNullSink::kSinkDescription);
    EXPECT_EQ(devices[1].second, PulseNullSink::kOtherSinkDescription);
    std::atomic<int64_t> calls{0};
    QString error;
    EXPECT_FALSE(DeviceOutput::open(
        "no-such-sink", kRate, [&calls](float*, int64_t) { ++calls; }, &error));
    EXPECT_TRUE(error.contains("no-such-sink")) << error.toStdString();
    EXPECT_EQ(calls, 0);

    auto out = started(PulseNullSink::kOtherSink, sine(kHalfScale, kHalfScale));
    ASSERT_TRUE(out);
    EXPECT_EQ(out->deviceId(), PulseNullSink::kOtherSink);
    expectCleanTone(recordClean(PulseNullSink::kOtherSink, 400), 0, -6.0);
    const std::vector<float> quiet = server_->record(PulseNullSink::kSink, 400);
    ASSERT_FALSE(quiet.empty());
    EXPECT_EQ(listen(quiet, 0).silentShare, 1.0);
}

TEST_F(DeviceOutputTest, RenderIsNeverCalledOnceTheOutputIsGone) {
    std::atomic<int64_t> calls{0};
    for (int round = 0; round < 3; ++round) {
        auto out = started({}, [&calls](float* stereo, int64_t frames) {
            std::fill(stereo, stereo + 2 * frames, 0.0f);
            ++calls;
        });
        ASSERT_TRUE(out);
        const int64_t before = calls;
        ASSERT_TRUE(testenv::waitUntil([&] { return calls > before + 2; }, 3000)) << "round " << round;
        out.reset();
        const int64_t after = calls;
        QThread::msleep(150);
        EXPECT_EQ(calls, after) << "round " << round;
    }
}

TEST_F(DeviceOutputTest, ALostServerStopsTheOutputAndANewOutputPlaysOnceItIsBack) {
    auto out = started({}, sine(kHalfScale, kHalfScale));
    ASSERT_TRUE(out);
    server_.reset();
    EXPECT_TRUE(testenv::waitUntil([&] { return !out->running(); }, 3000)) << "the loss went unnoticed";
    const int64_t pulled = out->framesPulled();
    QThread::msleep(100);
    EXPECT_EQ(out->framesPulled(), pulled) << "a lost stream pulls nothing";
    out.reset();

    startServer();
    ASSERT_TRUE(server_->available()) << server_->failure().toStdString();
    ASSERT_TRUE(reachable_) << "no output opens on the restarted server";
    auto again = started({}, sine(kHalfScale, kHalfScale));
    ASSERT_TRUE(again);
    expectCleanTone(recordClean(PulseNullSink::kSink, 400), 0, -6.0);
}

TEST_F(DeviceOutputTest, ATimelinePlaysThroughTheEngineToTheDevice) {
    TestAudio make;
    const QString tone = make.tone("tone.wav", 4, kToneHz, 44100, 1, 0.5012);
    auto asset = tlfixture::asset("tone", 4.0);
    asset->originalFilePath = tone;
    asset->ingestedFilePath = tone;
    asset->ingested = true;
    auto tl = tlfixture::timeline();
    tl->appendItemInMainLane(asset, std::nullopt, false);

    AudioEngine& engine = sharedAudioEngine();
    ASSERT_TRUE(engine.startDeviceOutput()) << engine.outputDescription().toStdString();
    EXPECT_EQ(engine.outputDescription(), PulseNullSink::kSinkDescription);
    QElapsedTimer wall;
    wall.start();
    const int64_t before = engine.framesPlayed();
    tl->play(0.0);
    testenv::pumpEventsFor(300);
    const std::vector<float> heard = recordClean(PulseNullSink::kSink, 1000);
    const double seconds = static_cast<double>(wall.elapsed()) / 1000.0;
    EXPECT_NEAR(tl->getPlayHeadTime(), seconds, 0.05) << "the transport runs on the wall clock";
    EXPECT_NEAR(static_cast<double>(engine.framesPlayed() - before) / seconds, kRate, 0.2 * kRate);
    expectCleanTone(heard, 0, -6.0);
    expectCleanTone(heard, 1, -6.0);
    tl->pause();
    engine.startNullOutput();
}
