#include "ui/LoadingWindow.h"

#include "foundation/QXTimer.h"
#include "support/EventWait.h"
#include "ui/RollingWheel.h"

#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using testenv::pumpEventsFor;
using testenv::waitUntil;

namespace {
std::shared_ptr<LoadingWindow> makeWindow(std::function<void()> callback) {
    return LoadingWindow::make("Zendrel", "Cleaning", "Removing noise from the interview",
                               std::move(callback), "wheel");
}

bool closed(const QPointer<QDialog>& dialog) {
    return dialog.isNull() || !dialog->isVisible();
}

class LoadingWindowTest : public ::testing::Test {
protected:
    // Windows free their dialogs later; free them before the next test (and before exit).
    void TearDown() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
};
} // namespace

TEST_F(LoadingWindowTest, RunsItsCallbackOnceAfterAppearing) {
    int calls = 0;
    bool visibleAtCall = false, onMain = false;
    std::shared_ptr<LoadingWindow> window;
    window = makeWindow([&] {
        ++calls;
        visibleAtCall = window->dialog()->isVisible();
        onMain = QThread::currentThread() == QCoreApplication::instance()->thread();
    });
    EXPECT_EQ(calls, 0); // not before the window has shown
    ASSERT_TRUE(waitUntil([&] { return calls == 1; }));
    EXPECT_TRUE(visibleAtCall);
    EXPECT_TRUE(onMain);
    EXPECT_EQ(window->dialog()->windowTitle(), "Zendrel");
    EXPECT_EQ(window->dialog()->findChild<QLabel*>("title")->text(), "Cleaning");

    window->dialog()->hide();
    window->dialog()->show();
    window->viewHasAppeared();
    pumpEventsFor(20);
    EXPECT_EQ(calls, 1);
    window->dialog()->close();
}

TEST_F(LoadingWindowTest, PercentageFromAWorkerMovesTheBarAndTheEstimate) {
    auto window = makeWindow({});
    auto* bar = window->dialog()->findChild<QProgressBar*>();
    auto* eta = window->dialog()->findChild<QLabel*>("eta");
    ASSERT_TRUE(bar && eta);
    std::thread worker([window] { window->setPercentage(0.5); });
    worker.join();
    ASSERT_TRUE(waitUntil([&] { return bar->value() == bar->maximum() / 2; }));
    // Half done in next to no time: only seconds to go.
    EXPECT_EQ(eta->text(), "ETA: Still a few seconds...");
    window->setPercentage(2.0);
    EXPECT_EQ(bar->value(), bar->maximum());

    auto* wheel = window->dialog()->findChild<RollingWheel*>("wheel");
    ASSERT_TRUE(wheel);
    const int frame = wheel->frame();
    EXPECT_TRUE(waitUntil([&] { return wheel->frame() != frame; }));
    window->dialog()->close();
}

TEST_F(LoadingWindowTest, DismissFromWorkersClosesEveryWindowAndEndsTheIdleTimer) {
    std::atomic<bool> firstStarted = false;
    auto first = makeWindow([&] { firstStarted = true; });
    auto second = makeWindow({});
    QPointer<QDialog> firstDialog = first->dialog(), secondDialog = second->dialog();
    ASSERT_TRUE(waitUntil([&] { return firstStarted.load(); }));

    std::thread worker([first = std::move(first), second = std::move(second)]() mutable {
        first->dismiss();
        second->dismiss();
        first.reset(); // the job lets go at once; the window still closes
        second.reset();
    });
    worker.join();
    ASSERT_TRUE(waitUntil([&] { return closed(firstDialog) && closed(secondDialog); }));
    EXPECT_TRUE(waitUntil([] { return !QXTimer::getTimerNameList().contains("LoadingWindow.dismissIdle"); }));
    EXPECT_TRUE(waitUntil([&] { return firstDialog.isNull() && secondDialog.isNull(); }));
}
