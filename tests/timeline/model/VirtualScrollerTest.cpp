#include "timeline/model/VirtualScroller.h"

#include "support/EventWait.h"

#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace {
void expectRange(const VSRange& r, double i, double o) {
    EXPECT_DOUBLE_EQ(r.i, i);
    EXPECT_DOUBLE_EQ(r.o, o);
}
} // namespace

TEST(VirtualScroller, SetVisibleRangeClampsIntoTheTotal) {
    VirtualScroller s("t", {0, 100});
    s.setVisibleRange(-5, 15); // before the start: the length is kept
    expectRange(s.visibleRange, 0, 20);
    s.setVisibleRange(90, 110); // past the end: shifted back
    expectRange(s.visibleRange, 80, 100);
    s.setVisibleRange(-50, 200); // longer than the total: limited to it
    expectRange(s.visibleRange, 0, 100);
    s.setVisibleRange(40, 40);
    expectRange(s.visibleRange, 0, 30);
    s.setTotalRange(0, 10); // a shrunk total pulls the view in
    expectRange(s.visibleRange, 0, 10);
    s.setVisibleRange(2, 4);
    s.setVisibleRange(7, 7); // the empty-request answer is clamped too
    expectRange(s.visibleRange, 0, 10);
}

TEST(VirtualScroller, ValueAndRatioRoundTripAndSurviveAnEmptyTotal) {
    VirtualScroller s("t", {0, 10});
    s.setVisibleRange(2, 5);
    EXPECT_DOUBLE_EQ(s.scrollerRatio, 0.3);
    s.visibleRange = {};
    s.setVisibleRangeInternal();
    expectRange(s.visibleRange, 2, 5);

    s.setTotalRange(0, 0);
    EXPECT_EQ(s.scrollerRatio, 1.0);
    EXPECT_EQ(s.scrollerValue, 0.0);
}

TEST(VirtualScroller, IdleReportsEachControlChangeOnceAndNotWhileHeld) {
    int calls = 0;
    VirtualScroller s("t", {0, 100}, [&] { ++calls; });
    std::pair<double, double> control{0.5, 0.2};
    s.readControl = [&] { return control; };
    s.hold.hold();
    s.idle();
    EXPECT_EQ(calls, 0);
    s.hold.release();
    s.idle();
    s.idle();
    EXPECT_EQ(calls, 1);
    expectRange(s.visibleRange, 40, 60);
    control = {0.5, 0.001}; // below minLength: raised to minRatio
    s.idle();
    EXPECT_EQ(calls, 2);
    EXPECT_DOUBLE_EQ(s.visibleRange.length(), 1.0);
}

TEST(VirtualScroller, MagnifyCentresAndStopsAtMinLength) {
    int calls = 0;
    VirtualScroller s("t", {0, 100}, [&] { ++calls; });
    s.setVisibleRange(20, 60);
    s.magnify(10);
    expectRange(s.visibleRange, 35, 45);
    s.magnify(0.25, 70.0);
    expectRange(s.visibleRange, 69.5, 70.5);
    EXPECT_EQ(calls, 0);
    s.magnify(20, 2.0, true); // near the start: shifted, length kept
    expectRange(s.visibleRange, 0, 20);
    EXPECT_EQ(calls, 1);
}

TEST(VirtualScroller, ShiftMovesAndWritesTheControl) {
    VirtualScroller s("t", {0, 100});
    std::vector<std::pair<double, double>> written;
    s.writeControl = [&](double v, double r) { written.emplace_back(v, r); };
    s.setVisibleRange(10, 30);
    s.shiftVisibleRange(20);
    expectRange(s.visibleRange, 30, 50);
    s.shiftVisibleRange(100);
    expectRange(s.visibleRange, 80, 100);
    ASSERT_EQ(written.size(), 3u);
    EXPECT_DOUBLE_EQ(written[1].first, 30.0 / 80.0);
    EXPECT_DOUBLE_EQ(written.back().first, 1.0);
    EXPECT_EQ(s.hold.status, Hold::Status::released);
}

TEST(VirtualScroller, AWorkerSetsTheRangeButTheControlIsWrittenOnMain) {
    VirtualScroller s("t", {0, 100});
    std::atomic<bool> wroteOnMain = false, done = false;
    s.writeControl = [&](double, double) {
        wroteOnMain = QThread::currentThread() == QCoreApplication::instance()->thread();
    };
    std::thread worker([&] {
        s.setVisibleRange(10, 20);
        done = true;
    });
    ASSERT_TRUE(testenv::waitUntil([&] { return done.load(); }));
    worker.join();
    EXPECT_TRUE(wroteOnMain);
    expectRange(s.visibleRange, 10, 20);
}
