// The speech analysis of an asset and its record in the working folder.

#include "project/model/AEAssetDucking.h"

#include "foundation/Prefs.h"
#include "project/model/AESubsamples.h"
#include "project/model/DuckingSettings.h"
#include "support/EventWait.h"

#include <QFile>
#include <gtest/gtest.h>

namespace {

// A 10 s summary at 300 values a second, at about −10 dBFS from 2 to 5 s and −70 dBFS elsewhere.
std::shared_ptr<AESubsamples> summary() {
    std::vector<float> values(3000, 10.0f);
    std::fill(values.begin() + 600, values.begin() + 1500, 10000.0f);
    auto subs = std::make_shared<AESubsamples>();
    subs->setSamples(values);
    return subs;
}

std::shared_ptr<AEAssetDucking> analysed(const QString& id, const std::shared_ptr<AESubsamples>& subs) {
    auto ducking = AEAssetDucking::make(id, subs);
    EXPECT_TRUE(testenv::waitUntil([&] { return ducking->qxppStatus == QXPersistenceStatus::saved; }));
    return ducking;
}

class AEAssetDuckingTest : public ::testing::Test {
protected:
    void TearDown() override { prefs_removeKey(QXDuckingSettings::kLabel); }
    const QString id = "0123456789abcdef0123456789abcdef";
};

TEST_F(AEAssetDuckingTest, AnalysisIsSavedAndFoundAgainAfterARestart) {
    QFile::remove(AEAssetDucking::recordPath(id + "_25"));
    auto first = AEAssetDucking::make(id, summary());
    EXPECT_EQ(first->qxppStatus, QXPersistenceStatus::generating);
    ASSERT_TRUE(testenv::waitUntil([&] { return first->qxppStatus == QXPersistenceStatus::saved; }));
    EXPECT_EQ(first->qxppUniqueId, id + "_25");
    ASSERT_TRUE(first->duckingClusters());
    EXPECT_EQ(first->duckingClusters()->clusters, (std::vector<QXOnOffCluster>{{2.0, 5.0}}));
    EXPECT_TRUE(QFile::exists(AEAssetDucking::recordPath(id + "_25")));

    // No summary at hand: only the record can give the analysis.
    auto again = AEAssetDucking::make(id, nullptr);
    EXPECT_EQ(again->qxppStatus, QXPersistenceStatus::saved);
    ASSERT_TRUE(again->duckingClusters());
    EXPECT_EQ(*again->duckingClusters(), *first->duckingClusters());
}

TEST_F(AEAssetDuckingTest, AnotherThresholdHasItsOwnRecord) {
    analysed(id, summary());
    QXDuckingSettings settings;
    settings.threshold = -5.5f;
    settings.save();
    auto strict = AEAssetDucking::make(id, nullptr);
    EXPECT_EQ(strict->qxppUniqueId, id + "_5");
    EXPECT_EQ(strict->qxppStatus, QXPersistenceStatus::none);
    EXPECT_FALSE(strict->duckingClusters());
    // At −5.5 dB the −10 dB stretch is no speech.
    QFile::remove(AEAssetDucking::recordPath(id + "_5"));
    auto recomputed = analysed(id, summary());
    ASSERT_TRUE(recomputed->duckingClusters());
    EXPECT_TRUE(recomputed->duckingClusters()->clusters.empty());
}

TEST_F(AEAssetDuckingTest, ADamagedRecordIsAnalysedAgain) {
    analysed(id, summary());
    const QString path = AEAssetDucking::recordPath(id + "_25");
    for (const QByteArray& damage :
         {QByteArray("{\"duckingClusters\": {\"offset\": \"x\"}}"), QByteArray("\x01\x02")}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(damage);
        file.close();
        EXPECT_EQ(AEAssetDucking::make(id, nullptr)->qxppStatus, QXPersistenceStatus::none);
        auto repaired = analysed(id, summary());
        EXPECT_EQ(repaired->duckingClusters()->clusters, (std::vector<QXOnOffCluster>{{2.0, 5.0}}));
        EXPECT_EQ(AEAssetDucking::make(id, nullptr)->qxppStatus, QXPersistenceStatus::saved);
    }
}

} // namespace
