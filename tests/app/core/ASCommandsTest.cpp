// The exact commands the components store runs, and where its items live.

#include "app/core/ASCommands.h"

#include "app/core/AS.h"
#include "foundation/Prefs.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

TEST(ASCommandsTest, ArgumentVectors) {
    EXPECT_EQ(asCmd_curlDownload("http://h/ZendrelUtils/sxh.zip", "/a b/sxh.zip"),
              QStringList({"-f", "-L", "-o", "/a b/sxh.zip", "http://h/ZendrelUtils/sxh.zip"}));
    EXPECT_EQ(asCmd_curlProbe("http://h/"), QStringList({"-s", "-I", "--max-time", "10", "http://h/"}));
    EXPECT_EQ(asCmd_unzip("/a b/sxh.zip", "/a b"), QStringList({"-o", "-q", "/a b/sxh.zip", "-d", "/a b"}));
}

TEST(ASCommandsTest, ItemsLiveInTheUsersDataFolderAndComeFromTheRepository) {
    EXPECT_EQ(AS::applicationSupportFolder(), testenv::home() + "/.local/share/Zendrel/ZendrelUtils");
    EXPECT_EQ(AS::getItemInASFolder("kd3.app"), AS::applicationSupportFolder() + "/kd3.app");

    prefs_setValueString("AS.repositoryBase", "https://example.invalid/downloads/");
    EXPECT_EQ(AS::remotePathFor("sxh"), "https://example.invalid/downloads/ZendrelUtils/sxh.zip");
    prefs_removeKey("AS.repositoryBase");
    EXPECT_EQ(AS::repositoryBase(), "");
}
