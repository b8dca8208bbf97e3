#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "support/EventWait.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>

namespace {

// A file-less asset the store can find by id.
std::shared_ptr<AEAsset> stored(const QString& id, double duration, AEAssetType type = AEAssetType::speech) {
    auto a = AEAsset::makePlaceholder();
    a->id = id;
    a->name = id;
    a->type = type;
    a->duration = duration;
    AEAssetDB::saveAsset(a);
    return a;
}

std::shared_ptr<AEAsset> silence() {
    AEAsset::Args args;
    args.type = AEAssetType::silence;
    return AEAsset::make(args);
}

QStringList idsOf(const std::vector<std::shared_ptr<AEAsset>>& assets) {
    QStringList ids;
    for (const auto& a : assets)
        ids << a->id;
    return ids;
}

QStringList itemIdsOf(const AETimeLine::Items& items) {
    QStringList ids;
    for (const auto& item : items)
        ids << item->id;
    return ids;
}

} // namespace

class AEEpisodeTimeline : public ::testing::Test {
protected:
    void SetUp() override {
        door = std::make_shared<ScriptedInteraction>();
        setUserInteraction(door);
        episode = std::make_shared<AEEpisode>("E1", "Pilot", QString(), dir.path() + "/");
    }

    void TearDown() override { setUserInteraction(nullptr); }

    // Main lane: intro (10 s), a silence (2 s), talk (30 s); attached: sting on lane 1 at 4 s.
    void fillTimeline(const QString& prefix) {
        auto& tl = *episode->timeline;
        tl.appendItemInMainLane(stored(prefix + ".intro", 10), std::nullopt, false);
        tl.appendItemInMainLane(silence(), AETimeRange(0, 2), false);
        tl.appendItemInMainLane(stored(prefix + ".talk", 30), std::nullopt, false);
        tl.attachItem(stored(prefix + ".sting", 3, AEAssetType::effect), 1, 4.0, std::nullopt, false, false);
    }

    QTemporaryDir dir;
    std::shared_ptr<ScriptedInteraction> door;
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
    EXPECT_EQ(itemIdsOf(episode->timeline->mainLane), itemIdsOf(original->mainLane));
    EXPECT_EQ(itemIdsOf(episode->timeline->attachedItems), itemIdsOf(original->attachedItems));
    EXPECT_EQ(episode->timeline->getTimelineOutTime(), 42.0);
    EXPECT_EQ(episode->timeline->currentPHTime, 7.0);
    EXPECT_EQ(episode->timeline->mainLane[2]->asset, original->mainLane[2]->asset);
    EXPECT_TRUE(door->transcript().empty());
}

TEST_F(AEEpisodeTimeline, SavingWithoutATimelineWritesNothing) {
    episode->timeline = nullptr;
    episode->saveTimeline();
    EXPECT_FALSE(QFile::exists(episode->timelineDataPath));
}

TEST_F(AEEpisodeTimeline, AMissingOrUnreadableFileGivesANewEmptyTimeline) {
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
    const QStringList expected = itemIdsOf(episode->timeline->mainLane);
    episode->timeline = nullptr;

    std::atomic<bool> called = false;
    bool onMainThread = false;
    QStringList seen;
    episode->loadTimelineAsync([&] {
        onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        if (episode->timeline) seen = itemIdsOf(episode->timeline->mainLane);
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

TEST_F(AEEpisodeTimeline, AllAssetsCoverTheTimelineWithoutSilenceOrRepeats) {
    const auto own = stored("ep.all.own", 5);
    const auto intro = stored("ep.all.intro", 10);
    episode->assets = {intro, own};
    EXPECT_EQ(idsOf(episode->getAllAssets()), QStringList({"ep.all.intro", "ep.all.own"}));

    auto& tl = *episode->timeline;
    tl.appendItemInMainLane(intro, std::nullopt, false);
    tl.appendItemInMainLane(silence(), AETimeRange(0, 2), false);
    const auto onlyInMain = stored("ep.all.main", 20);
    tl.appendItemInMainLane(onlyInMain, std::nullopt, false);
    tl.appendItemInMainLane(onlyInMain, AETimeRange(0, 5), false);
    const auto onlyAttached = stored("ep.all.fx", 3, AEAssetType::effect);
    tl.attachItem(onlyAttached, 1, 1.0, std::nullopt, false, false);
    tl.attachItem(onlyInMain, 2, 2.0, AETimeRange(0, 1), false, false);

    // The episode's own list first, then attached items, then the main lane.
    EXPECT_EQ(idsOf(episode->getAllAssets()),
              QStringList({"ep.all.intro", "ep.all.own", "ep.all.fx", "ep.all.main"}));
    EXPECT_EQ(episode->assets.size(), 2u) << "the episode's own list is not changed";

    episode->timeline = nullptr;
    EXPECT_EQ(idsOf(episode->getAllAssets()), QStringList({"ep.all.intro", "ep.all.own"}));
}

TEST_F(AEEpisodeTimeline, AssetInTimelineLooksAtBothLanesAndSkipsSilence) {
    const auto listedOnly = stored("ep.in.listed", 5);
    const auto main = stored("ep.in.main", 10);
    const auto fx = stored("ep.in.fx", 3, AEAssetType::effect);
    episode->assets = {listedOnly};
    auto& tl = *episode->timeline;
    const auto quiet = silence();
    tl.appendItemInMainLane(main, std::nullopt, false);
    tl.appendItemInMainLane(quiet, AETimeRange(0, 2), false);
    tl.attachItem(fx, 1, 1.0, std::nullopt, false, false);

    EXPECT_TRUE(episode->assetInTimeline(main));
    EXPECT_TRUE(episode->assetInTimeline(fx)) << "attached items count";
    EXPECT_FALSE(episode->assetInTimeline(listedOnly));
    EXPECT_FALSE(episode->assetInTimeline(quiet)) << "silence is never in use";
    EXPECT_FALSE(episode->assetInTimeline(silence()));

    episode->timeline = nullptr;
    EXPECT_FALSE(episode->assetInTimeline(main));
}
