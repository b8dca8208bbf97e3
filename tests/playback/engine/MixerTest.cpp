#include "playback/engine/Mixer.h"

#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

// A constant level on both channels for `length` frames, then the end; counts its destruction.
class Constant : public VoiceSource {
public:
    Constant(float left, float right, int64_t length, std::atomic<int>* destroyed = nullptr)
        : remaining(length), left_(left), right_(right), destroyed_(destroyed) {}
    ~Constant() override {
        if (destroyed_) ++*destroyed_;
    }
    int64_t pull(float* stereo, int64_t frames) noexcept override {
        const int64_t n = std::min(frames, remaining);
        for (int64_t i = 0; i < n; ++i) {
            stereo[2 * i] = left_;
            stereo[2 * i + 1] = right_;
        }
        remaining -= n;
        return n;
    }
    int64_t remaining;

private:
    float left_, right_;
    std::atomic<int>* destroyed_;
};

std::vector<float> render(Mixer& mixer, int64_t frames) {
    std::vector<float> out(static_cast<size_t>(frames * 2), -99.0f);
    mixer.render(out.data(), frames);
    return out;
}

} // namespace

TEST(Mixer, VoicesAddUpWithTheirGainsAndEndedSourcesFallSilent) {
    Mixer mixer;
    const int a = mixer.addVoice(std::make_shared<Constant>(0.25f, -0.25f, 3000));
    const int b = mixer.addVoice(std::make_shared<Constant>(0.5f, 0.5f, 1500), 0.5f);
    ASSERT_GE(a, 0);
    ASSERT_NE(a, b);
    const auto out = render(mixer, 2000); // two blocks, the second past b's end
    EXPECT_FLOAT_EQ(out[0], 0.5f);
    EXPECT_FLOAT_EQ(out[1], 0.0f);
    EXPECT_FLOAT_EQ(out[2 * 1499], 0.5f);
    EXPECT_FLOAT_EQ(out[2 * 1500], 0.25f) << "b has ended: only a is left";
    EXPECT_TRUE(mixer.ended(b));
    EXPECT_FALSE(mixer.ended(a));
    mixer.removeVoice(a);
    mixer.removeVoice(b);
    for (float v : render(mixer, 10))
        EXPECT_EQ(v, 0.0f);
}

TEST(Mixer, AGainRampIsLinearAndLandsOnItsTarget) {
    Mixer mixer;
    const int v = mixer.addVoice(std::make_shared<Constant>(1.0f, 1.0f, 1 << 20));
    mixer.setGain(v, 0.0f, 100);
    const auto out = render(mixer, 200);
    EXPECT_NEAR(out[2 * 49], 0.5f, 1e-5) << "half way after 50 of 100 frames";
    EXPECT_EQ(out[2 * 99], 0.0f);
    EXPECT_EQ(out[2 * 150], 0.0f);
    mixer.setGain(v, 2.0f);
    EXPECT_EQ(render(mixer, 1)[0], 2.0f) << "no ramp: at once, from the next block";
}

TEST(Mixer, AFadeOutStartsAfterItsDelayAndASecondGoesOnFromTheLevelReached) {
    Mixer mixer;
    const int v = mixer.addVoice(std::make_shared<Constant>(1.0f, 1.0f, 1 << 20));
    mixer.fadeOut(v, 10, 100);
    auto out = render(mixer, 60);
    EXPECT_EQ(out[2 * 9], 1.0f) << "untouched during the delay";
    EXPECT_NEAR(out[2 * 59], 0.5f, 1e-5) << "half way down after 50 of 100 frames";
    mixer.fadeOut(v, 0, 10);
    out = render(mixer, 11);
    EXPECT_NEAR(out[0], 0.45f, 1e-5);
    EXPECT_NEAR(out[2 * 9], 0.0f, 1e-5);
    EXPECT_TRUE(mixer.fadedOut(v)) << "ended on the frame after the fade, not later";
}

TEST(Mixer, PausedVoicesKeepTheirPlaceAndMetersFollowWhatIsHeard) {
    Mixer mixer;
    auto source = std::make_shared<Constant>(0.5f, 0.0f, 5000);
    const int v = mixer.addVoice(source);
    EXPECT_EQ(mixer.averagePowerDb(v, 0), Mixer::kSilenceDb) << "nothing played yet";
    mixer.setPaused(v, true);
    render(mixer, 1000);
    EXPECT_EQ(source->remaining, 5000);
    mixer.setPaused(v, false);
    render(mixer, 1000);
    EXPECT_EQ(source->remaining, 4000);
    EXPECT_NEAR(mixer.averagePowerDb(v, 0), 20 * std::log10(0.5), 1e-4);
    EXPECT_EQ(mixer.averagePowerDb(v, 1), Mixer::kSilenceDb);
    EXPECT_EQ(mixer.averagePowerDb(99, 0), Mixer::kSilenceDb);
}

TEST(Mixer, SlotsRunOutAndComeBack) {
    Mixer mixer;
    std::vector<int> voices;
    for (int i = 0; i < Mixer::kMaxVoices; ++i)
        voices.push_back(mixer.addVoice(std::make_shared<Constant>(0, 0, 1)));
    EXPECT_EQ(mixer.addVoice(std::make_shared<Constant>(0, 0, 1)), -1);
    mixer.removeVoice(voices[7]);
    EXPECT_EQ(mixer.addVoice(std::make_shared<Constant>(0, 0, 1)), voices[7]);
    EXPECT_EQ(mixer.addVoice(nullptr), -1);
}

TEST(Mixer, SourcesAreReplacedWhileTheAudioThreadRunsAndNeverDieThere) {
    Mixer mixer;
    std::atomic<bool> stop{false};
    std::thread audio([&] {
        std::vector<float> out(512 * 2);
        while (!stop)
            mixer.render(out.data(), 512);
    });
    std::atomic<int> destroyed{0};
    const std::thread::id audioId = audio.get_id();
    for (int round = 0; round < 2000; ++round) {
        const int v = mixer.addVoice(std::make_shared<Constant>(0.1f, 0.1f, 1 << 30, &destroyed));
        ASSERT_GE(v, 0);
        mixer.setGain(v, 0.5f, 64);
        mixer.removeVoice(v);
        EXPECT_NE(std::this_thread::get_id(), audioId);
    }
    stop = true;
    audio.join();
    EXPECT_EQ(destroyed.load(), 2000) << "each source released by the control side";
}
