#include "TimelineFixture.h"
#include "foundation/Prefs.h"
#include "foundation/Timecode.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLineLanesHelper.h"

using namespace tlfixture;

TEST(AETimeLineViewport, PixelsAndSeconds) {
    auto tl = timeline();
    fillMainLane(*tl, {200});
    showSeconds(*tl, 0, 100);
    EXPECT_EQ(tl->xToTime(12.0, true), simpleRound(1.2));
    EXPECT_DOUBLE_EQ(tl->xToTime(12.0, true, false), 1.2);
    EXPECT_EQ(tl->timeToX(0), 0.0);
    showSeconds(*tl, 50, 150);
    EXPECT_EQ(tl->timeToX(50), 0.0);
    EXPECT_EQ(tl->timeToX(100), 500.0);
    EXPECT_EQ(tl->xToTime(500), 100.0);

    const auto lane0 = tl->getLane(0);
    ASSERT_TRUE(lane0);
    EXPECT_EQ(tl->yToLaneN(72.0 + lane0->y + 1), 0);
    EXPECT_FALSE(tl->yToLaneN(72.0 + lane0->y)) << "edges belong to no lane";
    EXPECT_FALSE(tl->yToLaneN(-50));
    EXPECT_FALSE(tl->laneToYs(7));
}

TEST(AETimeLineViewport, RightBoundLeavesRoomAfterTheEnd) {
    auto tl = timeline();
    EXPECT_EQ(tl->getRightBound(), 10.0) << "empty";
    fillMainLane(*tl, {4});
    EXPECT_EQ(tl->getRightBound(), 10.0) << "never below 10 s";
    fillMainLane(*tl, {996});
    showSeconds(*tl, 0, 200);
    EXPECT_EQ(tl->getRightBound(), 1030.0) << "5 % would be 50 s: the 30 s cap wins";
    showSeconds(*tl, 0, 20);
    EXPECT_EQ(tl->getRightBound(), 1010.0) << "half the visible length is less still";
    tl->setInsetViewSize();
    EXPECT_EQ(tl->virtualScroller->totalRange.o, 1010.0);

    auto bare = AETimeLine::make("bare");
    bare->appendItemInMainLane(asset("a", 100), std::nullopt, false);
    EXPECT_EQ(bare->getRightBound(), 105.0) << "without a scroller the room is at most 5 s";
}

TEST(AETimeLineViewport, ZoomHalvesOrDoublesDownToOneSecond) {
    auto tl = timeline();
    fillMainLane(*tl, {1000});
    showSeconds(*tl, 0, 100);
    tl->idleFast(); // the scroller reports the range to the timeline on the fast tick
    EXPECT_TRUE(tl->currentViewRange.isEqual(AETimeRange(0, 100)));
    tl->setPlayheadTime(80);
    tl->zoomIn(AEZoomTo::playhead);
    EXPECT_EQ(tl->virtualScroller->visibleRange.i, 55.0);
    EXPECT_EQ(tl->virtualScroller->visibleRange.o, 105.0);
    for (int n = 0; n < 10; ++n)
        tl->zoomIn(AEZoomTo::playhead);
    EXPECT_DOUBLE_EQ(tl->virtualScroller->visibleRange.length(), 1.0);
    tl->zoomOut(AEZoomTo::viewportCenter);
    EXPECT_DOUBLE_EQ(tl->virtualScroller->visibleRange.length(), 2.0);

    tl->idleFast();
    tl->setPlayheadTime(500);
    EXPECT_FALSE(tl->playheadVisible());
    tl->centerToPlayHead();
    tl->idleFast();
    EXPECT_TRUE(tl->playheadVisible());
    EXPECT_DOUBLE_EQ(tl->virtualScroller->visibleRange.center(), 500.0);

    tl->shiftRight();
    EXPECT_DOUBLE_EQ(tl->virtualScroller->visibleRange.center(), 500.4);
    tl->shiftLeft(2.0);
    EXPECT_DOUBLE_EQ(tl->virtualScroller->visibleRange.center(), 499.6);

    tl->magnify(0.5, true);
    EXPECT_DOUBLE_EQ(tl->virtualScroller->visibleRange.length(), 1.0);
    tl->magnify(-1.0, true);
    EXPECT_DOUBLE_EQ(tl->virtualScroller->visibleRange.length(), 2.0);
    tl->virtualScroller->magnificationAllowed = false;
    tl->magnify(-1.0, true);
    EXPECT_DOUBLE_EQ(tl->virtualScroller->visibleRange.length(), 2.0) << "no pinch while playing";

    const double bound = tl->getRightBound(); // with 2 s in view: 1 s of room
    tl->setViewportRangeAll();
    EXPECT_EQ(tl->virtualScroller->visibleRange.i, 0.0);
    EXPECT_EQ(tl->virtualScroller->visibleRange.o, bound);
}

TEST(AETimeLineViewport, PlayheadWhilePaused) {
    auto tl = timeline();
    fillMainLane(*tl, {200});
    showSeconds(*tl, 0, 100);
    tl->idleFast();
    tl->setPlayheadTime(40);
    EXPECT_EQ(tl->getPlayHeadTime(), 40.0);
    EXPECT_EQ(tl->view->playhead->x, 400.0);
    EXPECT_FALSE(tl->view->playhead->hidden);
    EXPECT_EQ(tl->view->mainTimecodeText, tc_getFloatTimecode(40.0));
    tl->setPlayheadTime(150);
    EXPECT_TRUE(tl->view->playhead->hidden) << "out of view";
    tl->setPlayheadTime(150, true);
    tl->idleFast(); // the view range reaches the timeline
    tl->idle();     // and the playhead is drawn again
    EXPECT_FALSE(tl->view->playhead->hidden);
    EXPECT_EQ(tl->view->playhead->x, 500.0);
}

TEST(AETimeLineLanes, LayoutFollowsTheSetupAndTheLanesInUse) {
    auto tl = timeline();
    fillMainLane(*tl, {100});
    AETimeLineLanesHelper::setBGM(*tl, 400);
    const auto main = tl->getLane(0);
    EXPECT_EQ(main->y, 20 + 175 + 5);
    EXPECT_EQ(main->height, 175);
    tl->attachItem(asset("fx", 10, AEAssetType::effect), 1, 0, std::nullopt, false, false);
    tl->attachItem(asset("fx2", 10, AEAssetType::effect), 1, 5, std::nullopt, false, false);
    tl->attachItem(music("bed", 10), -1, 0, std::nullopt, false, false);
    EXPECT_EQ(AETimeLineLanesHelper::getLaneN(*tl, true), 2);
    EXPECT_EQ(AETimeLineLanesHelper::getLaneN(*tl, false), 1);
    EXPECT_EQ(tl->getLane(1)->height, 17.5) << "the effects area shared by two lanes";
    EXPECT_EQ(tl->getLane(2)->y, tl->getLane(1)->y + 17.5);
    EXPECT_EQ(tl->getLane(-1)->y, 20);

    AETimeLineLanesHelper::setSetup(AETimeLineLanesViewSetup::allEquals);
    EXPECT_EQ(prefs_getValueInt("LanesMode", -1), 3);
    tl->setupLanes();
    EXPECT_EQ(tl->getLane(0)->height, tl->getLane(-1)->height);
    prefs_setValueInt("LanesMode", 2);
    AETimeLineLanesHelper::loadSetup();
    EXPECT_EQ(AETimeLineLanesHelper::lanesViewSetup.load(), AETimeLineLanesViewSetup::normal)
        << "2 is not a setup";
    prefs_setValueInt("LanesMode", 1);
    AETimeLineLanesHelper::loadSetup();
    const auto f = AETimeLineLanesHelper::setupLanes(*tl);
    EXPECT_EQ(f.main, 0.65);
    AETimeLineLanesHelper::setSetup(AETimeLineLanesViewSetup::normal);

    AETimeLineLanesHelper::lanesViewMode = AETimeLineLanesViewMode::mainOnly;
    tl->setupLanes();
    EXPECT_EQ(tl->getLane(0)->y, 20);
    EXPECT_EQ(tl->getLane(0)->height, 400);
    AETimeLineLanesHelper::lanesViewMode = AETimeLineLanesViewMode::complete;
}
