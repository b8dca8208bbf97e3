#include "../../render/RenderFixture.h"
#include "playback/RPlayer.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "project/model/AEAsset.h"
#include "project/model/AEBGMSettings.h"
#include "timeline/model/AEKeyframeList.h"

#include <QCoreApplication>
#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <set>

namespace {

constexpr int64_t kTickFrames = AudioEngine::kRate / 50; // the transport's 0.02 s

} // namespace

// The live playback of timelines through the offline engine: the test is the clock. Each turn
// renders one tick of sound, runs the transport's tick and lets the item pass it hands on finish.
class AETimeLineTransportTest : public RenderFixture {
protected:
    void SetUp() override {
        RenderFixture::SetUp();
        sharedAudioEngine().startOffline();
    }
    void TearDown() override {
        tl->pause();
        sharedAudioEngine().startNullOutput();
        RenderFixture::TearDown();
    }

    // Plays from `at` for `seconds` of sound; `onTick(time)` runs before each tick.
    Decoded play(double at, double seconds, const std::function<void(double)>& onTick = {}) {
        Decoded d{true, AudioEngine::kRate, 2, 0, 0, {}};
        tl->play(at);
        waitForItemPass();
        for (int64_t done = 0; done < static_cast<int64_t>(seconds * AudioEngine::kRate);
             done += kTickFrames) {
            const auto block = sharedAudioEngine().renderOffline(kTickFrames);
            d.samples.insert(d.samples.end(), block.begin(), block.end());
            d.frames += kTickFrames;
            if (onTick) onTick(tl->getPlayHeadTime());
            if (!tl->playing) continue;
            tl->playingIdle();
            waitForItemPass();
        }
        return d;
    }

    void waitForItemPass() {
        EXPECT_TRUE(testenv::waitUntil([&] { return !tl->allItemsPlayIdleR; }));
    }

    // `seconds` of `dc` (a constant level shows gain steps plainly) with 2 ms bursts of 1 kHz at
    // `clicks`, mono 16-bit.
    QString clicks(const QString& name, double seconds, const std::vector<double>& at, float dc = 0) const {
        std::vector<float> v(static_cast<size_t>(seconds * 44100), dc);
        for (double t : at)
            for (size_t i = 0; i < 88; ++i)
                v[static_cast<size_t>(t * 44100) + i] +=
                    0.7f * static_cast<float>(
                               std::sin(2 * std::numbers::pi * 1000.0 * static_cast<double>(i) / 44100));
        const QString out = path(name);
        AUAudio::saveArrayIntoAudioFile16(v, 44100, out);
        return out;
    }

    // Three lanes of clicks: heard at 0.3, 0.8625, 1.2, 1.428125 and 2.0 of the timeline, which ends at
    // 2.5. Items sit on the timeline's grid of 1/128 s.
    void threeLanesOfClicks() {
        tl->appendItemInMainLane(fileAsset(clicks("a.wav", 1.0, {0.3})), std::nullopt, false);
        tl->appendItemInMainLane(fileAsset(clicks("b.wav", 1.5, {0.2, 1.0})), std::nullopt, false);
        tl->attachItem(fileAsset(clicks("e.wav", 0.6, {0.3}), AEAssetType::effect), 1, 0.5625, std::nullopt,
                       false, false);
        tl->attachItem(fileAsset(clicks("j.wav", 0.5, {0.1}), AEAssetType::jingle), 2, 1.328125, std::nullopt,
                       false, false);
    }

    std::shared_ptr<AETimeLine> tl = tlfixture::timeline();
};

TEST_F(AETimeLineTransportTest, ClipsOnThreeLanesSoundAtTheirTimesAndPlayStopsAtOrPastTheEnd) {
    threeLanesOfClicks();
    const Decoded d = play(0.0, 3.0);
    const std::vector<double> expected{0.3, 0.8625, 1.2, 1.428125, 2.0};
    const auto found = onsets(d, 0.3);
    ASSERT_EQ(found.size(), expected.size());
    // Each clip starts at the asset time that matches the tick, so the tick's 20 ms never shows.
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(found[i], expected[i], 0.002) << "click " << i;
    EXPECT_FALSE(tl->playing);
    EXPECT_GE(tl->currentPHTime, 2.5);
    EXPECT_LT(tl->currentPHTime, 2.5 + 0.021) << "stopped at the first tick past the end";
    EXPECT_EQ(tl->playSpeedRate, 1.0);
    for (const auto& item : tl->getCollectedItems())
        EXPECT_FALSE(item->player->playing());

    const Decoded past = play(4.0, 0.1);
    EXPECT_FALSE(tl->playing) << "from past the end: stopped at the first tick";
    EXPECT_NEAR(tl->currentPHTime, 4.0, 1e-9);
    EXPECT_LT(past.peak(0, 0, 0.1), 1e-6);
}

TEST_F(AETimeLineTransportTest, ASeekStartsEachClipAtTheMatchingAssetTime) {
    threeLanesOfClicks();
    // At 0.4 back to 0.1, inside the clip that plays: its click at 0.3 again 0.2 s later. At 0.8 to
    // 1.7, 0.7 s into b.wav: its click at 1.0 comes 0.3 s later.
    int seeks = 0;
    const Decoded d = play(0.0, 1.4, [&](double time) {
        if (seeks == 0 && time >= 0.4) {
            tl->setPlayheadTime(0.1);
            ++seeks;
        } else if (seeks == 1 && time >= 0.5) {
            tl->setPlayheadTime(1.7);
            ++seeks;
        }
    });
    const auto found = onsets(d, 0.3);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_NEAR(found[0], 0.3, 0.002);
    EXPECT_NEAR(found[1], 0.4 + 0.2, 0.002);
    EXPECT_NEAR(found[2], 0.8 + 0.3, 0.002);
}

TEST_F(AETimeLineTransportTest, AClipThatPlaysOutBeforeItsEndIsNotStartedAgain) {
    // The file is half as long as its item: the clip ends inside the item, as it does for the last
    // milliseconds of every clip when the sound runs ahead of the clock.
    const auto asset = fileAsset(clicks("short.wav", 0.5, {0.2}));
    asset->duration = 1.0;
    const auto item = tl->appendItemInMainLane(asset, AETimeRange(0, 1.0), false);
    int ends = 0;
    item->player->endFileCallback = [&](const std::shared_ptr<RPlayer>&) { ++ends; };
    const Decoded d = play(0.0, 1.2);
    testenv::pumpEventsFor(100);
    EXPECT_EQ(onsets(d, 0.3).size(), 1u);
    EXPECT_LE(ends, 1) << "started again and ended " << ends << " times";
}

TEST_F(AETimeLineTransportTest, SoloAndEnvelopeChangesAreHeardAtTheNextTickAndMetered) {
    const auto a = tl->appendItemInMainLane(fileAsset(level("a.wav", 3.0, 0.25f)), std::nullopt, false);
    const auto b = tl->attachItem(fileAsset(level("b.wav", 3.0, 0.25f), AEAssetType::effect), 1, 0.0,
                                  std::nullopt, false, false);
    double bothMeter = 0;
    double soloMeter = 0;
    std::pair<double, double> quietStereo;
    const Decoded d = play(0.0, 2.0, [&](double time) {
        if (std::fabs(time - 0.5) < 1e-9) {
            bothMeter = tl->getMetering();
            tl->soloItem(a);
        } else if (std::fabs(time - 1.0) < 1e-9) {
            soloMeter = tl->getMetering();
            auto envelope = std::make_shared<AEKeyframeList>(0);
            envelope->setKeyframe(0.0, -12.0);
            a->setVolumeKFs(envelope);
        } else if (std::fabs(time - 1.5) < 1e-9) {
            quietStereo = tl->getMeteringStereo();
        }
    });
    EXPECT_NEAR(d.rmsDb(0, 0.1, 0.5), 20 * std::log10(0.5), 0.05) << "two clips summed";
    EXPECT_NEAR(d.rmsDb(0, 0.5 + 0.02 + 0.006, 1.0), 20 * std::log10(0.25), 0.05) << "solo at the next tick";
    EXPECT_NEAR(d.rmsDb(0, 1.0 + 0.02 + 0.006, 2.0), 20 * std::log10(0.25) - 12, 0.05)
        << "the envelope at the next tick";
    EXPECT_NEAR(bothMeter, 0.5, 0.01);
    EXPECT_NEAR(soloMeter, 0.25, 0.01);
    EXPECT_NEAR(quietStereo.first, 0.25 * std::pow(10, -12.0 / 20), 0.005);
    EXPECT_NEAR(quietStereo.second, quietStereo.first, 1e-9) << "a mono clip meters on both sides";
    EXPECT_FALSE(b->playing);
}

TEST_F(AETimeLineTransportTest, LoopingMusicLoopsWithoutAGapAndFadesOutAtItsEnd) {
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 3.0), false);
    const auto bgm = fileAsset(clicks("loop.wav", 1.0, {0.1}, 0.1f), AEAssetType::bgm);
    bgm->bgmSettings = std::make_shared<AEBGMSettings>(true, 0.5, false);
    const auto item = tl->attachItem(bgm, 1, 0.25, std::nullopt, false, false);
    tl->adjustBGM();
    ASSERT_EQ(item->bgmOutTime, 3.0);
    const Decoded d = play(0.0, 3.2);
    const auto found = onsets(d, 0.3);
    ASSERT_EQ(found.size(), 3u);
    for (size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(found[i], 0.35 + static_cast<double>(i), 0.002) << "loop " << i;
    const double steady = d.rmsDb(0, 1.4, 2.3);
    EXPECT_NEAR(steady, 20 * std::log10(0.1), 0.3) << "one level across the loop's seams";
    EXPECT_LT(d.rmsDb(0, 2.9, 3.0), steady - 15) << "fading over the last half second";
    EXPECT_LT(d.peak(0, 3.01, 3.2), 1e-6) << "silent after its end";
}

TEST_F(AETimeLineTransportTest, ASpeedChangeKeepsThePitchAndThePlaceAndAPauseResetsIt) {
    const auto item = tl->appendItemInMainLane(fileAsset(tone("tone.wav", 4.0, 440)), std::nullopt, false);
    const Decoded d = play(0.0, 1.5, [&](double time) {
        if (std::fabs(time - 0.5) < 1e-9) tl->setSpeedRate(1.5);
    });
    // 0.5 s at 1.0, then 1.0 s at 1.5.
    EXPECT_NEAR(tl->getPlayHeadTime(), 2.0, 1e-6);
    EXPECT_NEAR(item->player->currentTime(), 2.0, 0.05);
    // The tone's pitch, from its zero crossings in the fast second.
    int crossings = 0;
    const auto from = static_cast<size_t>(0.7 * 44100);
    const auto to = static_cast<size_t>(1.45 * 44100);
    for (size_t i = from + 1; i < to; ++i)
        if ((d.samples[2 * (i - 1)] < 0) != (d.samples[2 * i] < 0)) ++crossings;
    EXPECT_NEAR(crossings / 2.0 / 0.75, 440.0, 5.0);
    tl->pause();
    EXPECT_EQ(tl->playSpeedRate, 1.0);
    EXPECT_EQ(item->playSpeedRate, 1.0);
    tl->setSpeedRate(0);
    EXPECT_EQ(tl->playSpeedRate, 1.0) << "a standstill is no speed";
}

TEST_F(AETimeLineTransportTest, PlayPauseStartsFromTheEphemeralPlayheadWhenItShows) {
    threeLanesOfClicks();
    tl->view->ephemeralPlayhead = AEPlayHead{};
    tl->view->ephemeralPlayhead->currentTime = 1.25;
    tl->view->ephemeralPlayhead->hidden = false;
    tl->currentPHTime = 0.5;
    tl->playPause();
    EXPECT_TRUE(tl->playing);
    EXPECT_NEAR(tl->getPlayHeadTime(), 1.25, 1e-9);
    EXPECT_TRUE(tl->view->ephemeralPlayhead->hidden);
    tl->playPause();
    EXPECT_FALSE(tl->playing);
    tl->playPause();
    EXPECT_NEAR(tl->getPlayHeadTime(), 1.25, 1e-9) << "the hidden twin no longer counts";
}

TEST_F(AETimeLineTransportTest, LivePlaybackMatchesTheRenderedMix) {
    // A level under an envelope that falls 12 dB over two seconds, and clicks on two other lanes.
    const auto voice = tl->appendItemInMainLane(fileAsset(level("v.wav", 3.0, 0.25f)), std::nullopt, false);
    auto envelope = std::make_shared<AEKeyframeList>(0);
    envelope->setKeyframe(0.5, 0.0);
    envelope->setKeyframe(2.5, -12.0);
    voice->setVolumeKFs(envelope);
    tl->attachItem(fileAsset(clicks("e.wav", 1.0, {0.2, 0.7}), AEAssetType::effect), 1, 0.41, std::nullopt,
                   false, false);
    tl->attachItem(fileAsset(clicks("j.wav", 1.0, {0.5}), AEAssetType::jingle), 2, 1.7, std::nullopt, false,
                   false);
    const QString dest = path("mix.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 2, 16, tl)));
    const Decoded rendered = decode(dest);
    const Decoded live = play(0.0, 3.0);
    const auto renderedOnsets = onsets(rendered, 0.3);
    const auto liveOnsets = onsets(live, 0.3);
    ASSERT_EQ(liveOnsets.size(), 3u);
    ASSERT_EQ(renderedOnsets.size(), liveOnsets.size());
    for (size_t i = 0; i < liveOnsets.size(); ++i)
        EXPECT_NEAR(liveOnsets[i], renderedOnsets[i], 0.02) << "click " << i;
    // The render mixes the main lane and each used lane with sox -m, which divides each of n files by
    // n, and gives 2n dB back; live playing sums them.
    std::set<int64_t> lanes{0};
    for (const auto& item : tl->attachedItems)
        lanes.insert(item->lane);
    const auto n = static_cast<double>(lanes.size());
    const double mixLaw = 20 * std::log10(1.0 / n) + 2 * n;
    // Live holds each tick's value of the envelope: at most one tick's change of the render's curve.
    for (double t = 0.05; t < 2.9; t += 0.1) {
        const auto hasClick = [&](double c) { return c > t - 0.01 && c < t + 0.08; };
        if (std::any_of(liveOnsets.begin(), liveOnsets.end(), hasClick)) continue;
        const double step = std::fabs(rendered.rmsDb(0, t + 0.02, t + 0.07) - rendered.rmsDb(0, t, t + 0.05));
        EXPECT_NEAR(live.rmsDb(0, t, t + 0.05) + mixLaw, rendered.rmsDb(0, t, t + 0.05), step + 0.02)
            << "at " << t;
    }
}
