#include "foundation/QXTimer.h"

#include "support/EventWait.h"

#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using testenv::pumpEventsFor;
using testenv::waitUntil;

namespace {
class QXTimerTest : public ::testing::Test {
protected:
    void TearDown() override {
        for (const QString& name : QXTimer::getTimerNameList())
            QXTimer::stopByName(name);
        pumpEventsFor(5);
    }
};
} // namespace

TEST_F(QXTimerTest, SecondLoopWithTheSameNameReplacesTheFirst) {
    int first = 0, second = 0;
    auto a = QXTimer::loop("test.same", 0.005, false, [&] { ++first; });
    auto b = QXTimer::loop("test.same", 0.005, false, [&] { ++second; });
    EXPECT_EQ(QXTimer::getTimerNameList().count("test.same"), 1);
    EXPECT_FALSE(a->isRunning());
    EXPECT_TRUE(b->isRunning());
    ASSERT_TRUE(waitUntil([&] { return second >= 3; }));
    EXPECT_EQ(first, 0);
}

TEST_F(QXTimerTest, FireOnceAndATriggeredLoopRunOnceInTheirFirstInterval) {
    int calls = 0;
    QXTimer::loop("test.immediate", 10.0, true, [&] { ++calls; });
    EXPECT_EQ(calls, 1) << "triggered at once";
    auto once = QXTimer::fireOnce(0.005, false, [&] { ++calls; });
    auto other = QXTimer::fireOnce(0.005, false, [&] { ++calls; }); // unnamed: no replacing
    EXPECT_NE(once->name, other->name);
    EXPECT_TRUE(QXTimer::getTimerNameList().contains(once->name));
    ASSERT_TRUE(waitUntil([&] { return calls == 3; }));
    pumpEventsFor(40);
    EXPECT_EQ(calls, 3);
    EXPECT_FALSE(once->isRunning());
    EXPECT_FALSE(QXTimer::getTimerNameList().contains(once->name));
}

TEST_F(QXTimerTest, StopAndStopByNameEndTicks) {
    std::atomic<int> a = 0, b = 0;
    auto timerA = QXTimer::loop("test.stopA", 0.002, false, [&] { ++a; });
    QXTimer::loop("test.stopB", 0.002, false, [&] { ++b; });
    ASSERT_TRUE(waitUntil([&] { return a >= 2 && b >= 2; }));
    timerA->stop();
    QXTimer::stopByName("test.stopB");
    const int aAtStop = a, bAtStop = b;
    pumpEventsFor(30);
    EXPECT_EQ(a, aAtStop);
    EXPECT_EQ(b, bAtStop);
    EXPECT_FALSE(QXTimer::getTimerNameList().contains("test.stopA"));
    EXPECT_FALSE(QXTimer::getTimerNameList().contains("test.stopB"));
}

TEST_F(QXTimerTest, TimerWithoutOwnerKeepsTickingUntilStoppedByName) {
    int calls = 0;
    const int madeBefore = QXTimer::timerCount();
    std::weak_ptr<QXTimer> weak = QXTimer::loop("test.orphan", 0.003, false, [&] { ++calls; });
    EXPECT_EQ(QXTimer::timerCount(), madeBefore + 1);
    ASSERT_TRUE(waitUntil([&] { return calls >= 3; }));
    EXPECT_FALSE(weak.expired());
    QXTimer::stopByName("test.orphan");
    pumpEventsFor(10);
    EXPECT_TRUE(weak.expired());
}

TEST_F(QXTimerTest, ALoopStartedFromAWorkerTicksOnMainAndAStopThereBeforeItExistsWins) {
    std::atomic<int> ticks = 0, stoppedTicks = 0;
    std::atomic<bool> offMain = false;
    std::atomic<bool> immediateOnWorker = false;
    std::thread worker([&] {
        const auto workerId = std::this_thread::get_id();
        QXTimer::loop("test.worker", 0.003, true, [&, workerId] {
            if (std::this_thread::get_id() == workerId) {
                immediateOnWorker = true;
                return;
            }
            if (QThread::currentThread() != QCoreApplication::instance()->thread()) offMain = true;
            ++ticks;
        });
        QXTimer::loop("test.quickStop", 0.001, false, [&] { ++stoppedTicks; })->stop();
    });
    worker.join();
    EXPECT_TRUE(immediateOnWorker);
    ASSERT_TRUE(waitUntil([&] { return ticks >= 3; }));
    EXPECT_FALSE(offMain);
    EXPECT_EQ(stoppedTicks, 0);
    EXPECT_FALSE(QXTimer::getTimerNameList().contains("test.quickStop"));
}
