#include "dsp/QXOnOffList.h"

#include <QJsonArray>
#include <gtest/gtest.h>

namespace {

using Clusters = std::vector<QXOnOffCluster>;

QXOnOffList withClusters(Clusters clusters, double offset = 0) {
    QXOnOffList list;
    list.offset = offset;
    list.clusters = std::move(clusters);
    list.clustersToEvents();
    return list;
}

void expectClusters(const Clusters& actual, const Clusters& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t n = 0; n < expected.size(); ++n) {
        EXPECT_DOUBLE_EQ(actual[n].i, expected[n].i) << "cluster " << n;
        EXPECT_DOUBLE_EQ(actual[n].o, expected[n].o) << "cluster " << n;
    }
}

struct StreamCase {
    const char* name;
    std::vector<float> stream;
    std::vector<QXOnOffEvent> events;
};

TEST(QXOnOffList, StreamToEventsMarksEachCrossing) {
    const auto on = QXOnOffType::on;
    const auto off = QXOnOffType::off;
    const std::vector<StreamCase> cases{
        {"empty", {}, {}},
        {"never on", {-40, -30, -26}, {}},
        {"threshold itself is on", {-30, -25, -30}, {{0.1, on}, {0.2, off}}},
        {"on at the end closes at count x unit", {-30, -10, -10}, {{0.1, on}, {0.30000000000000004, off}}},
        {"two stretches",
         {-10, -40, -40, -10, -40},
         {{0, on}, {0.1, off}, {0.30000000000000004, on}, {0.4, off}}},
    };
    for (const auto& c : cases) {
        QXOnOffList list;
        list.streamToEvents(c.stream, -25.0f, 0.1);
        ASSERT_EQ(list.events.size(), c.events.size()) << c.name;
        for (size_t n = 0; n < c.events.size(); ++n) {
            EXPECT_DOUBLE_EQ(list.events[n].time, c.events[n].time) << c.name;
            EXPECT_EQ(list.events[n].type, c.events[n].type) << c.name;
        }
    }
}

TEST(QXOnOffList, CreateClustersPairsEventsAndSkipsOutOfOrderOnes) {
    QXOnOffList list;
    list.events = {{1, QXOnOffType::off}, {2, QXOnOffType::on}, {3, QXOnOffType::on}, {4, QXOnOffType::off}};
    list.createClusters();
    // The leading off and the second on are out of order: the pair is 2…4.
    expectClusters(list.clusters, {{2, 4}});
    list.clustersToEvents();
    EXPECT_EQ(list.events, (std::vector<QXOnOffEvent>{{2, QXOnOffType::on}, {4, QXOnOffType::off}}));
}

struct FilterCase {
    const char* name;
    Clusters in;
    double minDuration;
    Clusters spikes; // after filterSpikes
    Clusters pauses; // after filterPauses
};

TEST(QXOnOffList, FiltersDropShortSpikesAndCloseShortPauses) {
    const std::vector<FilterCase> cases{
        {"empty", {}, 1.0, {}, {}},
        {"a spike of exactly the minimum stays", {{0, 1}, {5, 5.5}}, 1.0, {{0, 1}}, {{0, 1}, {5, 5.5}}},
        {"a gap of exactly the minimum stays", {{0, 2}, {3, 5}}, 1.0, {{0, 2}, {3, 5}}, {{0, 2}, {3, 5}}},
        {"a chain of short gaps closes into one",
         {{0, 2}, {2.5, 4}, {4.2, 6}, {9, 10}},
         1.0,
         {{0, 2}, {2.5, 4}, {4.2, 6}, {9, 10}},
         {{0, 6}, {9, 10}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QXOnOffList spikes = withClusters(c.in);
        spikes.filterSpikes(c.minDuration);
        expectClusters(spikes.clusters, c.spikes);
        QXOnOffList pauses = withClusters(c.in);
        pauses.filterPauses(c.minDuration);
        expectClusters(pauses.clusters, c.pauses);
    }
}

TEST(QXOnOffList, StreamToEventsAndFilterRunsThePipelineInOrder) {
    // 0.1 s a value: speech 0.0-0.8, a 0.3 s pause, speech 1.1-1.9, a 0.2 s click at 3.0, silence.
    std::vector<float> stream(40, -60.0f);
    for (int n = 0; n < 8; ++n)
        stream[n] = -10;
    for (int n = 11; n < 19; ++n)
        stream[n] = -10;
    stream[30] = stream[31] = -10;
    QXOnOffList list;
    list.streamToEventsAndFilter(stream, -25.0f, 0.1, 0.5, 1.25);
    expectClusters(list.clusters, {{0, 1.9000000000000001}});
    ASSERT_EQ(list.events.size(), 2u);
    EXPECT_EQ(list.events[0].type, QXOnOffType::on);
    EXPECT_DOUBLE_EQ(list.events[1].time, 1.9000000000000001);
}

TEST(QXOnOffList, RangeCutsOverlappingClustersAndSortsThem) {
    const QXOnOffList list = withClusters({{20, 30}, {2, 6}, {8, 12}, {40, 50}});
    expectClusters(list.filterClusterByRange(5, 25), {{5, 6}, {8, 12}, {20, 25}});
    EXPECT_TRUE(list.filterClusterByRange(13, 19).empty());
    // Touching the range at one end is no overlap.
    EXPECT_TRUE(list.filterClusterByRange(30, 40).empty());

    const QXOnOffList ranged = list.getListByRange(5, 25);
    EXPECT_DOUBLE_EQ(ranged.offset, 5);
    expectClusters(ranged.clusters, {{5, 6}, {8, 12}, {20, 25}});
    EXPECT_EQ(ranged.events.size(), 6u);
}

struct CombineCase {
    const char* name;
    QXOnOffList a, b;
    Clusters union_;
};

TEST(QXOnOffList, CombineIsTheUnionOfTheShiftedOnSpans) {
    const std::vector<CombineCase> cases{
        {"both empty", {}, {}, {}},
        {"one empty", withClusters({{1, 2}}), {}, {{1, 2}}},
        {"disjoint, in time order", withClusters({{5, 6}}), withClusters({{1, 2}}), {{1, 2}, {5, 6}}},
        {"overlapping", withClusters({{1, 4}}), withClusters({{3, 6}, {8, 9}}), {{1, 6}, {8, 9}}},
        {"nested", withClusters({{1, 10}}), withClusters({{2, 3}, {4, 5}}), {{1, 10}}},
        {"touching spans join", withClusters({{1, 2}}), withClusters({{2, 3}}), {{1, 3}}},
        {"offsets shift each list",
         withClusters({{1, 2}}, 10),
         withClusters({{1, 2}}, 20),
         {{11, 12}, {21, 22}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QXOnOffList u = QXOnOffList::combine(c.a, c.b);
        EXPECT_DOUBLE_EQ(u.offset, 0);
        expectClusters(u.clusters, c.union_);
        ASSERT_EQ(u.events.size(), 2 * c.union_.size());
        for (size_t n = 0; n < c.union_.size(); ++n) {
            EXPECT_EQ(u.events[2 * n], (QXOnOffEvent{c.union_[n].i, QXOnOffType::on}));
            EXPECT_EQ(u.events[2 * n + 1], (QXOnOffEvent{c.union_[n].o, QXOnOffType::off}));
        }
    }
}

TEST(QXOnOffList, JsonKeepsTheListAndRefusesDamage) {
    const QXOnOffList list = withClusters({{1.5, 2.25}, {3, 4}}, 7);
    const auto back = QXOnOffList::fromJson(list.toJson());
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, list);

    QJsonObject damaged = list.toJson();
    damaged["events"] = QJsonArray{QJsonObject{{"time", 1}, {"type", "maybe"}}};
    EXPECT_FALSE(QXOnOffList::fromJson(damaged));
    EXPECT_FALSE(QXOnOffList::fromJson(QJsonObject{{"offset", 0}}));
}

} // namespace
