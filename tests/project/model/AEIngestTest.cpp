#include "project/model/AEIngest.h"

#include "foundation/Hallard.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(AEIngest, CopiesUnderASafeNameOnceAndRecognisesItsOwnCopies) {
    QTemporaryDir dir;
    AEIngest::workFolder = dir.path() + "/";
    AEIngest ingest(dir.path() + "/AssetIngests");
    const QString source = dir.path() + "/Intervista ò 2.WAV";
    QFile f(source);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("RIFF fake content");
    f.close();

    const auto copy = AEIngest::ingest(source);
    ASSERT_TRUE(copy);
    const QString expected =
        AEIngest::ingestPath + "Intervista___2___" + hallard_fileMd5(source).left(8) + ".WAV";
    EXPECT_EQ(*copy, expected);
    EXPECT_TRUE(QFile::exists(expected));
    EXPECT_EQ(AEIngest::ingest(*copy), *copy);
    EXPECT_EQ(AEIngest::ingest(source), *copy);
    EXPECT_EQ(QDir(AEIngest::ingestPath).entryList(QDir::Files).size(), 1);
    EXPECT_FALSE(AEIngest::ingest(dir.path() + "/missing.wav"));
}

TEST(AEIngest, TokenTranslationTouchesOnlyTheWorkingFolder) {
    AEIngest::workFolder = "/data/My Show/";
    EXPECT_EQ(AEIngest::savePath("/data/My Show/AssetIngests/a.wav"), "[%WORKFOLDER%]AssetIngests/a.wav");
    EXPECT_EQ(AEIngest::savePath("/other/a.wav"), "/other/a.wav");
    AEIngest::workFolder = "/moved/";
    EXPECT_EQ(AEIngest::loadPath("[%WORKFOLDER%]AssetIngests/a.wav"), "/moved/AssetIngests/a.wav");
    EXPECT_EQ(AEIngest::loadPath("/other/a.wav"), "/other/a.wav");
}
