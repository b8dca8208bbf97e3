// The splash's start-up: the workFolder preference, the boot step, the background load of the show
// from "WorkingFolder", its bar, and the hand-over of the published show.

#include "app/windows/ZendrelSplashVC.h"

#include "foundation/Prefs.h"
#include "foundation/Slowder.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "support/EventWait.h"
#include "ui/MinimalProgressBar.h"

#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class ZendrelSplashVCTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = dir.path() + "/Show Folder/";
        QDir().mkpath(folder);
        AEIngest::workFolder = folder;
        AEShow show("Splash Show");
        for (const char* code : {"S1", "S2"})
            show.episodes.push_back(std::make_shared<AEEpisode>(code, code, "", folder));
        ASSERT_TRUE(show.save(folder + "show.AEShow"));
        AEIngest::workFolder.clear();

        prefs_removeKey("workFolder");
        prefs_setValueString("WorkingFolder", folder);
        // The previous run saw four items, so two loaded fill half the bar.
        prefs_setValueInt("Slowder_Episodes", 4);
    }

    void TearDown() override {
        zendrelShow.reset();
        slowder.reset();
        prefs_removeKey("workFolder");
        prefs_removeKey("WorkingFolder");
        prefs_removeKey("Slowder_Episodes");
    }

    QTemporaryDir dir;
    QString folder;
};

} // namespace

TEST_F(ZendrelSplashVCTest, LoadsTheShowInTheBackgroundAndHandsItOverPublished) {
    int bootCalls = 0;
    std::shared_ptr<AEShow> handed;
    bool publishedBeforeHandOver = false;
    ZendrelSplashVC splash(
        [&](const std::shared_ptr<AEShow>& show) {
            handed = show;
            publishedBeforeHandOver = zendrelShow == show;
        },
        [&](std::function<void()> completion) {
            ++bootCalls;
            completion();
        });
    EXPECT_TRUE(splash.buildVersionLabel()->text().contains(ZENDREL_VERSION));
    EXPECT_TRUE(splash.buildVersionLabel()->text().contains(ZENDREL_BUILD));
    EXPECT_FALSE(handed) << "nothing starts before the splash appears";

    splash.show();
    ASSERT_TRUE(testenv::waitUntil([&] { return handed && bootCalls == 1; }));
    EXPECT_TRUE(publishedBeforeHandOver);
    EXPECT_EQ(handed->name, "Splash Show");
    EXPECT_EQ(handed->episodes.size(), 2u);
    EXPECT_EQ(AEIngest::workFolder, folder);
    // "workFolder" was absent: start-up writes the Documents folder there, the show still comes from
    // "WorkingFolder".
    EXPECT_EQ(prefs_getValueString("workFolder", "<absent>"), AEIngest::documentsFolder() + "/Zendrel/");
    EXPECT_EQ(splash.window()->windowTitle(), "");

    ASSERT_TRUE(slowder);
    EXPECT_EQ(slowder->itemsLoaded(), 2);
    EXPECT_TRUE(testenv::waitUntil([&] { return splash.bar()->fraction() == 0.5; }));

    // A second appearance starts nothing again.
    splash.hide();
    splash.show();
    testenv::pumpEventsFor(200);
    EXPECT_EQ(bootCalls, 1);
}
