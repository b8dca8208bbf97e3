#include "project/model/AECache.h"

#include "foundation/Hallard.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <gtest/gtest.h>

namespace {
class AECacheTest : public ::testing::Test {
protected:
    void SetUp() override { AECache::clearCache(); }
    void TearDown() override { AECache::clearCache(); }
};
} // namespace

// Clearing removes the folder; the next save makes it again.
TEST_F(AECacheTest, EntryLivesInTheUserCacheUnderTheMd5OfThePathAndClearRemovesIt) {
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/AudioEngine";
    EXPECT_EQ(AECache::getCacheFolder(), folder);
    ASSERT_TRUE(AECache::saveSubsamplesToCache("/shows/ep1/intro.wav", std::vector<float>{1.0f, 2.5f}));
    EXPECT_TRUE(QFile::exists(folder + "/" + hallard_md5("/shows/ep1/intro.wav") + ".cache"));
    AECache::clearCache();
    EXPECT_FALSE(QDir(folder).exists());
    EXPECT_EQ(AECache::loadSubsamplesFromCache("/shows/ep1/intro.wav"), std::nullopt);
    ASSERT_TRUE(AECache::saveSubsamplesToCache("/a/x.wav", std::vector<float>{2.0f}));
    EXPECT_EQ(AECache::loadSubsamplesFromCache("/a/x.wav"), std::vector<float>{2.0f});
}

TEST_F(AECacheTest, RoundTripAndMissesByPath) {
    const std::vector<float> summary = {0.0f, 16383.5f, 32767.0f, 1842.7f};
    ASSERT_TRUE(AECache::saveSubsamplesToCache("/a/take.wav", summary));
    EXPECT_EQ(AECache::loadSubsamplesFromCache("/a/take.wav"), summary);
    // The key is the path: the same file moved is a miss.
    EXPECT_EQ(AECache::loadSubsamplesFromCache("/b/take.wav"), std::nullopt);

    // An empty summary is no entry: neither stored nor, when one lies there, taken.
    EXPECT_FALSE(AECache::saveSubsamplesToCache("/a/short.wav", std::vector<float>{}));
    QFile empty(AECache::cacheFilePath("/a/short.wav"));
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    empty.close();
    EXPECT_EQ(AECache::loadSubsamplesFromCache("/a/short.wav"), std::nullopt);

    AECache::removeSubsamplesFromCache("/a/take.wav");
    EXPECT_EQ(AECache::loadSubsamplesFromCache("/a/take.wav"), std::nullopt);
}
