#include "TimelineFixture.h"
#include "foundation/QXTimer.h"
#include "support/EventWait.h"

using namespace tlfixture;

namespace {
bool running(const QString& name) {
    return QXTimer::getTimerNameList().contains(name);
}
} // namespace

TEST(AETimeLineIdle, TimersDrawOnRequestAndStopWithTheTimeline) {
    int draws = 0;
    {
        auto tl = timeline();
        tl->drawDelegate = [&] { ++draws; };
        EXPECT_TRUE(running("AETimeLine.commonIdle"));
        EXPECT_TRUE(running("AETimeLine.lowPriorityIdle"));
        EXPECT_TRUE(running("AETimeLine.commonFastIdle"));
        testenv::pumpEventsFor(100); // the scroller reports its first range, which asks for a drawing
        draws = 0;
        tl->mustDraw = false;
        testenv::pumpEventsFor(150);
        EXPECT_EQ(draws, 0) << "no request, no drawing";
        tl->mustDraw = true;
        EXPECT_TRUE(testenv::waitUntil([&] { return draws > 0; }));
        EXPECT_FALSE(tl->mustDraw);

        // A snapshot is taken with the timers held, and they run again afterwards.
        const auto snapshot = tl->getStatus();
        EXPECT_TRUE(running("AETimeLine.commonIdle"));
        tl->stopTimers();
        EXPECT_FALSE(running("AETimeLine.commonIdle"));
        tl->startTimers();
    }
    EXPECT_FALSE(running("AETimeLine.commonFastIdle")) << "a timeline that goes takes its ticks with it";

    auto scratch = AETimeLine::make("scratch");
    scratch->timelineEditor = AETimelineEditor::asset;
    scratch->startTimers();
    EXPECT_FALSE(running("AETimeLine.lowPriorityIdle")) << "an asset's own editor does no housekeeping";
    scratch->stopTimers();
}

TEST(AETimeLineIdle, HousekeepingCleansLanesOnALaterTurn) {
    auto tl = timeline();
    fillMainLane(*tl, {60});
    const auto fx = tl->attachItem(asset("fx", 10, AEAssetType::effect), 1, 5, std::nullopt, false, false);
    fx->lane = 4; // as a stale file might hold it
    tl->getCollectedItems();
    EXPECT_FALSE(fx->asset->userBool);
    tl->lowPriorityidle();
    EXPECT_TRUE(tl->mustDraw);
    EXPECT_EQ(fx->lane, 4) << "not within the tick itself";
    EXPECT_TRUE(testenv::waitUntil([&] { return fx->lane == 1; }));
    EXPECT_TRUE(testenv::waitUntil([&] { return fx->asset->userBool; }));
    tl->stopTimers();
}
