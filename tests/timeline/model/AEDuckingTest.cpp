// The ducking job on timelines whose speech carries a known analysis: where the points fall, what they
// replace, and what happens to jobs that an edit overtakes.

#include "timeline/model/AEDucking.h"

#include "TimelineFixture.h"
#include "dsp/Levels.h"
#include "foundation/Prefs.h"
#include "project/model/AEAssetDucking.h"
#include "project/model/DuckingSettings.h"
#include "support/EventWait.h"
#include "timeline/model/AEKeyframe.h"

namespace {

using namespace tlfixture;

struct Pt {
    double time, value;
};

// A speech asset whose analysis has the given on-spans (asset time).
std::shared_ptr<AEAsset> speech(const QString& name, double duration, std::vector<QXOnOffCluster> spans,
                                AEAssetType type = AEAssetType::speech) {
    auto a = asset(name, duration, type);
    a->assetDucking = AEAssetDucking::make(name, nullptr);
    QXOnOffList list;
    list.clusters = std::move(spans);
    list.clustersToEvents();
    a->assetDucking->setDuckingClusters(list);
    return a;
}

class AEDuckingTest : public ::testing::Test {
protected:
    void SetUp() override { resetSettings(); }
    void TearDown() override {
        settle();
        resetSettings();
    }
    static void resetSettings() {
        prefs_removeKey(QXDuckingSettings::kLabel);
        prefs_removeKey(AEDuckingSettings::kLabel);
    }
    static void settle() {
        ASSERT_TRUE(testenv::waitUntil([] { return AEDucking::jobsInFlight() == 0; }, 10000));
    }
    // 60 s of speech talking from 20 to 30 (timeline time), music from `musicIn`.
    AETimeLine::Item setUpOneStretch(double musicIn, bool autoduck = true) {
        tl->appendItemInMainLane(speech("talk", 60, {{20, 30}}), std::nullopt, false);
        auto bed = tl->attachItem(music("bed", 100, autoduck), -1, musicIn, std::nullopt, false, false);
        settle();
        return bed;
    }
    static void expectPoints(const AEKeyframeList& list, const std::vector<Pt>& expected,
                             bool flagged = true) {
        ASSERT_EQ(list.keyframes.size(), expected.size());
        for (size_t n = 0; n < expected.size(); ++n) {
            EXPECT_NEAR(list.keyframes[n]->time, expected[n].time, 1e-9) << "point " << n;
            EXPECT_NEAR(list.keyframes[n]->value, expected[n].value, 1e-9) << "point " << n;
            EXPECT_EQ(list.keyframes[n]->flag1, flagged) << "point " << n;
        }
    }

    std::shared_ptr<AETimeLine> tl = timeline();
};

TEST_F(AEDuckingTest, DefaultsDipTwelveDecibelsAroundSpeechInAssetTime) {
    // The music starts at 4 s into the timeline, so asset time is timeline time − 4.
    auto bed = setUpOneStretch(4);
    EXPECT_TRUE(bed->ducked);
    expectPoints(*bed->volumeKFs, {{15.8, 0}, {16.3, -12}, {25.8, -12}, {26.7, 0}});
    // Fade-out and dips meet in the applied envelope, which the model's invariants check.
    expectInvariants(*tl);
    EXPECT_DOUBLE_EQ(bed->globalKFS->getValue(20), -12);
    // Ducked again, the old points leave the gain list too: what playback reads dips only once.
    AEDucking::duck(bed, *tl);
    settle();
    ASSERT_EQ(bed->volumeKFs->keyframesPerc.size(), 4u);
    EXPECT_NEAR(bed->volumeKFs->getValuePerc(20), aUt_dbToDouble(-12), 1e-6);
}

TEST_F(AEDuckingTest, SpeechCloserThanTheReturnTimeIsOneDip) {
    tl->appendItemInMainLane(speech("a", 35, {{20, 35}}), std::nullopt, false);
    // 0.8 s of pause (below 0.2 + 0.7) across the cut between two items.
    tl->appendItemInMainLane(speech("b", 20, {{0.8, 10}}), std::nullopt, false);
    auto bed = tl->attachItem(music("bed", 100, true), -1, 0, std::nullopt, false, false);
    settle();
    expectPoints(*bed->volumeKFs, {{19.8, 0}, {20.3, -12}, {44.8, -12}, {45.7, 0}});
}

TEST_F(AEDuckingTest, SpeechBeforeTheMusicStartsGivesOnlyThePointsInside) {
    // On at 20: 19.8 lies before the music, 20.3 inside it.
    auto bed = setUpOneStretch(20.0625);
    const double shift = 20.0625;
    expectPoints(*bed->volumeKFs, {{20.3 - shift, -12}, {29.8 - shift, -12}, {30.7 - shift, 0}});
}

TEST_F(AEDuckingTest, TheChosenTypesAndDeleteKFDecideWhatIsKept) {
    tl->appendItemInMainLane(speech("talk", 30, {{10, 20}}), std::nullopt, false);
    tl->appendItemInMainLane(speech("fx", 30, {{5, 8}}, AEAssetType::effect), std::nullopt, false);
    auto bed = tl->attachItem(music("bed", 100, true), -1, 0, std::nullopt, false, false);
    settle();
    // Effects do not count by default.
    expectPoints(*bed->volumeKFs, {{9.8, 0}, {10.3, -12}, {19.8, -12}, {20.7, 0}});

    // A hand-made dip of the selection (no flag1) and a hand-made point.
    tl->drag->setRange(AETimeRange(40, 45), -1);
    tl->autoDuckSelection(false);
    tl->newVolumeKeyframe(50, -1, false);
    ASSERT_EQ(bed->volumeKFs->keyframes.size(), 9u);

    AEDuckingSettings what;
    what.duckToSpeech = false;
    what.deleteKF = false;
    what.save();
    AEDucking::duck(bed, *tl);
    settle();
    // No speech counts: the old ducking points go, the hand-made ones stay.
    expectPoints(*bed->volumeKFs, {{39.7, 0}, {40.5, -12}, {44.6, -12}, {45.8, 0}, {50, 0}}, false);

    what.duckToSFX = true;
    what.deleteKF = true;
    what.save();
    AEDucking::duck(bed, *tl);
    settle();
    expectPoints(*bed->volumeKFs, {{34.8, 0}, {35.3, -12}, {37.8, -12}, {38.7, 0}});
}

TEST_F(AEDuckingTest, MusicThatDoesNotAutoduckIsLeftAloneButTheCommandStillDips) {
    auto bed = setUpOneStretch(0, false);
    EXPECT_FALSE(bed->ducked);
    EXPECT_TRUE(bed->volumeKFs->keyframes.empty());
    tl->drag->setRange(AETimeRange(10, 20), -1);
    tl->autoDuckSelection(false);
    expectPoints(*bed->volumeKFs, {{9.7, 0}, {10.5, -12}, {19.6, -12}, {20.8, 0}}, false);
    EXPECT_DOUBLE_EQ(bed->globalKFS->getValue(15), -12);
}

TEST_F(AEDuckingTest, FadeOutAddsToTheEnvelopeAtTheEnd) {
    tl->appendItemInMainLane(speech("talk", 60, {}), std::nullopt, false);
    auto bed = tl->attachItem(music("bed", 100, false), -1, 0, std::nullopt, false, false);
    bed->volumeKFs->setKeyframe(58, -6.0);
    tl->adjustBGM(false);
    expectPoints(*bed->fadeOutKFS, {{55, 0}, {60, -60}}, false);
    EXPECT_DOUBLE_EQ(bed->globalKFS->getValue(58), -6 + bed->fadeOutKFS->getValue(58));
    EXPECT_DOUBLE_EQ(bed->globalKFS->getValue(58), -42);
}

TEST_F(AEDuckingTest, AnOvertakenOrOrphanedJobChangesNothing) {
    tl->appendItemInMainLane(speech("talk", 60, {{20, 30}}), std::nullopt, false);
    auto bed = tl->attachItem(music("bed", 100, true), -1, 0, std::nullopt, false, false);
    // Removed before its job ends: the job finds no item to change.
    tl->removeAttachedItem(bed);
    settle();
    EXPECT_TRUE(bed->volumeKFs->keyframes.empty());

    // An edit while the job runs is kept: the job starts again from it. Without deleteKF the dip is
    // taken from the edited level; with it the edit comes after the dips, as it came after the job.
    for (const auto& [deleteKF, dip] : {std::pair{false, -15.0}, std::pair{true, -12.0}}) {
        AEDuckingSettings what;
        what.deleteKF = deleteKF;
        what.save();
        auto bed2 = tl->attachItem(music("bed2", 100, true), -1, 0, std::nullopt, false, false);
        bed2->volumeKFs->setKeyframe(50, -3.0);
        settle();
        ASSERT_EQ(bed2->volumeKFs->keyframes.size(), 5u) << deleteKF;
        EXPECT_DOUBLE_EQ(bed2->volumeKFs->getValue(50), -3.0);
        EXPECT_DOUBLE_EQ(bed2->volumeKFs->getValue(20.3), dip);
        tl->removeAttachedItem(bed2);
    }
}

} // namespace
