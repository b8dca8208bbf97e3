#include "project/model/AEEpisode.h"
#include "support/EventWait.h"
#include "support/ScriptedSession.h"
#include "timeline/model/TimelineFixture.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>

using namespace tlfixture;

class AEEpisodeTimeline : public ::testing::Test, protected ScriptedSession {
protected:
    void SetUp() override {
        episode = std::make_shared<AEEpisode>("E1", "Pilot", QString(), dir.path() + "/");
    }

    // Main lane: intro (10 s), a silence (2 s), talk (30 s); attached: sting on lane 1 at 4 s.
    void fillTimeline(const QString& prefix) {
        auto& tl = *episode->timeline;
        tl.appendItemInMainLane(stored(prefix + ".intro", 10), std::nullopt, false);
        tl.appendItemInMainLane(silence(), AETimeRange(0, 2), false);
        tl.appendItemInMainLane(stored(prefix + ".talk", 30), std::nullopt, false);
        tl.attachItem(stored(prefix + ".sting", 3, AEAssetType::effect), 1, 4.0, std::nullopt, false, false);
    }

    QTemporaryDir dir;
    std::shared_ptr<AEEpisode> episode;
};

TEST_F(AEEpisodeTimeline, SavedTimelineComesBackFromItsDataPath) {
    EXPECT_EQ(episode->timelineDataPath, dir.path() + "/" + episode->id + ".AETimeLine");
    fillTimeline("ep.rt");
    episode->timeline->currentPHTime = 7.0;
    const auto original = episode->timeline;
    episode->saveTimeline();
    ASSERT_TRUE(QFile::exists(episode->timelineDataPath));

    episode->timeline = nullptr;
    episode->loadTimeline();
    ASSERT_TRUE(episode->timeline);
    EXPECT_NE(episode->timeline, original);
    EXPECT_EQ(episode->timeline->id, episode->id);
    EXPECT_EQ(idsOf(episode->timeline->mainLane), idsOf(original->mainLane));
    EXPECT_EQ(idsOf(episode->timeline->attachedItems), idsOf(original->attachedItems));
    EXPECT_EQ(episode->timeline->getTimelineOutTime(), 42.0);
    EXPECT_EQ(episode->timeline->currentPHTime, 7.0);
    EXPECT_EQ(episode->timeline->mainLane[2]->asset, original->mainLane[2]->asset);
    EXPECT_TRUE(door->transcript().empty());
}

TEST_F(AEEpisodeTimeline, AMissingOrUnreadableFileGivesANewEmptyTimeline) {
    episode->timeline = nullptr;
    episode->saveTimeline();
    ASSERT_FALSE(QFile::exists(episode->timelineDataPath)) << "saving without a timeline writes nothing";
    for (const bool garbage : {false, true}) {
        SCOPED_TRACE(garbage ? "garbage" : "missing");
        if (garbage) {
            QFile file(episode->timelineDataPath);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write("{ \"format\": \"something else\" }");
        }
        episode->timeline = nullptr;
        episode->loadTimeline();
        ASSERT_TRUE(episode->timeline);
        EXPECT_TRUE(episode->timeline->mainLane.empty());
        EXPECT_TRUE(episode->timeline->attachedItems.empty());
        EXPECT_TRUE(episode->timeline->currentViewRange.isEqual(AETimeRange(0, 30.0)))
            << "a new timeline, not one read from a file";
    }
    // The damaged file outlives the new timeline's save.
    episode->saveTimeline();
    QFile aside(episode->timelineDataPath + ".damaged");
    ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
    EXPECT_EQ(aside.readAll(), "{ \"format\": \"something else\" }");
}

TEST_F(AEEpisodeTimeline, AsyncLoadCallsBackOnTheMainThreadWithTheTimelineInPlace) {
    fillTimeline("ep.async");
    episode->saveTimeline();
    const QStringList expected = idsOf(episode->timeline->mainLane);
    episode->timeline = nullptr;

    std::atomic<bool> called = false;
    bool onMainThread = false;
    QStringList seen;
    episode->loadTimelineAsync([&] {
        onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        if (episode->timeline) seen = idsOf(episode->timeline->mainLane);
        called = true;
    });
    EXPECT_FALSE(called) << "the caller is not kept waiting";
    ASSERT_TRUE(testenv::waitUntil([&] { return called.load(); }));
    EXPECT_TRUE(onMainThread);
    EXPECT_EQ(seen, expected);

    // Without a file the callback still comes, with a new timeline.
    QFile::remove(episode->timelineDataPath);
    called = false;
    episode->timeline = nullptr;
    bool empty = false;
    episode->loadTimelineAsync([&] {
        empty = episode->timeline && episode->timeline->mainLane.empty();
        called = true;
    });
    ASSERT_TRUE(testenv::waitUntil([&] { return called.load(); }));
    EXPECT_TRUE(empty);
}

TEST_F(AEEpisodeTimeline, AllAssetsAndAssetInTimelineLookAtBothLanesAndSkipSilence) {
    const auto own = stored("ep.all.own", 5);
    const auto intro = stored("ep.all.intro", 10);
    episode->assets = {intro, own};
    EXPECT_EQ(idsOf(episode->getAllAssets()), QStringList({"ep.all.intro", "ep.all.own"}));

    auto& tl = *episode->timeline;
    const auto quiet = silence();
    tl.appendItemInMainLane(intro, std::nullopt, false);
    tl.appendItemInMainLane(quiet, AETimeRange(0, 2), false);
    const auto inMain = stored("ep.all.main", 20);
    tl.appendItemInMainLane(inMain, std::nullopt, false);
    tl.appendItemInMainLane(inMain, AETimeRange(0, 5), false);
    const auto onlyAttached = stored("ep.all.fx", 3, AEAssetType::effect);
    tl.attachItem(onlyAttached, 1, 1.0, std::nullopt, false, false);
    tl.attachItem(inMain, 2, 2.0, AETimeRange(0, 1), false, false);

    // The episode's own list first, then attached items, then the main lane.
    EXPECT_EQ(idsOf(episode->getAllAssets()),
              QStringList({"ep.all.intro", "ep.all.own", "ep.all.fx", "ep.all.main"}));
    EXPECT_EQ(episode->assets.size(), 2u) << "the episode's own list is not changed";
    EXPECT_TRUE(episode->assetInTimeline(intro));
    EXPECT_TRUE(episode->assetInTimeline(onlyAttached)) << "attached items count";
    EXPECT_FALSE(episode->assetInTimeline(own));
    EXPECT_FALSE(episode->assetInTimeline(quiet)) << "silence is never in use";
    EXPECT_FALSE(episode->assetInTimeline(silence()));

    episode->timeline = nullptr;
    EXPECT_EQ(idsOf(episode->getAllAssets()), QStringList({"ep.all.intro", "ep.all.own"}));
    EXPECT_FALSE(episode->assetInTimeline(intro));
}
