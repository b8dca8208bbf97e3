// Components that installed packages provide, the lists of start-up, the missing network, and removal.

#include "ComponentsFixture.h"
#include "LocalHttpServer.h"
#include "app/core/Preloads.h"
#include "app/core/PreloadsVC.h"
#include "app/core/RemoveComponentsCommand.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace {

const QString noConnectionAlert =
    "alert: Internet connection not present | Warning: couldn't connect to the Internet to download required "
    "components, please check network status. This app will quit.";

const QString removeQuestion =
    "confirm: Warning | Choosing this option, Zendrel external components will be removed and the app will "
    "quit. "
    "After the relaunch of the app, the external components will be re-downloaded. Press OK to continue.";

} // namespace

class ASProvisionTest : public ComponentsFixture {
protected:
    void SetUp() override {
        ComponentsFixture::SetUp();
        for (const char* tool : {"/usr/bin/sox", "/usr/bin/ffmpeg", "/usr/bin/kid3-cli"})
            ASSERT_TRUE(QFileInfo::exists(tool)) << tool << " is a build dependency";
    }
};

// No server is configured, so any attempt at the network would end in the no-connection alert.
TEST_F(ASProvisionTest, InstalledToolsArePresentWithoutPanelOrNetworkAndTheTagEditorOnlyInTheExtendedList) {
    for (int run = 0; run < 2; ++run) {
        bool completed = false;
        Preloads::doExtendedZendrelUtils([&] { completed = true; });
        EXPECT_TRUE(completed);
    }
    EXPECT_TRUE(PreloadsVC::preloadsDone);
    EXPECT_EQ(transcript(), QStringList());
    EXPECT_EQ(exitStatus, -1);
    EXPECT_TRUE(run(AS::getItemInASFolder("sxh"), {"--version"}).contains("SoX"));
    EXPECT_TRUE(run(AS::getItemInASFolder("fmh"), {"-version"}).startsWith("ffmpeg version"));
    EXPECT_TRUE(
        run(AS::getItemInASFolder("kd3.app") + "/Contents/MacOS/kid3-cli", {"--help"}).contains("kid3-cli"));
    EXPECT_TRUE(QFileInfo(AS::getItemInASFolder("Updrel2.app")).isDir());

    Boot::removeZendrelUtils();
    bool completed = false;
    Preloads::doBaseZendrelUtils([&] { completed = true; });
    EXPECT_TRUE(completed);
    for (const char* item : {"sxh", "fmh", "Updrel2.app"})
        EXPECT_TRUE(QFileInfo::exists(AS::getItemInASFolder(item))) << item;
    EXPECT_FALSE(QFileInfo::exists(AS::getItemInASFolder("kd3.app")));

    // Requested, an installed tool is resolved without a fetch.
    const QString sox = AS::requestResource("sxh", AS::applicationSupportFolder(), "", false, nullptr);
    EXPECT_EQ(sox, AS::getItemInASFolder("sxh"));
    EXPECT_EQ(loggedStartingWith("httpDownload: "), 0);
}

TEST_F(ASProvisionTest, LinkToAnUninstalledToolIsReplacedAndADownloadedOneKept) {
    const QString folder = AS::applicationSupportFolder();
    QDir().mkpath(folder);
    ASSERT_TRUE(QFile::link("/nonexistent/sox", folder + "/sxh"));
    QFile downloaded(folder + "/fmh");
    ASSERT_TRUE(downloaded.open(QIODevice::WriteOnly));
    downloaded.write("downloaded");
    downloaded.close();

    EXPECT_TRUE(AS::missingItems({AS::itemFor("sxh"), AS::itemFor("fmh")}).empty());

    EXPECT_EQ(QFileInfo(folder + "/sxh").symLinkTarget(), "/usr/bin/sox");
    EXPECT_FALSE(QFileInfo(folder + "/fmh").isSymLink());
    EXPECT_EQ(QFileInfo(folder + "/fmh").size(), 10);
}

// Without a server, then with one that has gone: the alert, and an exit with status 0.
TEST_F(ASProvisionTest, MissingItemWithoutAServerAlertsAndExitsWithZero) {
    bool completed = false;
    PreloadsVC::preload({AS::itemFor("sxh"), AS::itemFor("zelsewhere")}, [&] { completed = true; });
    ASSERT_TRUE(testenv::waitUntil([&] { return exitStatus != -1; }, 20000));
    EXPECT_EQ(exitStatus, 0);
    testenv::waitUntil([&] { return completed; }, 300);
    EXPECT_FALSE(completed);

    exitStatus = -1;
    QTemporaryDir empty;
    {
        LocalHttpServer shortLived(empty.path());
        ASSERT_NE(shortLived.port(), 0);
        prefs_setValueString("AS.repositoryBase", shortLived.url());
    }
    EXPECT_FALSE(AS::preload({AS::itemFor("zelsewhere")}, nullptr));
    EXPECT_EQ(exitStatus, 0);
    EXPECT_EQ(transcript(), QStringList({noConnectionAlert, noConnectionAlert}));
}

TEST_F(ASProvisionTest, RemovalAsksThenDeletesWithoutFollowingLinksAndQuits) {
    QTemporaryDir outside;
    QFile precious(outside.path() + "/precious");
    ASSERT_TRUE(precious.open(QIODevice::WriteOnly));
    precious.close();
    Preloads::doExtendedZendrelUtils(nullptr);
    const QString folder = AS::applicationSupportFolder();
    ASSERT_TRUE(QFile::link(outside.path(), folder + "/linkedFolder"));

    door->queueConfirm(false);
    mnuRemoveExternalcomponents();
    EXPECT_TRUE(QFileInfo::exists(folder + "/sxh"));
    EXPECT_EQ(exitStatus, -1);

    door->queueConfirm(true);
    mnuRemoveExternalcomponents();
    EXPECT_FALSE(QFileInfo::exists(folder));
    EXPECT_EQ(exitStatus, 0);
    EXPECT_TRUE(QFileInfo::exists(outside.path() + "/precious"));
    EXPECT_TRUE(QFileInfo::exists("/usr/bin/sox"));

    const QStringList lines = transcript();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0], removeQuestion + " -> Cancel");
    EXPECT_EQ(lines[1], removeQuestion + " -> OK");
}
