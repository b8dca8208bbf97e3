#include "playback/RPlayer.h"

#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "support/EventWait.h"
#include "support/TestAudio.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <thread>

namespace {

// RMS in dB of the left channel.
double rmsDb(const std::vector<float>& stereo, size_t fromFrame = 0) {
    double sum = 0;
    size_t n = 0;
    for (size_t i = fromFrame * 2; i < stereo.size(); i += 2, ++n)
        sum += static_cast<double>(stereo[i]) * stereo[i];
    return n ? 10 * std::log10(sum / static_cast<double>(n)) : -160.0;
}

class RPlayerTest : public ::testing::Test {
protected:
    void SetUp() override { sharedAudioEngine().startOffline(); }
    void TearDown() override { sharedAudioEngine().startNullOutput(); }

    // Lets the decoding threads fill their rings, then renders.
    static std::vector<float> render(double seconds) {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        return sharedAudioEngine().renderOffline(static_cast<int64_t>(seconds * AudioEngine::kRate));
    }

    TestAudio make;
    // A sine at -6 dB of full scale peaks: RMS about -9 dB.
    QString tone = make.sine("tone.wav", 44100, 2, 16, 2.0, -6.0);
};

} // namespace

TEST_F(RPlayerTest, PlaysAtItsVolumeAndKeepsItsPlaceAcrossAPause) {
    auto player = std::make_shared<RPlayer>("p1", tone);
    EXPECT_EQ(player->getMeteringDB(0), -160.0) << "no voice, no level";
    player->play();
    EXPECT_TRUE(player->playing());
    const double full = rmsDb(render(0.5));
    EXPECT_NEAR(full, -9.03, 0.1);
    EXPECT_NEAR(player->getMeteringDB(0), -9.03, 0.2);
    EXPECT_NEAR(player->currentTime(), 0.5, 0.001);
    player->setVolumeDB(-6.0);
    EXPECT_NEAR(rmsDb(render(0.25), 441), full - 6.0, 0.1) << "after the 5 ms glide";
    EXPECT_NEAR(player->getVolumeDB(), -6.0, 1e-9);
    player->pause();
    EXPECT_FALSE(player->playing());
    EXPECT_NEAR(player->currentTime(), 0.75, 0.001);
    EXPECT_LT(rmsDb(render(0.1)), -150) << "paused: silent";
    player->play();
    render(0.25);
    EXPECT_NEAR(player->currentTime(), 1.0, 0.001) << "resumed where it paused";
    player->stop();
    EXPECT_EQ(player->currentTime(), 0.0);
}

TEST_F(RPlayerTest, TwoPlayersOfOneFileShareItsFactsAndSoundTogether) {
    auto a = std::make_shared<RPlayer>("a", tone);
    auto b = std::make_shared<RPlayer>("b", tone);
    EXPECT_EQ(RPlayer::getPlayer(tone), RPlayer::getPlayer(tone));
    EXPECT_NEAR(a->duration(), 2.0, 1e-6);
    a->play();
    b->play();
    EXPECT_NEAR(rmsDb(render(0.25)), -9.03 + 6.02, 0.1) << "in phase: twice the amplitude";
    a->stop();
    b->stop();
}

// A position past the end is silent and ends at once; the end reached while playing is noticed by the
// tick. Either way the end callback runs once.
TEST_F(RPlayerTest, TheEndEndsThePlayerOnce) {
    int ended = 0;
    const auto onEnd = [&](const std::shared_ptr<RPlayer>&) { ++ended; };
    auto late = std::make_shared<RPlayer>("late", tone, onEnd);
    late->setCurrentTime(5.0);
    late->play();
    EXPECT_FALSE(late->playing());
    EXPECT_LT(rmsDb(render(0.05)), -150);
    EXPECT_TRUE(testenv::waitUntil([&] { return ended == 1; }));

    auto player = std::make_shared<RPlayer>("end", tone, onEnd);
    player->setCurrentTime(1.9);
    player->play(1.0, false);
    render(0.2);
    player->idle();
    EXPECT_FALSE(player->playing());
    EXPECT_TRUE(testenv::waitUntil([&] { return ended == 2; }));
    EXPECT_NEAR(player->currentTime(), 2.0, 1e-6);
    testenv::pumpEventsFor(50);
    EXPECT_EQ(ended, 2);
}

TEST_F(RPlayerTest, TheDuckerGoesDownByTheAmountAndComesBack) {
    auto player = std::make_shared<RPlayer>("duck", tone);
    DuckingPrefs prefs;
    player->doDucking(prefs);
    player->setGlobalVolumeDB(-3.0);
    player->duckerLevel(-30.0);
    EXPECT_EQ(player->duckingStatus(), DuckingStatus::normal) << "below the threshold nothing happens";
    player->duckerLevel(-10.0);
    EXPECT_EQ(player->duckingStatus(), DuckingStatus::attacking);
    // 0.4 s of attack at 0.025 s a tick: 16 ticks of 0.75 dB.
    for (int i = 0; i < 15; ++i)
        player->idle();
    EXPECT_EQ(player->duckingStatus(), DuckingStatus::attacking);
    player->idle();
    EXPECT_EQ(player->duckingStatus(), DuckingStatus::ducking);
    EXPECT_NEAR(player->getVolumeDB(), -15.0, 1e-6);
    player->duckerLevel(-40.0);
    EXPECT_EQ(player->duckingStatus(), DuckingStatus::releasing);
    for (int i = 0; i < 44; ++i)
        player->idle();
    EXPECT_EQ(player->duckingStatus(), DuckingStatus::normal);
    EXPECT_NEAR(player->getVolumeDB(), -3.0, 1e-6);
    EXPECT_NEAR(player->baseVolume(), std::pow(10, -3.0 / 20), 1e-12);
}

TEST_F(RPlayerTest, AScheduledFadeOutEndsOnItsSoundAndStopsWithoutTheEndCallback) {
    int ended = 0;
    auto player = std::make_shared<RPlayer>("fade", tone, [&](const std::shared_ptr<RPlayer>&) { ++ended; });
    // Fades from 0.5 s to 1.0 s of the file.
    player->play(1.0, false, 1.0, 0.5);
    const auto out = render(1.2);
    const auto window = [&](double from, double to) {
        return rmsDb(std::vector<float>(out.begin() + 2 * static_cast<long>(from * 44100),
                                        out.begin() + 2 * static_cast<long>(to * 44100)));
    };
    EXPECT_NEAR(window(0.4, 0.5), -9.03, 0.1) << "full level until the fade";
    EXPECT_NEAR(window(0.74, 0.76), -9.03 - 6.02, 0.3) << "half way down, in amplitude";
    EXPECT_LT(window(0.9, 1.0), -25);
    EXPECT_LT(window(1.0, 1.2), -150) << "nothing after the fade";
    player->idle();
    EXPECT_FALSE(player->playing());
    testenv::pumpEventsFor(50);
    EXPECT_EQ(ended, 0);
}

TEST_F(RPlayerTest, AFadeStartedDuringAnotherGoesOnFromItsLevel) {
    auto player = std::make_shared<RPlayer>("refade", tone);
    player->play(1.0, false, 1.0, 0.5);
    render(0.75);
    // Half way down the scheduled fade; from here a new fade of 0.5 s.
    player->startFadeOut();
    const auto out = render(0.6);
    EXPECT_LT(rmsDb(std::vector<float>(out.begin(), out.begin() + 2 * 2205)), -9.03 - 6.02)
        << "no jump back to full level";
    EXPECT_LT(rmsDb(std::vector<float>(out.begin() + 2 * 22050, out.end())), -150);
    player->idle();
    EXPECT_FALSE(player->playing());
}
