#include "TimelineFixture.h"

using namespace tlfixture;

TEST(AETimeLineQueries, BoundariesBelongToTheLaterItem) {
    auto tl = timeline();
    EXPECT_EQ(tl->getMainLaneOutTime(), 0.0);
    EXPECT_EQ(tl->getTimelineOutTime(), 0.0);
    EXPECT_EQ(tl->getAssetInMainLane(0), -1);
    EXPECT_FALSE(tl->getItemAtTime(0));
    fillMainLane(*tl, {10, 10});
    tl->attachItem(asset("fx", 30, AEAssetType::effect), 1, 15, std::nullopt, false, false);
    EXPECT_EQ(tl->getAssetInMainLane(10), 1);
    EXPECT_EQ(tl->getAssetInMainLane(9.99), 0);
    EXPECT_EQ(tl->getAssetInMainLane(25), -1) << "past the main lane, before the end of the attached item";
    EXPECT_EQ(tl->getAssetInMainLane(45), 1) << "the end of the timeline gives the last index";
    EXPECT_EQ(tl->getAssetInMainLane(60), 1);
    EXPECT_EQ(tl->getTimelineOutTime(), 45.0);
    EXPECT_EQ(tl->getMainLaneItemOutTime(0), 10.0);
    EXPECT_EQ(tl->getMainLaneItemInTime(1), 10.0);
    EXPECT_EQ(tl->getAttachedItem(15, 1), tl->attachedItems[0]);
    EXPECT_FALSE(tl->getAttachedItem(45, 1)) << "the end is not inside";
    EXPECT_FALSE(tl->getAttachedItem(20, 2));
    EXPECT_EQ(tl->getAssetInRange(AETimeRange(9, 11)).size(), 2u);
    EXPECT_EQ(tl->getAssetInRange(AETimeRange(10, 11)).size(), 1u);
}

TEST(AETimeLineQueries, SubsetsAreInTimeOrder) {
    auto tl = timeline();
    fillMainLane(*tl, {10});
    tl->appendItemInMainLane(asset("j1", 5, AEAssetType::jingle), std::nullopt, false);
    fillMainLane(*tl, {10});
    tl->appendItemInMainLane(asset("ad", 5, AEAssetType::ad), std::nullopt, false);
    fillMainLane(*tl, {10}); // jingle at 10, ad at 25, end 40
    const auto late = tl->attachItem(music("late", 5), -1, 30, std::nullopt, false, false);
    const auto early = tl->attachItem(music("early", 5), -1, 2, std::nullopt, false, false);
    EXPECT_EQ(tl->getBGMs(), (AETimeLine::Items{early, late}));
    EXPECT_EQ(tl->getNextJingle(10)->asset->name, "ad") << "strictly after";
    EXPECT_EQ(tl->getNextJingle(0)->asset->name, "j1");
    EXPECT_FALSE(tl->getNextJingle(25));
    EXPECT_EQ(tl->getNextBGM(2), late);
    EXPECT_EQ(tl->getMainLaneSubset(AEAssetType::jingle).size(), 1u);
    EXPECT_EQ(early->bgmOutTime, 10.0);
    EXPECT_EQ(late->bgmOutTime, 40.0);
}

TEST(AETimeLineQueries, MuteAndSoloDecideWhatPlays) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10});
    const auto fx = tl->attachItem(asset("fx", 5, AEAssetType::effect), 1, 3, std::nullopt, false, false);
    tl->getCollectedItems();
    const auto a = tl->mainLane[0];
    const auto b = tl->mainLane[1];
    EXPECT_TRUE(tl->itemCanBePlayed(a));

    tl->toggleMuteItem(a);
    EXPECT_FALSE(tl->itemCanBePlayed(a));
    a->active = std::nullopt;
    EXPECT_FALSE(AETimeLine::itemActive(a)) << "absent counts as muted";
    tl->toggleMuteItem(a);
    EXPECT_TRUE(tl->itemCanBePlayed(a));

    tl->soloItem(b);
    tl->soloItem(b);
    EXPECT_EQ(tl->soloItems.size(), 1u);
    EXPECT_FALSE(tl->itemCanBePlayed(a));
    EXPECT_TRUE(tl->itemCanBePlayed(b));
    tl->muteItem(b);
    EXPECT_TRUE(tl->itemCanBePlayed(b)) << "solo beats mute";

    // A solo flag read from a file, with an empty list, silences nothing else.
    tl->unSoloItem(b);
    a->solo = true;
    EXPECT_TRUE(tl->itemCanBePlayed(fx));

    tl->muteLane(1);
    EXPECT_FALSE(AETimeLine::itemActive(fx));
    tl->soloLane(0);
    EXPECT_EQ(tl->soloItems.size(), 2u);
    EXPECT_FALSE(tl->itemCanBePlayed(fx));
    tl->unSoloLane(0);
    tl->unMuteLane(1);
    EXPECT_TRUE(tl->itemCanBePlayed(fx));
}

TEST(AETimeLineQueries, EveryTimelineIsListedWhileAlive) {
    auto one = AETimeLine::make("one");
    const auto count = AETimeLine::tlList().size();
    {
        auto two = AETimeLine::make("two");
        EXPECT_EQ(AETimeLine::tlList().size(), count + 1);
        EXPECT_NE(two->SIGLA, one->SIGLA);
    }
    EXPECT_EQ(AETimeLine::tlList().size(), count);
}
