// The two working-folder keys: read at start-up, both written by a change, which reloads the show.

#include "app/core/WorkFolderPrefs.h"

#include "foundation/Prefs.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class WorkFolderPrefsTest : public ::testing::Test {
protected:
    void TearDown() override {
        prefs_removeKey("workFolder");
        prefs_removeKey("WorkingFolder");
        zendrelShow.reset();
        mustUpdate = false;
    }
    QTemporaryDir dir;
};

} // namespace

TEST_F(WorkFolderPrefsTest, StartupDefaultsToDocumentsAndKeepsAChosenFolder) {
    prefs_removeKey("workFolder");
    const QString fallback = AEIngest::documentsFolder() + "/Zendrel/";
    EXPECT_EQ(workFolder_readAtStartup(), fallback);
    EXPECT_EQ(AEIngest::workFolder, fallback);
    EXPECT_EQ(prefs_getValueString("workFolder", "<absent>"), fallback);
    EXPECT_EQ(prefs_getValueString("WorkingFolder", "<absent>"), "<absent>")
        << "start-up leaves the other key";

    prefs_setValueString("workFolder", "/elsewhere/Shows/");
    EXPECT_EQ(workFolder_readAtStartup(), "/elsewhere/Shows/");
    EXPECT_EQ(prefs_getValueString("workFolder", ""), "/elsewhere/Shows/");
}

TEST_F(WorkFolderPrefsTest, ChangeWritesBothKeysLoadsThatShowAndAsksForAnUpdate) {
    const QString other = dir.path() + "/Other Show";
    QDir().mkpath(other);
    AEIngest::workFolder = other + "/";
    AEShow show("Other");
    show.episodes.push_back(std::make_shared<AEEpisode>("X1", "x", "", other + "/"));
    ASSERT_TRUE(show.save(other + "/show.AEShow"));
    AEIngest::workFolder = "/somewhere/before/";
    zendrelShow = std::make_shared<AEShow>("Before");

    workFolder_changeTo(other);

    EXPECT_EQ(AEIngest::workFolder, other + "/");
    EXPECT_EQ(prefs_getValueString("workFolder", ""), other + "/");
    EXPECT_EQ(prefs_getValueString("WorkingFolder", ""), other + "/");
    ASSERT_TRUE(zendrelShow);
    EXPECT_EQ(zendrelShow->name, "Other");
    ASSERT_EQ(zendrelShow->episodes.size(), 1u);
    EXPECT_EQ(zendrelShow->episodes.front()->episodeId, "X1");
    EXPECT_TRUE(mustUpdate);
    EXPECT_EQ(AEIngest::ingestPath, other + "/AssetIngests/");
}
