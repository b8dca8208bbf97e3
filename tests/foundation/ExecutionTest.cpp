#include "foundation/Execution.h"

#include "foundation/QXTimer.h"
#include "support/EventWait.h"

#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace std::chrono_literals;
using testenv::waitUntil;

namespace {
bool onMainThread() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

double secondsOf(const std::function<void()>& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}
} // namespace

TEST(Fork, JoinReturnsAtOnceUnstartedWaitsForEndOrGivesUpAfterItsLimit) {
    Fork fork;
    EXPECT_LT(secondsOf([&] { fork.join(); }), 0.05);
    EXPECT_TRUE(fork.timeoutJoin(10.0));

    int result = 0; // plain: the join orders it
    fork.start();
    std::thread worker([&] {
        std::this_thread::sleep_for(20ms);
        result = 42;
        fork.end();
    });
    fork.join();
    EXPECT_EQ(result, 42);
    EXPECT_FALSE(fork.started);
    worker.join();

    fork.start();
    bool finished = true;
    const double waited = secondsOf([&] { finished = fork.timeoutJoin(0.05); });
    EXPECT_FALSE(finished);
    EXPECT_GE(waited, 0.05);
    EXPECT_LT(waited, 1.0);
}

TEST(Fork, HoldBlocksUntilReleased) {
    Hold gate;
    gate.waitForRelease(); // released at first
    gate.hold();
    std::atomic<bool> passed = false;
    std::thread waiter([&] {
        gate.waitForRelease();
        passed = true;
    });
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(passed);
    gate.release();
    waiter.join();
    EXPECT_TRUE(passed);
}

TEST(Execution, ParallelizeRunsBothOnTwoThreadsAndJoins) {
    std::atomic<int> a = 0, b = 0;
    std::thread::id aThread, bThread;
    Parallelize::execute(
        [&] {
            std::this_thread::sleep_for(20ms);
            aThread = std::this_thread::get_id();
            a = 1;
        },
        [&] {
            bThread = std::this_thread::get_id();
            b = 1;
        });
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 1);
    EXPECT_EQ(bThread, std::this_thread::get_id());
    EXPECT_NE(aThread, bThread);
}

TEST(Execution, SerializeWaitsForABackgroundRun) {
    std::thread::id ran;
    bool done = false;
    Serialize::execute([&] {
        std::this_thread::sleep_for(10ms);
        ran = std::this_thread::get_id();
        done = true;
    });
    EXPECT_TRUE(done);
    EXPECT_NE(ran, std::this_thread::get_id());
}

// Work that joins other work from inside the pool must not starve it; the outer join waits for all.
TEST(Execution, NestedJoinsOnThePoolDoNotStarve) {
    std::atomic<int> leaves = 0;
    MultiFork all;
    for (int i = 0; i < 8; ++i) {
        all.startThread();
        Queue::execute([&] {
            Serialize::execute([&] { ++leaves; });
            all.end();
        });
    }
    all.join();
    EXPECT_EQ(leaves, 8);
}

TEST(XMain, OnTheMainThreadExecuteRunsInlineAndAsyncExecuteDefers) {
    int ran = 0;
    XMain::execute([&] { ++ran; });
    XMain::execute([&] { ++ran; }, true);
    EXPECT_EQ(ran, 2);
    XMain::asyncExecute([&] { ++ran; });
    EXPECT_EQ(ran, 2);
    EXPECT_TRUE(waitUntil([&] { return ran == 3; }));
}

TEST(XMain, FromAWorkerExecuteRunsOnMainAndReturnsAfterItWhileAsyncDoesNotWait) {
    std::atomic<bool> asyncRan = false, asyncOnMain = false, ranOnMain = false, sawResult = false;
    std::thread([&] {
        XMain::execute(
            [&] {
                asyncOnMain = onMainThread();
                asyncRan = true;
            },
            true);
    }).join(); // the main loop has not turned: the closure cannot have run
    EXPECT_FALSE(asyncRan);
    std::atomic<bool> workerDone = false;
    std::thread worker([&] {
        bool result = false;
        XMain::execute([&] {
            ranOnMain = onMainThread();
            result = true;
        });
        sawResult = result;
        workerDone = true;
    });
    ASSERT_TRUE(waitUntil([&] { return workerDone.load(); }));
    worker.join();
    EXPECT_TRUE(ranOnMain);
    EXPECT_TRUE(sawResult);
    EXPECT_TRUE(asyncRan);
    EXPECT_TRUE(asyncOnMain);
}

TEST(XMain, QueueRunsWorkInBackgroundThenCompletionOnMain) {
    std::atomic<bool> workOnMain = true;
    bool completionOnMain = false, completed = false;
    int value = 0;
    XMain::queue(
        [&] {
            workOnMain = XMain::isMain();
            value = 7;
        },
        [&] {
            completionOnMain = onMainThread();
            completed = value == 7;
        });
    ASSERT_TRUE(waitUntil([&] { return completed; }));
    EXPECT_FALSE(workOnMain);
    EXPECT_TRUE(completionOnMain);
}

TEST(XMain, ExecuteOnceInWaitsThenRunsOnMain) {
    bool ran = false;
    const auto begin = std::chrono::steady_clock::now();
    double after = 0;
    XMain::executeOnceIn(0.03, [&] {
        after = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        ran = onMainThread();
    });
    ASSERT_TRUE(waitUntil([&] { return ran; }));
    EXPECT_GE(after, 0.025);

    bool cancelledRan = false;
    XMain::executeOnceIn(0.01, [&] { cancelledRan = true; })->stop();
    testenv::pumpEventsFor(40);
    EXPECT_FALSE(cancelledRan);
}

TEST(TimeOut, SlowWorkTriggersTheCallbackOnTheCallerAndQuickWorkSkipsIt) {
    bool timedOut = false;
    EXPECT_TRUE(TimeOut::execute(
        5.0, [] {}, [&] { timedOut = true; }));
    EXPECT_FALSE(timedOut);

    auto release = std::make_shared<Hold>();
    release->hold();
    std::thread::id callbackThread;
    bool finished = true;
    const double waited = secondsOf([&] {
        finished = TimeOut::execute(
            0.03, [release] { release->waitForRelease(); },
            [&] { callbackThread = std::this_thread::get_id(); });
    });
    release->release();
    EXPECT_FALSE(finished);
    EXPECT_EQ(callbackThread, std::this_thread::get_id());
    EXPECT_GE(waited, 0.03);
}

TEST(TimeOut, WatchdogFiresUnlessCancelled) {
    bool fired = false, cancelledFired = false;
    TimeOut::execute("test.fires", 0.01, [&] { fired = onMainThread(); });
    TimeOut::execute("test.cancelled", 0.01, [&] { cancelledFired = true; });
    TimeOut::cancel("test.cancelled");
    ASSERT_TRUE(waitUntil([&] { return fired; }));
    testenv::pumpEventsFor(20);
    EXPECT_FALSE(cancelledFired);
}

TEST(QXStopwatch, SumsClosedSlicesOnly) {
    QXStopwatch watch;
    EXPECT_EQ(watch.currentSlice(), 0.0);
    watch.start();
    std::this_thread::sleep_for(20ms);
    EXPECT_GE(watch.currentSlice(), 0.02);
    EXPECT_EQ(watch.getDuration(), 0.0);
    watch.pause();
    const double first = watch.getDuration();
    EXPECT_GE(first, 0.02);
    std::this_thread::sleep_for(20ms); // paused: not counted
    EXPECT_EQ(watch.getDuration(), first);
    watch.start();
    std::this_thread::sleep_for(10ms);
    watch.pause();
    EXPECT_GE(watch.getDuration(), first + 0.01);
    EXPECT_LT(watch.getDuration(), first + 0.015 + 0.2);
}
