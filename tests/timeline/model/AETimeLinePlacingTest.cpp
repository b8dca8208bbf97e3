#include "TimelineFixture.h"

using namespace tlfixture;

namespace {
std::shared_ptr<AETimeLineItem> attachedAt(AETimeLine& tl, const QString& name, double at, double length,
                                           int64_t lane = 1) {
    return tl.attachItem(asset(name, length, AEAssetType::effect), lane, at, std::nullopt, false, false);
}
} // namespace

TEST(AETimeLinePlacing, RemovingTheOnlyClipLeavesAnEmptyTimeline) {
    auto tl = timeline();
    fillMainLane(*tl, {10});
    const auto inside = attachedAt(*tl, "inside", 4.0, 20.0);
    ASSERT_TRUE(inside);
    tl->removeItemInMainLane(0);
    EXPECT_TRUE(tl->mainLane.empty());
    EXPECT_TRUE(tl->attachedItems.empty());
    EXPECT_EQ(tl->getTimelineOutTime(), 0.0);
}

TEST(AETimeLinePlacing, InsertingAtACutMovesOnlyItemsStartingThereOrLater) {
    auto tl = timeline();
    fillMainLane(*tl, {60, 30});
    const auto atCut = attachedAt(*tl, "atCut", 60.0, 5.0);
    const auto justBefore = attachedAt(*tl, "justBefore", 59.9, 5.0, 2);
    tl->insertItemInMainLane(asset("new", 10), 1);
    EXPECT_EQ(atCut->inTime, 70.0);
    EXPECT_EQ(justBefore->inTime, simpleRound(59.9)) << "an item under way at the insertion point stays";
    EXPECT_EQ(tl->mainLane[1]->asset->name, "new");
    EXPECT_EQ(tl->mainLane[2]->inTime, 70.0);
    expectInvariants(*tl);

    // Appending takes its start from the end of the whole timeline: nothing attached moves.
    tl->insertItemInMainLane(asset("tail", 10), 99);
    tl->appendItemInMainLane(asset("tail2", 10));
    EXPECT_EQ(atCut->inTime, 70.0);
    EXPECT_EQ(tl->getMainLaneOutTime(), 120.0);
    expectInvariants(*tl);
}

TEST(AETimeLinePlacing, AttachingMustStartBeforeTheEndOfTheMainLane) {
    auto tl = timeline();
    EXPECT_FALSE(attachedAt(*tl, "onEmpty", 0.0, 1.0));
    fillMainLane(*tl, {10});
    EXPECT_FALSE(attachedAt(*tl, "atEnd", 10.0, 1.0));
    const auto ok = attachedAt(*tl, "ok", 9.99, 5.0);
    ASSERT_TRUE(ok);
    EXPECT_EQ(ok->inTime, simpleRound(9.99));
    EXPECT_EQ(tl->getTimelineOutTime(), simpleRound(simpleRound(9.99) + 5.0))
        << "it may end past the main lane";
}

TEST(AETimeLinePlacing, AttachedItemsFallToTheNearestClearLane) {
    auto tl = timeline();
    fillMainLane(*tl, {100});
    const auto a = attachedAt(*tl, "a", 10, 10, 3);
    EXPECT_EQ(a->lane, 1) << "no lane is skipped";
    const auto b = attachedAt(*tl, "b", 15, 10, 1);
    EXPECT_EQ(b->lane, 2) << "an overlap opens the next lane";
    const auto c = attachedAt(*tl, "c", 20, 10, 1);
    EXPECT_EQ(c->lane, 1) << "touching is not overlapping";
    const auto below = attachedAt(*tl, "below", 15, 10, -1);
    EXPECT_EQ(below->lane, -1);
    ASSERT_TRUE(tl->getLane(2));
    EXPECT_GT(tl->getLane(2)->y, tl->getLane(1)->y);
    EXPECT_LT(tl->getLane(-1)->y, tl->getLane(0)->y);

    tl->removeAttachedItem(b);
    EXPECT_FALSE(tl->getLane(2)) << "an empty outer lane goes";
    expectInvariants(*tl);
}

TEST(AETimeLinePlacing, ShortItemsGoByTheirOwnThresholds) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10});
    tl->mainLane[0]->range = AETimeRange(0, 0.0078125); // one grid step: long enough on the timeline…
    tl->attachItem(asset("fx", 1.0, AEAssetType::effect), 1, 1.0, AETimeRange(0, 0.0078125), true, false);
    tl->refillMainLaneInTime();
    tl->cleanupShortItems(); // …but under 0.01 s of asset range
    ASSERT_EQ(tl->mainLane.size(), 1u);
    EXPECT_EQ(tl->mainLane[0]->asset->name, "c1");
    EXPECT_TRUE(tl->attachedItems.empty());

    tl->timelineEditor = AETimelineEditor::asset;
    tl->mainLane[0]->range = AETimeRange(0, 0.0);
    tl->adjustItems();
    EXPECT_EQ(tl->mainLane.size(), 1u) << "an asset's own editor keeps short items";
    tl->timelineEditor = AETimelineEditor::normal;
    tl->adjustItems();
    EXPECT_TRUE(tl->mainLane.empty());
}

TEST(AETimeLinePlacing, BackgroundMusicStretchesToTheNextJingleOrMusicAndFadesOut) {
    auto tl = timeline();
    fillMainLane(*tl, {30});
    tl->appendItemInMainLane(asset("jingle", 10, AEAssetType::jingle));
    fillMainLane(*tl, {40}); // main lane ends at 80
    const auto bgm = tl->attachItem(music("bed", 20), -1, 5.0, std::nullopt, false, false);
    ASSERT_TRUE(bgm);
    EXPECT_EQ(bgm->bgmOutTime, 30.0) << "up to the jingle, looping past the asset's end";
    ASSERT_TRUE(bgm->fadeOutKFS);
    ASSERT_EQ(bgm->fadeOutKFS->keyframes.size(), 2u);
    EXPECT_DOUBLE_EQ(bgm->fadeOutKFS->keyframes[0]->time, 20.0) << "in asset time: 5 s before the end at 25";
    EXPECT_DOUBLE_EQ(bgm->fadeOutKFS->keyframes[1]->value, -60.0);
    EXPECT_TRUE(bgm->fadeOutKFS->keyframes[0]->flag0);

    const auto later = tl->attachItem(music("bed2", 20), -1, 50.0, std::nullopt, false, false);
    EXPECT_EQ(later->bgmOutTime, 80.0) << "the end of the main lane";
    tl->insertItemInMainLane(asset("intro", 12), 0);
    EXPECT_EQ(bgm->inTime, 17.0);
    EXPECT_EQ(bgm->bgmOutTime, 42.0) << "follows the jingle that moved";

    // A split item moves whole with a ripple, but material moving away after it does not lengthen it.
    bgm->cutOnce = true;
    tl->removeItemInMainLane(0);
    EXPECT_EQ(bgm->inTime, 5.0);
    EXPECT_EQ(bgm->bgmOutTime, 30.0);
    tl->insertItemInMainLane(asset("intro2", 12), 0);
    EXPECT_EQ(bgm->bgmOutTime, 42.0);
    tl->insertItemInMainLane(asset("gap", 7), 2); // between the music's start and the jingle
    EXPECT_EQ(tl->getNextJingle(bgm->inTime)->inTime, 49.0);
    EXPECT_EQ(bgm->bgmOutTime, 42.0) << "its end only gets earlier";
    expectInvariants(*tl);
}

TEST(AETimeLinePlacing, MusicMovedPastItsOldEndByAnInsertIsKept) {
    auto tl = timeline();
    fillMainLane(*tl, {30});
    tl->appendItemInMainLane(asset("jingle", 10, AEAssetType::jingle));
    fillMainLane(*tl, {40});
    const auto bgm = tl->attachItem(music("bed", 20), -1, 20.0, std::nullopt, false, false);
    ASSERT_EQ(bgm->bgmOutTime, 30.0);
    tl->insertItemInMainLane(asset("intro", 15), 0);
    ASSERT_EQ(tl->attachedItems.size(), 1u);
    EXPECT_EQ(bgm->inTime, 35.0);
    EXPECT_EQ(bgm->bgmOutTime, 45.0);

    // Music is placed for the stretch it will cover, not the empty one it has before its end is known.
    const auto fx = tl->attachItem(asset("fx", 5, AEAssetType::effect), -1, 60.0, std::nullopt, false, false);
    const auto bed = tl->attachItem(music("bed2", 20), -1, 50.0, std::nullopt, false, false);
    EXPECT_NE(fx->lane, bed->lane);
    expectInvariants(*tl);
}

TEST(AETimeLinePlacing, InsertSilenceGoesToTheCutNearestTheHoverPoint) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10});
    tl->insertSilence(3.0);
    EXPECT_EQ(tl->mainLane.size(), 2u) << "no hover point: no cut to insert at";

    int snapshots = 0;
    tl->undoDoCallback = [&] { ++snapshots; };
    tl->view->ephemeralPlayhead->hidden = false;
    tl->view->ephemeralPlayhead->currentTime = 11.0;
    tl->insertSilence(3.0);
    ASSERT_EQ(tl->mainLane.size(), 3u);
    EXPECT_EQ(tl->mainLane[1]->asset->type, AEAssetType::silence);
    EXPECT_EQ(tl->mainLane[1]->asset->id, "AESilence");
    EXPECT_EQ(tl->mainLane[1]->range.duration(), 3.0);
    EXPECT_FALSE(tl->mainLane[1]->player);
    EXPECT_EQ(snapshots, 2) << "its own step and the insert's";
    expectInvariants(*tl);
}
