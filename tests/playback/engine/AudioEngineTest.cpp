#include "playback/engine/AudioEngine.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {
// Frames numbered from 1 on the left channel, for `length` frames.
class Counter : public VoiceSource {
public:
    explicit Counter(int64_t length) : remaining_(length) {}
    int64_t pull(float* stereo, int64_t frames) noexcept override {
        const int64_t n = std::min(frames, remaining_);
        for (int64_t i = 0; i < n; ++i) {
            stereo[2 * i] = static_cast<float>(++count_);
            stereo[2 * i + 1] = 0.0f;
        }
        remaining_ -= n;
        return n;
    }

private:
    int64_t remaining_;
    int64_t count_ = 0;
};
} // namespace

TEST(AudioEngine, OfflineRendersWhatIsAskedAndTheClockIsTheFramesRendered) {
    AudioEngine engine;
    engine.startOffline();
    engine.mixer().addVoice(std::make_shared<Counter>(1000));
    const auto first = engine.renderOffline(600);
    ASSERT_EQ(first.size(), 1200u);
    EXPECT_EQ(first[0], 1.0f);
    EXPECT_EQ(first[2 * 599], 600.0f);
    const auto second = engine.renderOffline(600);
    EXPECT_EQ(second[0], 601.0f) << "the voice goes on where it was";
    EXPECT_EQ(second[2 * 400], 0.0f) << "and falls silent at its end";
    EXPECT_EQ(engine.framesPlayed(), 1200);
    EXPECT_DOUBLE_EQ(engine.secondsPlayed(), 1200.0 / 44100);
}

TEST(AudioEngine, TheNullOutputConsumesByTheWallClock) {
    AudioEngine engine;
    EXPECT_TRUE(engine.renderOffline(10).empty()) << "not in offline mode";
    const int voice = engine.mixer().addVoice(std::make_shared<Counter>(AudioEngine::kRate / 10));
    const auto start = std::chrono::steady_clock::now();
    engine.startNullOutput();
    EXPECT_EQ(engine.mode(), AudioEngine::Mode::null);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double played = engine.secondsPlayed();
    EXPECT_NEAR(played, wall, 0.05) << "the clock follows the wall clock";
    EXPECT_TRUE(engine.mixer().ended(voice)) << "a 0.1 s voice has ended after 0.3 s";
    engine.stop();
    const int64_t stoppedAt = engine.framesPlayed();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(engine.framesPlayed(), stoppedAt) << "a stopped output consumes nothing";
}
