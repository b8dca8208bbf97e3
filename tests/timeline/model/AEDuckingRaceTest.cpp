// Edits made while many ducking jobs are in flight: inserts, deletes, undos and moves of the music,
// with the event loop turned now and then so that jobs land between edits. When all jobs have
// landed the model keeps its invariants and every ducked item holds exactly the points a job on the
// final state gives: nothing of removed speech, nothing lost.

#include "TimelineFixture.h"
#include "support/EventWait.h"
#include "timeline/model/AEDucking.h"
#include "timeline/model/AEKeyframe.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/Undo.h"

#include <random>

namespace {

using namespace tlfixture;

std::vector<AEDuckingJob::Point> pointsOf(const AEKeyframeList& list) {
    std::vector<AEDuckingJob::Point> points;
    for (const auto& kf : list.keyframes)
        points.push_back({kf->time, kf->value, kf->flag0, kf->flag1});
    return points;
}

TEST(AEDuckingRace, EditsDuringJobsLeaveTheDipsOfTheFinalState) {
    std::mt19937 rng(15);
    auto tl = timeline();
    Undo undo;
    tl->undoDoCallback = [&] { undo.addStatus(tl->getStatus()); };
    int made = 0;
    const auto newSpeech = [&] {
        std::uniform_real_distribution<double> len(4, 12);
        const double d = std::round(len(rng));
        ++made;
        return speech("s" + QString::number(made), d, {{1, d - 1.5}});
    };
    for (int n = 0; n < 6; ++n)
        tl->appendItemInMainLane(newSpeech(), std::nullopt, false);
    tl->attachItem(music("bed", 200, true), -1, 2, std::nullopt, false, false);

    int maxInFlight = 0;
    for (int step = 0; step < 200; ++step) {
        const auto pick = std::uniform_int_distribution<int>(0, 9)(rng);
        const auto bgms = tl->getBGMs();
        if (pick < 3) {
            const auto at = std::uniform_int_distribution<size_t>(0, tl->mainLane.size())(rng);
            tl->insertItemInMainLane(newSpeech(), static_cast<int64_t>(at));
        } else if (pick < 5 && tl->mainLane.size() > 2) {
            const auto at = std::uniform_int_distribution<size_t>(0, tl->mainLane.size() - 1)(rng);
            tl->removeItemInMainLane(static_cast<int64_t>(at));
        } else if (pick == 5) {
            tl = undoTimeline(tl, undo);
        } else if (pick < 8 && !bgms.empty()) {
            // As a drag of the music does it.
            const auto& bed = bgms.front();
            tl->undoDoCallback();
            const double to = simpleRound(std::uniform_real_distribution<double>(0, 20)(rng));
            bed->bgmOutTime += to - bed->inTime;
            bed->inTime = to;
            AETimeLineLanesHelper::putInFirstClearLane(*tl, bed, true);
            AETimeLineLanesHelper::cleanLanes(*tl);
            tl->adjustBGM();
        } else if (pick == 8 &&
                   std::none_of(bgms.begin(), bgms.end(), [](const auto& b) { return b->ducked; })) {
            // An undo brings music back unflagged; new music ducks again.
            tl->attachItem(music("bed" + QString::number(step), 200, true), -1, 1);
        } else {
            for (const auto& bed : bgms)
                if (bed->ducked) AEDucking::duck(bed, *tl);
        }
        maxInFlight = std::max(maxInFlight, AEDucking::jobsInFlight());
        if (step % 7 == 6) testenv::pumpEventsFor(2);
        expectInvariants(*tl);
    }
    const auto bgms = tl->getBGMs();
    if (std::none_of(bgms.begin(), bgms.end(), [](const auto& b) { return b->ducked; })) {
        tl->attachItem(music("last", 200, true), -1, 1);
        tl->insertItemInMainLane(newSpeech(), 1);
    }
    ASSERT_TRUE(testenv::waitUntil([] { return AEDucking::jobsInFlight() == 0; }, 20000));
    EXPECT_GE(maxInFlight, 10) << "the edits did not overtake enough jobs";
    expectInvariants(*tl);
    int ducked = 0;
    for (const auto& bed : tl->getBGMs()) {
        if (!bed->ducked) continue;
        ++ducked;
        const auto held = pointsOf(*bed->volumeKFs);
        AEDuckingJob fresh = AEDucking::snapshot(bed, *tl);
        AEDucking::compute(fresh);
        EXPECT_EQ(held, pointsOf(*fresh.volumeKFs)) << "bed at " << bed->inTime;
        EXPECT_FALSE(held.empty());
    }
    EXPECT_GT(ducked, 0);
}

} // namespace
