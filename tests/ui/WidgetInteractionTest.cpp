// The widget door: answers of the message boxes, and the "please wait" and progress windows driven
// from a worker thread while the main loop turns.

#include "ui/WidgetInteraction.h"

#include "support/EventWait.h"
#include "ui/PleaseWaitDialog.h"
#include "ui/ProgressPanel.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace {

// Presses a button of the next message box as soon as it is modal.
void answerNextMessageBox(QMessageBox::StandardButton which, QString* seenText = nullptr) {
    auto* poll = new QTimer(qApp);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, which, seenText] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        if (seenText) *seenText = box->windowTitle() + " | " + box->text();
        box->button(which)->click();
        poll->deleteLater();
    });
    poll->start(5);
}

} // namespace

// From a worker the question waits for the answer on the main thread.
TEST(WidgetInteractionTest, ConfirmIsTrueOnlyForOkAlsoFromAWorker) {
    WidgetInteraction door;
    QString seen;
    answerNextMessageBox(QMessageBox::Ok, &seen);
    EXPECT_TRUE(door.confirm("Warning!", "Really?"));
    EXPECT_EQ(seen, "Warning! | Really?");

    answerNextMessageBox(QMessageBox::Cancel);
    std::atomic<int> answer{-1};
    std::thread worker([&] { answer = door.confirm("Warning", "From a worker") ? 1 : 0; });
    EXPECT_TRUE(testenv::waitUntil([&] { return answer != -1; }));
    worker.join();
    EXPECT_EQ(answer, 0);
}

TEST(WidgetInteractionTest, ProgressPanelFollowsAWorker) {
    WidgetInteraction door;
    std::atomic<int> step{0};
    std::atomic<bool> proceed{false};
    std::thread worker([&] {
        door.showProgress("Preloading", "sxh");
        door.updateProgress("fmh", "1.5 MB");
        step = 1;
        while (!proceed)
            std::this_thread::yield();
        door.hideProgress();
        step = 2;
    });
    ASSERT_TRUE(testenv::waitUntil([&] { return step == 1; }));
    ProgressPanel* panel = door.progressWindow();
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(panel->isModal());
    EXPECT_EQ(panel->windowTitle(), "Preloading");
    EXPECT_EQ(panel->title(), "Preloading");
    EXPECT_EQ(panel->item(), "fmh");
    EXPECT_EQ(panel->detail(), "1.5 MB");

    // The person cannot send it away; only the job does.
    panel->reject();
    EXPECT_TRUE(panel->isVisible());

    proceed = true;
    ASSERT_TRUE(testenv::waitUntil([&] { return step == 2; }));
    worker.join();
    EXPECT_EQ(door.progressWindow(), nullptr);
    // An update after the end reaches nothing and does no harm.
    door.updateProgress("late", "");
}

TEST(WidgetInteractionTest, PleaseWaitShowsAndHidesAndASecondReplacesTheFirst) {
    WidgetInteraction door;
    door.showPleaseWait("Downloading...", "Downloading additional components. Please wait.");
    QPointer<PleaseWaitDialog> first = door.pleaseWaitWindow();
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->isVisible());
    EXPECT_EQ(first->windowTitle(), "Downloading...");
    EXPECT_EQ(first->text(), "Downloading additional components. Please wait.");

    door.showPleaseWait("Additional installation", "Installing...");
    EXPECT_TRUE(testenv::waitUntil([&] { return first.isNull(); }));
    ASSERT_NE(door.pleaseWaitWindow(), nullptr);
    EXPECT_EQ(door.pleaseWaitWindow()->windowTitle(), "Additional installation");

    door.hidePleaseWait();
    EXPECT_EQ(door.pleaseWaitWindow(), nullptr);
}

TEST(WidgetInteractionTest, FileFilterListsTheExtensions) {
    EXPECT_EQ(widgetInteraction_nameFilter({"png", "jpg"}), "Files (*.png *.jpg)");
    EXPECT_EQ(widgetInteraction_nameFilter({}), "All files (*)");
}
