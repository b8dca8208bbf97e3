#include "TimelineFixture.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AELane.h"

using namespace tlfixture;

namespace {
// A click in the middle of a lane at a time.
AEMouseEvent clickAt(AETimeLine& tl, double t, int64_t lane) {
    const auto ys = tl.laneToYs(lane);
    return AEMouseEvent{QPointF(tl.timeToX(t), 72.0 + (ys->first + ys->second) / 2), Qt::NoModifier};
}
} // namespace

TEST(AETimeLineCutting, SlicingOnACutOrAtTheEndsIsNoEditAndNoUndoStep) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10});
    int snapshots = 0;
    tl->undoDoCallback = [&] { ++snapshots; };
    for (const double t : {0.0, 10.0, 20.0})
        tl->sliceMainLane(t);
    EXPECT_EQ(snapshots, 0);
    EXPECT_EQ(tl->mainLane.size(), 2u);

    tl->sliceMainLane(35.0); // past the end: nothing to cut, and the last clip must not grow
    EXPECT_EQ(tl->mainLane.size(), 2u);
    EXPECT_EQ(tl->getMainLaneOutTime(), 20.0);
}

TEST(AETimeLineCutting, HalvesShareMarkersAndDivideKeyframesWithoutTheOneOnTheCut) {
    auto tl = timeline();
    fillMainLane(*tl, {30});
    const auto a = tl->mainLane[0];
    const auto marker = a->addMarker(7.0, std::nullopt, "m", AEMarkerType::normal);
    a->volumeKFs->setKeyframe(5.0, -3.0);
    a->volumeKFs->setKeyframe(11.0, -9.0);
    a->volumeKFs->setKeyframe(20.0, -1.0);
    tl->muteItem(a);
    a->ducked = true;

    tl->sliceMainLane(11.0);
    const auto b = tl->mainLane[1];
    ASSERT_EQ(b->markers.size(), 1u);
    EXPECT_EQ(b->markers[0], marker) << "the same marker object on both halves";
    ASSERT_EQ(a->volumeKFs->keyframes.size(), 1u);
    EXPECT_EQ(a->volumeKFs->keyframes[0]->time, 5.0);
    ASSERT_EQ(b->volumeKFs->keyframes.size(), 1u);
    EXPECT_EQ(b->volumeKFs->keyframes[0]->time, 20.0) << "a point exactly on the cut is lost from both";
    EXPECT_NE(a->volumeKFs, b->volumeKFs);
    EXPECT_EQ(b->kfView->keyframes, b->volumeKFs);
    EXPECT_FALSE(AETimeLine::itemActive(a));
    EXPECT_TRUE(AETimeLine::itemActive(b)) << "a cut through a muted clip gives a sounding second half";
    EXPECT_TRUE(a->ducked);
    EXPECT_FALSE(b->ducked);
    expectInvariants(*tl);
}

TEST(AETimeLineCutting, SplittingMusicMarksTheFirstHalfCutAndLetsTheSecondRunOn) {
    auto tl = timeline();
    fillMainLane(*tl, {60});
    const auto bgm = tl->attachItem(music("bed", 100), -1, 10, std::nullopt, false, false);
    ASSERT_EQ(bgm->bgmOutTime, 60.0);
    tl->splitAttachedItem(bgm, 30);
    EXPECT_TRUE(bgm->cutOnce);
    EXPECT_EQ(bgm->bgmOutTime, 30.0);
    EXPECT_TRUE(bgm->range.isEqual(AETimeRange(0, 20)));
    ASSERT_EQ(tl->attachedItems.size(), 2u);
    const auto second = tl->attachedItems[1];
    EXPECT_EQ(second->inTime, 30.0);
    EXPECT_FALSE(second->cutOnce);
    EXPECT_EQ(second->bgmOutTime, 60.0);
    EXPECT_EQ(second->lane, bgm->lane);
    expectInvariants(*tl);
}

TEST(AETimeLineCutting, SplittingAtOrPastTheMainLaneEndLosesTheTail) {
    auto tl = timeline();
    fillMainLane(*tl, {10});
    const auto fx = tl->attachItem(asset("fx", 20, AEAssetType::effect), 1, 5, std::nullopt, false, false);
    fx->addMarker(1.0, std::nullopt, "kept", AEMarkerType::normal);
    tl->splitAttachedItem(fx, 12);
    ASSERT_EQ(tl->attachedItems.size(), 1u);
    EXPECT_TRUE(fx->range.isEqual(AETimeRange(0, 7)));

    const auto other = tl->attachItem(asset("fx2", 8, AEAssetType::effect), 1, 1, std::nullopt, false, false);
    tl->splitAttachedItem(other, 3);
    ASSERT_EQ(tl->attachedItems.size(), 3u);
    const auto half = tl->attachedItems[2];
    EXPECT_TRUE(half->range.isEqual(AETimeRange(2, 8)));
    EXPECT_TRUE(half->markers.empty()) << "markers stay with the first half of an attached split";
    tl->splitAttachedItem(other, other->inTime); // on its own edge: nothing
    EXPECT_EQ(tl->attachedItems.size(), 3u);
    expectInvariants(*tl);
}

TEST(AETimeLineCutting, BladeCutsTheLaneUnderThePointerAndPushesTwoSnapshots) {
    auto tl = timeline();
    fillMainLane(*tl, {40});
    const auto fx = tl->attachItem(asset("fx", 20, AEAssetType::effect), 1, 5, std::nullopt, false, false);
    int snapshots = 0;
    tl->undoDoCallback = [&] { ++snapshots; };

    tl->blade(clickAt(*tl, 20, 0));
    EXPECT_EQ(tl->mainLane.size(), 2u);
    EXPECT_EQ(snapshots, 2);

    tl->blade(clickAt(*tl, 10, 1));
    EXPECT_EQ(tl->attachedItems.size(), 2u);
    EXPECT_EQ(snapshots, 4);

    // Multi-cut: every lane at once, the playhead where it was.
    tl->setPlayheadTime(3);
    tl->blade(clickAt(*tl, 15, 0), true, true);
    EXPECT_EQ(tl->mainLane.size(), 3u);
    EXPECT_EQ(tl->attachedItems.size(), 3u);
    EXPECT_EQ(tl->currentPHTime, 3.0);
    expectInvariants(*tl);
}

TEST(AETimeLineCutting, NearestPreviousAndNextCutAndSnap) {
    auto tl = timeline();
    EXPECT_EQ(tl->getNearestCutIndex(5.0), 0);
    EXPECT_EQ(tl->getNearestCutTime(), -1.0);
    EXPECT_EQ(tl->getPreviousCutTime(), 0.0);
    EXPECT_EQ(tl->getNextCutTime(), 0.0);
    fillMainLane(*tl, {10, 10, 10});
    tl->setPlayheadTime(15);
    EXPECT_EQ(tl->getPreviousCutTime(), 10.0);
    EXPECT_EQ(tl->getNextCutTime(), 20.0);
    tl->goToNextCut();
    EXPECT_EQ(tl->currentPHTime, 20.0);
    tl->goToPreviousCut();
    EXPECT_EQ(tl->currentPHTime, 10.0);
    tl->setPlayheadTime(40);
    EXPECT_EQ(tl->getNextCutTime(), 30.0);
    tl->goToBegin();
    EXPECT_EQ(tl->currentPHTime, 0.0);
    EXPECT_EQ(tl->getPreviousCutTime(), 0.0);
    tl->goToEnd();
    EXPECT_EQ(tl->currentPHTime, 30.0);

    EXPECT_EQ(tl->getNearestCutIndex(), -1) << "no hover point";
    EXPECT_EQ(tl->getNearestCutIndex(14.0), 1);
    EXPECT_EQ(tl->getNearestCutIndex(15.0), 1) << "a tie goes to the earlier cut";
    EXPECT_EQ(tl->getNearestCutIndex(29.0), 3);
    EXPECT_EQ(tl->getNearestCutIndex(4.0), 0) << "the start of the timeline counts";

    tl->view->ephemeralPlayhead->hidden = false;
    tl->view->ephemeralPlayhead->currentTime = 28.0;
    EXPECT_EQ(tl->getNearestCutTime(), 30.0);

    showSeconds(*tl, 0, 100);
    // 100 s on 1000 px: the snap radius of 12 px is 1.2 s.
    EXPECT_EQ(tl->getNearestSnapTime(10.9), 10.0);
    EXPECT_EQ(tl->getNearestSnapTime(11.5), 11.5);
    tl->mainLane[1]->addMarker(3.0, std::nullopt, "m", AEMarkerType::normal); // at 13 on the timeline
    EXPECT_EQ(tl->getNearestSnapTime(12.5), 13.0);
    EXPECT_EQ(tl->getNearestSnapTime(0.5), 0.5) << "the very start is no snap point";
}

TEST(AETimeLineCutting, ActiveCutMarkIsPlacedOnTheMainLaneOrTakenAway) {
    struct Triangles : AETriangleDelegate {
        double x = 0;
        double bottom = 0;
        void showTriangles(double at, double yBottom, double) override {
            x = at;
            bottom = yBottom;
        }
    } triangles;
    auto tl = timeline();
    tl->triangleDelegate = &triangles;
    fillMainLane(*tl, {10, 10});
    showSeconds(*tl, 0, 100);
    tl->drawActiveCut(10.0);
    ASSERT_TRUE(tl->view->nearestCut);
    EXPECT_FALSE(tl->view->nearestCut->hidden);
    EXPECT_EQ(tl->view->nearestCut->x, 100.0);
    EXPECT_EQ(tl->view->nearestCut->y, tl->getLane(0)->y);
    EXPECT_EQ(triangles.x, 100.0);
    EXPECT_EQ(triangles.bottom, tl->getLane(0)->y);

    tl->drawActiveCut(); // no hover point: no cut
    EXPECT_TRUE(tl->view->nearestCut->hidden);
    EXPECT_EQ(triangles.x, -1000.0);
    tl->triangleDelegate = nullptr;
}
