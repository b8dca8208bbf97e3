// The working folder panel driven through its buttons, with a scripted door and a recording delegate.

#include "app/windows/WorkingFolderVC.h"

#include "support/ScriptedSession.h"

#include <QLineEdit>
#include <QPushButton>
#include <gtest/gtest.h>

namespace {

class RecordingDelegate : public WorkingFolderProtocol {
public:
    void workingFolderChange(const QString& to) override { changes << to; }
    void workingFolderMove(const QString& to) override { moves << to; }
    QStringList changes;
    QStringList moves;
};

class WorkingFolderVCTest : public ::testing::Test, protected ScriptedSession {
protected:
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

} // namespace

TEST_F(WorkingFolderVCTest, ChangeAsksForAFolderAndHandsItToTheDelegate) {
    WorkingFolderVC panel(delegate, QString("/old"), QString("Please Choose Zendrel Working Folder"));
    EXPECT_EQ(panel.currentWF()->text(), "/old");
    EXPECT_TRUE(panel.currentWF()->isReadOnly());
    EXPECT_EQ(panel.windowTitle(), "Please Choose Zendrel Working Folder");
    door->queuePath("/new folder");
    panel.changeButton()->click();

    EXPECT_EQ(delegate->changes, QStringList({"/new folder"}));
    EXPECT_EQ(panel.currentWF()->text(), "/new folder");
    EXPECT_EQ(transcript(),
              QStringList({"selectFolder: Please Choose Zendrel Working Folder |  | /old -> /new folder"}));

    // Cancelled: nothing changes.
    panel.changeButton()->click();
    EXPECT_EQ(delegate->changes.size(), 1);
    EXPECT_EQ(panel.currentWF()->text(), "/new folder");
}

TEST_F(WorkingFolderVCTest, WithoutFolderOrTitleMoveOnlyWarnsAndOkCloses) {
    WorkingFolderVC panel(delegate, std::nullopt, std::nullopt);
    EXPECT_EQ(panel.currentWF()->text(), "");
    EXPECT_EQ(panel.windowTitle(), "Select Working Folder");
    panel.show();
    panel.moveButton()->click();
    EXPECT_EQ(transcript(), QStringList({"alert: Warning | This feature is not yet implemented."}));
    EXPECT_TRUE(delegate->moves.isEmpty());
    EXPECT_TRUE(delegate->changes.isEmpty());

    panel.okButton()->click();
    EXPECT_FALSE(panel.isVisible());
    EXPECT_EQ(panel.result(), QDialog::Accepted);
}
