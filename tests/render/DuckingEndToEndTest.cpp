// Music ducked under real speech: the export and the live playback (offline engine) both dip the bed
// by the settings, where the speech analysis says.

#include "RenderFixture.h"
#include "foundation/Prefs.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "project/model/AEAssetDucking.h"
#include "project/model/AESubsamples.h"
#include "project/model/DuckingSettings.h"
#include "timeline/model/AEDucking.h"
#include "timeline/model/AEKeyframeList.h"

#include <cmath>

namespace {

constexpr int64_t kTickFrames = AudioEngine::kRate / 50;
constexpr double kBedHz = 15000; // above anything of the 22050 Hz speech, so a filter separates them

struct Ramp {
    double start, end;
};

// The bed's amplitude (linear) in 5 ms windows of a file already filtered down to the bed.
struct Envelope {
    std::vector<double> amp;
    double step = 0.005;
    double at(double t) const { return amp[std::min(amp.size() - 1, static_cast<size_t>(t / step))]; }
    double db(double t) const { return 20 * std::log10(at(t)); }
    // The ramp between the plateau levels near `from` and near `to`, from where it crosses 5 % and 95 %
    // of the way (straight in amplitude between the points).
    Ramp ramp(double from, double to) const {
        const double a = at(from), b = at(to);
        double t5 = -1, t95 = -1;
        for (double t = from; t < to; t += step) {
            const double f = (at(t) - a) / (b - a);
            if (t5 < 0 && f >= 0.05) t5 = t;
            if (t95 < 0 && f >= 0.95) t95 = t;
        }
        const double extra = (t95 - t5) / 0.9 * 0.05;
        return {t5 - extra, t95 + extra};
    }
};

Envelope envelopeOf(const Decoded& d) {
    Envelope e;
    const auto window = static_cast<int64_t>(e.step * d.rate);
    for (int64_t i = 0; i + window <= d.frames; i += window) {
        double sum = 0;
        for (int64_t k = i; k < i + window; ++k) {
            const double v = d.samples[static_cast<size_t>(k * d.channels)];
            sum += v * v;
        }
        e.amp.push_back(std::sqrt(2 * sum / static_cast<double>(window)));
    }
    return e;
}

} // namespace

class DuckingEndToEndTest : public RenderFixture {
protected:
    void SetUp() override {
        RenderFixture::SetUp();
        sharedAudioEngine().startOffline();
        // Synthetic speech breaks between words more than a voice does: a lower threshold keeps
        // each sentence one stretch.
        QXDuckingSettings settings;
        settings.threshold = -40;
        settings.save();
    }
    void TearDown() override {
        prefs_removeKey(QXDuckingSettings::kLabel);
        tl->pause();
        sharedAudioEngine().startNullOutput();
        RenderFixture::TearDown();
    }

    // A speech asset with its summary and analysis made as the asset store makes them.
    std::shared_ptr<AEAsset> spoken(const QString& name, const QString& text) {
        const QString raw = path(name + "-raw.wav"), file = path(name + ".wav");
        run("/usr/bin/espeak-ng", {"-a", "200", "-s", "130", "-w", raw, text});
        run("/usr/bin/sox", {raw, file, "gain", "-n", "-1"});
        auto a = fileAsset(file);
        a->id = name + QString::number(QDateTime::currentMSecsSinceEpoch());
        a->subsamples->generate(a->originalFilePath, a->ingestedFilePath, false);
        EXPECT_TRUE(testenv::waitUntil([&] { return a->subsamples->loaded.load(); }, 20000));
        a->assetDucking = AEAssetDucking::make(a->id, a->subsamples);
        EXPECT_TRUE(testenv::waitUntil(
            [&] { return a->assetDucking->qxppStatus == QXPersistenceStatus::saved; }, 20000));
        return a;
    }

    // Only the bed: the speech lies below 11025 Hz.
    Envelope bedOf(const QString& file) {
        const QString filtered = path("bed-" + QFileInfo(file).fileName());
        run("/usr/bin/sox", {file, filtered, "remix", "1", "sinc", "13000"});
        return envelopeOf(decode(filtered));
    }

    Decoded playAll(double seconds) {
        Decoded d{true, AudioEngine::kRate, 2, 0, 0, {}};
        tl->play(0.0);
        EXPECT_TRUE(testenv::waitUntil([&] { return !tl->allItemsPlayIdleR; }));
        for (int64_t done = 0; done < static_cast<int64_t>(seconds * AudioEngine::kRate);
             done += kTickFrames) {
            const auto block = sharedAudioEngine().renderOffline(kTickFrames);
            d.samples.insert(d.samples.end(), block.begin(), block.end());
            d.frames += kTickFrames;
            if (!tl->playing) continue;
            tl->playingIdle();
            EXPECT_TRUE(testenv::waitUntil([&] { return !tl->allItemsPlayIdleR; }));
        }
        return d;
    }

    std::shared_ptr<AETimeLine> tl = tlfixture::timeline();
};

TEST_F(DuckingEndToEndTest, ExportAndPlaybackDipTheBedUnderEachSpokenStretch) {
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 3), false);
    auto a = tl->appendItemInMainLane(spoken("first", "one two three four five six"), std::nullopt, false);
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 5), false);
    auto b = tl->appendItemInMainLane(spoken("second", "seven eight nine ten eleven"), std::nullopt, false);
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 3), false);
    const auto bedAsset = fileAsset(tone("bed.wav", 30.0, kBedHz, 44100, 1, 0.3), AEAssetType::bgm);
    bedAsset->bgmSettings = std::make_shared<AEBGMSettings>(true, 1.0, true);
    auto bed = tl->attachItem(bedAsset, -1, 0.5, std::nullopt, false, false);
    ASSERT_TRUE(testenv::waitUntil([] { return AEDucking::jobsInFlight() == 0; }, 10000));

    // Where the analysis puts the speech, on the timeline; it must lie on the spoken words.
    std::vector<std::pair<double, double>> stretches;
    for (const auto& item : {a, b}) {
        const auto spans = item->getOnOffClusters();
        ASSERT_TRUE(spans && spans->clusters.size() == 1) << "one spoken stretch per item";
        const double on = spans->clusters[0].i + spans->offset, off = spans->clusters[0].o + spans->offset;
        const auto words = onsets(decode(item->asset->originalFilePath), 0.056);
        ASSERT_FALSE(words.empty());
        EXPECT_NEAR(on, item->inTime + words.front(), 0.15);
        stretches.push_back({on, off});
    }
    ASSERT_EQ(bed->volumeKFs->keyframes.size(), 8u);

    const QString dest = path("ducked.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 1, 16, tl)));
    const Envelope exported = bedOf(dest);

    const double end = tl->getMainLaneOutTime();
    const Decoded played = playAll(end);
    const QString playedFile = path("played.wav");
    std::vector<float> left(static_cast<size_t>(played.frames));
    for (int64_t i = 0; i < played.frames; ++i)
        left[static_cast<size_t>(i)] = played.samples[static_cast<size_t>(i * 2)];
    AUAudio::saveArrayIntoAudioFile16(left, AudioEngine::kRate, playedFile);
    const Envelope live = bedOf(playedFile);

    // Live: the same dip (the export's mix of two lanes sits lower as a whole), the same ramps within a
    // tick of the transport.
    for (const auto& [on, off] : stretches) {
        SCOPED_TRACE("speech " + std::to_string(on) + "-" + std::to_string(off));
        Ramp ramps[2][2];
        for (int n = 0; n < 2; ++n) {
            const Envelope& bed = n == 0 ? exported : live;
            const double outside = bed.db(on - 0.6);
            EXPECT_NEAR(outside - bed.db((on + off) / 2), 12.0, 1.0) << n;
            EXPECT_NEAR(bed.db(off + 1.0), outside, 1.0) << n;
            ramps[n][0] = bed.ramp(on - 0.5, on + 0.6);
            ramps[n][1] = bed.ramp(off - 0.5, off + 1.0);
        }
        const auto [fall, rise] = ramps[0];
        EXPECT_NEAR(fall.start, on - 0.2, 0.05);
        EXPECT_NEAR(fall.end, on + 0.3, 0.05);
        EXPECT_NEAR(rise.start, off - 0.2, 0.05);
        EXPECT_NEAR(rise.end, off + 0.7, 0.05);
        for (int edge = 0; edge < 2; ++edge) {
            EXPECT_NEAR(ramps[1][edge].start, ramps[0][edge].start, 0.02 + 0.01) << edge;
            EXPECT_NEAR(ramps[1][edge].end, ramps[0][edge].end, 0.02 + 0.01) << edge;
        }
    }
}
