#include "cleaning/ClusterAnalysis.h"

#include "cleaning/AudioAnalysis.h"

#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace {

using Clusters = std::vector<cluster>;

// 300-sample blocks at the given levels (dBFS, constant magnitude), rate 3000 Hz: a block is 0.1 s.
SpeechLevels blocksAt(const std::vector<double>& dbs) {
    std::vector<int16_t> samples;
    for (double db : dbs)
        samples.insert(samples.end(), 300, int16_t(std::lround(32767.0 * std::pow(10.0, db / 20.0))));
    samples.push_back(0); // blocks are (n − 1) ÷ 300: keep the last one whole
    return SpeechLevels::fromSamples(samples, clusterLevelsWanted());
}

std::vector<double> gateOf(const std::vector<double>& dbs, int holdBlocks, double hysteresis,
                           double noiseLevel = 1.0) {
    return getClusterArray(blocksAt(dbs), -30.0, false, holdBlocks * 300, 3000, false, noiseLevel, hysteresis,
                           nullptr);
}

void expectClusters(const Clusters& got, const Clusters& want) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < want.size(); ++i) {
        EXPECT_NEAR(got[i].inPoint, want[i].inPoint, 1e-9) << i;
        EXPECT_NEAR(got[i].endPoint, want[i].endPoint, 1e-9) << i;
    }
}

} // namespace

TEST(ClusterGateArray, HoldFromOpeningAndHysteresis) {
    struct Case {
        const char* what;
        std::vector<double> dbs;
        int hold;
        double hysteresis;
        double noiseLevel;
        std::vector<double> want;
    };
    const double q = -60, loud = -10, mid = -35; // mid lies between T − 10 and T
    const std::vector<Case> cases{
        {"opens and closes", {q, loud, loud, q, q, q, q}, 0, 10, 1.0, {0.1, -0.3}},
        {"hold counts from the opening", {q, loud, q, q, q, q, q}, 2, 10, 1.0, {0.1, -0.4}},
        {"hysteresis keeps it open", {loud, mid, mid, q, q, q}, 0, 10, 1.0, {0.0, -0.3}},
        {"hysteresis 0 closes at T", {loud, mid, q, q}, 0, 0, 1.0, {0.0, -0.1}},
        {"open at the end closes at the last block", {q, q, loud, loud, loud}, 0, 10, 1.0, {0.2, -0.5}},
        {"noise level 2 lowers T by 10 dB", {q, -38, q, q, q}, 0, 10, 2.0, {0.1, -0.2}},
        {"silence", {q, q, q, q}, 0, 10, 1.0, {}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(gateOf(c.dbs, c.hold, c.hysteresis, c.noiseLevel), c.want) << c.what;
    // Fewer than 300 samples: no block, no span.
    const std::vector<int16_t> short_(299, 20000);
    EXPECT_TRUE(getClusterArray(SpeechLevels::fromSamples(short_, clusterLevelsWanted()), -30, false, 0, 3000,
                                false, 1, 10, nullptr)
                    .empty());
}

TEST(ClusterList, SpikesListsAndDurations) {
    EXPECT_EQ(filterSpikes({0.5, -0.6, 1.0, -2.0, 3.0, -3.05}, 0.5), (std::vector<double>{1.0, -2.0}));
    // Every span too short: all kept for the next stage to judge.
    EXPECT_EQ(filterSpikes({0.5, -0.6, 1.0, -1.1}, 0.5), (std::vector<double>{0.5, -0.6, 1.0, -1.1}));
    EXPECT_TRUE(filterSpikes({}, 0.5).empty());

    EXPECT_FALSE(getClusterList({}, 10).has_value());
    expectClusters(*getClusterList({-1.0, 2.0, -3.0, 4.0}, 10), {{0.0, 1.0}, {2.0, 3.0}, {4.0, 10.0}});

    const Clusters shortOnes{{0, 0.3}, {1, 1.42}, {2, 2.2}};
    // 0.5 → 0.45 → 0.405: the 0.42-s cluster is the first to fit.
    expectClusters(filterClusterListByDuration(shortOnes, 0.5), {{1, 1.42}});
    expectClusters(filterClusterListByDuration(shortOnes, 0.25), {{0, 0.3}, {1, 1.42}});
    EXPECT_TRUE(filterClusterListByDuration({}, 0.5).empty());
}

TEST(ClusterList, ExpandMergeAndLongestPause) {
    // Fade in 0.3 + pre-roll 0.2 before, fade out 0.7 after; the first clamps to 0.
    expectClusters(expandClusterList({{0.2, 1.0}, {3.0, 4.0}, {6.0, 7.0}}, 0.5, 0.3, 0.7, 0.2),
                   {{0.0, 1.7}, {2.5, 4.7}, {5.5, 7.7}});
    // Touching counts as overlap; the later end wins even when it is the earlier one.
    Clusters touching{{0, 2}, {2, 3}, {2.5, 2.8}, {5, 6}};
    correctOverlappingClusters(touching);
    expectClusters(touching, {{0, 2.8}, {5, 6}});

    const auto [start, end] = getLongestPause({{0, 1}, {2, 3}, {6, 7}, {8, 9}});
    EXPECT_DOUBLE_EQ(start, 3);
    EXPECT_DOUBLE_EQ(end, 6);
    EXPECT_EQ(getLongestPause({{1, 2}}), std::make_pair(0.0, 0.0));
    EXPECT_EQ(getLongestPause({}), std::make_pair(0.0, 0.0));
}

TEST(ClusterList, TextRoundTripAndBadText) {
    const Clusters list{{0.0, 1.25}, {2.5, 4.0}};
    QTemporaryDir dir;
    const QString text = printClusterList(list, "new", dir.filePath("c.txt"));
    EXPECT_TRUE(text.startsWith("<clusters>\n<count>\n2\n</count>\n<cluster>\n<clusterStart>\n0.00\n"));
    expectClusters(parseClusterText(text), list);
    // A value that does not parse ends the list.
    QString broken = text;
    broken.replace("2.50", "x");
    expectClusters(parseClusterText(broken), {{0.0, 1.25}});
    EXPECT_TRUE(parseClusterText("no clusters").empty());
    EXPECT_EQ(printClusterList({{1, 2}}, "old"), "clusterStr: 1\nclusterEnd: 2\n");
}

TEST(AudioAnalysisBins, LevelsAverageMedianAndThreshold) {
    EXPECT_EQ(AudioAnalysis::binOf(-40.7, -90, -3), -41); // truncated, then one lower
    EXPECT_EQ(AudioAnalysis::binOf(-1.0, -90, -3), -3);
    EXPECT_EQ(AudioAnalysis::binOf(-INFINITY, -90, -3), -90);

    std::vector<int64_t> bins(100, 0);
    bins[20] = 1;
    bins[40] = 3;
    EXPECT_DOUBLE_EQ(AudioAnalysis::getAverage(bins), -35.0);
    EXPECT_DOUBLE_EQ(AudioAnalysis::getMedian(bins), 30.0);
    EXPECT_TRUE(std::isnan(AudioAnalysis::getAverage(std::vector<int64_t>(100, 0))));
    EXPECT_DOUBLE_EQ(weightedValue(-30, 1, -60, 2), -50);
}
