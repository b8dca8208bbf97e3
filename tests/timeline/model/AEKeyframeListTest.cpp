#include "timeline/model/AEKeyframeList.h"

#include "dsp/Levels.h"
#include "support/ArchiveEdit.h"

#include <QJsonObject>
#include <QStringList>
#include <gtest/gtest.h>

namespace {
using Points = std::vector<std::pair<double, double>>;

std::shared_ptr<AEKeyframeList> listOf(const Points& points) {
    auto list = std::make_shared<AEKeyframeList>();
    for (const auto& [t, v] : points)
        list->setKeyframe(t, v);
    return list;
}

Points pointsOf(const AEKeyframeList& list) {
    Points out;
    for (const auto& k : list.keyframes)
        out.emplace_back(k->time, k->value);
    return out;
}

std::vector<float> twinTimes(const AEKeyframeList& list) {
    std::vector<float> out;
    for (const auto& k : list.keyframesPerc)
        out.push_back(k->time);
    return out;
}

std::shared_ptr<AEKeyframeList> roundTrip(
    const std::shared_ptr<AEKeyframeList>& list, const QString& className,
    const testenv::KeyEdit& damage = [](QJsonObject&) {}) {
    const QByteArray data = testenv::editArchivedData(KeyedArchiver::archivedData(list), className, damage);
    return std::dynamic_pointer_cast<AEKeyframeList>(KeyedUnarchiver::unarchiveObject(data, "test"));
}
} // namespace

TEST(AEKeyframeList, LevelIsFlatOutsideThePointsAndLinearInDbBetween) {
    EXPECT_EQ(AEKeyframeList().getValue(1e6), 0);
    EXPECT_DOUBLE_EQ(AEKeyframeList(-6).getValuePerc(3), aUt_dbToDouble(-6));
    for (double t : {0.0, 5.0, 100.0})
        EXPECT_EQ(listOf({{5, -6}})->getValue(t), -6);

    const auto three = listOf({{0, 0}, {10, -20}, {20, 0}});
    EXPECT_EQ(three->getValue(-1), 0);
    EXPECT_EQ(three->getValue(5), -10);
    EXPECT_EQ(three->getValue(10), -20);
    EXPECT_EQ(three->getPreviousKeyframe(10)->time, 10);
    EXPECT_EQ(three->getNextKeyframe(10)->time, 20);
    EXPECT_EQ(three->getNearestKeyframe(5)->time, 0);
    // The gain list interpolates linearly in gain, not in dB.
    EXPECT_FLOAT_EQ(three->getValuePerc(5), 0.55f);
}

TEST(AEKeyframeList, SetKeyframeKeepsOrderAndOverwritesOnlyTheDbValue) {
    auto list = listOf({{10, -20}, {0, 0}});
    list->setKeyframe(5, std::nullopt, true, false);
    ASSERT_EQ(pointsOf(*list), (Points{{0, 0}, {5, -10}, {10, -20}}));
    EXPECT_TRUE(list->keyframes[1]->flag0);
    EXPECT_EQ(twinTimes(*list), (std::vector<float>{0, 5, 10}));
    EXPECT_EQ(list->keyframes[2]->pos, 2);

    list->setKeyframe(10, -6);
    EXPECT_EQ(pointsOf(*list), (Points{{0, 0}, {5, -10}, {10, -6}}));
    EXPECT_FLOAT_EQ(list->keyframesPerc[2]->value, 0.1f);

    list->keyframes[0]->flag1 = true;
    list->removeByFlag(0);
    EXPECT_EQ(pointsOf(*list), (Points{{0, 0}, {10, -6}}));
    EXPECT_EQ(list->keyframes[1]->pos, 1);
    list->removeByFlag(1);
    EXPECT_EQ(pointsOf(*list), (Points{{10, -6}}));
    EXPECT_EQ(list->keyframesPerc.size(), 3u);
}

TEST(AEKeyframeList, RangeEditsExcludeBothEndsAndShiftCopies) {
    auto list = listOf({{2, 0}, {4, -3}, {6, -6}});
    list->deleteKeyframesInTimeRange(AETimeRange(2, 6));
    EXPECT_EQ(pointsOf(*list), (Points{{2, 0}, {6, -6}}));
    EXPECT_EQ(twinTimes(*list), (std::vector<float>{2, 6}));

    // The gain list loses entries by the dB list's indices, even when it lags behind.
    auto lagging = listOf({{1, 0}, {2, 0}, {3, 0}});
    lagging->keyframes.erase(lagging->keyframes.begin());
    lagging->deleteKeyframesInTimeRange(AETimeRange(2.5, 3.5));
    EXPECT_EQ(twinTimes(*lagging), (std::vector<float>{1, 3}));
    lagging->keyframes.clear();
    lagging->setKeyframe(9, 0);
    lagging->deleteKeyframesInTimeRange(AETimeRange(8, 10));
    EXPECT_EQ(twinTimes(*lagging), (std::vector<float>{3, 9}));

    // A cut exactly on a point: neither half keeps it.
    const auto whole = listOf({{1, 0}, {5, -6}, {9, 0}});
    auto left = whole->duplicate();
    auto right = whole->shiftInTime(2);
    EXPECT_EQ(twinTimes(*right), (std::vector<float>{-1, 3, 7})) << "the gain list shifts with the points";
    left->keepKeyframesInTimeRange(AETimeRange(0, 5));
    right->keepKeyframesInTimeRange(AETimeRange(3, 8));
    EXPECT_EQ(twinTimes(*left), std::vector<float>{1});
    EXPECT_EQ(pointsOf(*right), (Points{{7, 0}}));
    EXPECT_EQ(twinTimes(*right), std::vector<float>{7});
    EXPECT_EQ(right->keyframes[0]->pos, 0);
    EXPECT_EQ(pointsOf(*whole), (Points{{1, 0}, {5, -6}, {9, 0}}));
    EXPECT_EQ(right->duckPrefs, whole->duckPrefs);
}

TEST(AEKeyframeList, ConvolutionAddsEnvelopesAtTheUnionOfTheirTimes) {
    auto user = listOf({{58, -6}});
    user->defaultValue = -2;
    const auto sum = user->convolution(*listOf({{55, 0}, {60, -60}}));
    EXPECT_EQ(sum->defaultValue, 0);
    EXPECT_EQ(pointsOf(*sum), (Points{{55, -6}, {58, -42}, {60, -66}}));
    EXPECT_FLOAT_EQ(sum->keyframesPerc[1]->value, float(aUt_dbToDouble(-42)));
    EXPECT_EQ(pointsOf(*listOf({{10, -3}})->convolution(*listOf({{10, -4}}))), (Points{{10, -7}}));

    user->keyframes[0]->flag1 = true;
    const auto half = user->convolution(0.5);
    EXPECT_EQ(half->defaultValue, 0);
    EXPECT_EQ(pointsOf(*half), (Points{{58, -3}}));
    EXPECT_TRUE(half->keyframes[0]->flag1);
}

TEST(AEKeyframeList, DuckCutsATrapeziumThatFollowsTheLevelAround) {
    const Points dip{{9.7, 0}, {10.5, -12}, {19.6, -12}, {20.8, 0}};
    auto list = std::make_shared<AEKeyframeList>();
    list->duck(AETimeRange(10, 20));
    EXPECT_EQ(pointsOf(*list), dip);
    // Same range again: the ends lay outside the dip, so nothing deepens and nothing doubles.
    list->duck(AETimeRange(10, 20));
    EXPECT_EQ(pointsOf(*list), dip);
    EXPECT_EQ(list->keyframesPerc.size(), 4u);
    // Starting inside the first dip, the second one starts from its level.
    list->duck(AETimeRange(15, 25));
    EXPECT_EQ(pointsOf(*list),
              (Points{{9.7, 0}, {10.5, -12}, {14.7, -12}, {15.5, -24}, {24.6, -12}, {25.8, 0}}));

    // The stretch cleared is (a0, r1) on the time grid, which starts just below a0.
    auto offGrid = listOf({{0, -3}, {9.699, -1}});
    offGrid->duckPrefs->decreaseDB = -6;
    offGrid->duck(AETimeRange(10, 20));
    EXPECT_EQ(pointsOf(*offGrid), (Points{{0, -3}, {9.7, -1}, {10.5, -7}, {19.6, -7}, {20.8, -1}}));
}

TEST(AEKeyframeList, ArchiveKeepsPointsSortsThemAndSurvivesDamage) {
    auto list = listOf({{1, -3}, {2, -6}});
    list->defaultValue = -1;
    list->keyframes[0]->flag0 = true;
    list->keyframes[1]->selected = true;
    list->duckPrefs->attackDuration = 2;
    std::swap(list->keyframes[0], list->keyframes[1]);
    const auto back = roundTrip(list, "AEKeyframeList");
    ASSERT_TRUE(back);
    EXPECT_EQ(pointsOf(*back), (Points{{1, -3}, {2, -6}}));
    EXPECT_TRUE(back->keyframes[0]->flag0);
    EXPECT_FALSE(back->keyframes[1]->selected);
    EXPECT_EQ(back->defaultValue, -1);
    EXPECT_EQ(back->duckPrefs->attackDuration, 2);

    const auto drop = [](QStringList keys) -> testenv::KeyEdit {
        return [=](QJsonObject& k) {
            for (const auto& key : keys)
                k.remove(key);
        };
    };
    const auto put = [](QString key, QJsonValue value) -> testenv::KeyEdit {
        return [=](QJsonObject& k) { k[key] = value; };
    };
    const auto bare = roundTrip(list, "AEKeyframeList", drop({"keyframes", "duckPrefs", "defaultValue"}));
    const auto noValue = roundTrip(list, "AEKeyframe", drop({"value"}));
    const auto noDepth = roundTrip(list, "AEKeyFrameDuckPrefs", drop({"decreaseDB"}));
    const QJsonObject infinite{{"double", "inf"}};
    const auto oddPrefs = roundTrip(list, "AEKeyFrameDuckPrefs", put("decreaseDB", infinite));
    ASSERT_TRUE(bare && noValue && noDepth && oddPrefs);
    EXPECT_TRUE(bare->keyframes.empty());
    EXPECT_EQ(bare->defaultValue, 0);
    EXPECT_EQ(bare->duckPrefs->decreaseDB, -12);
    EXPECT_EQ(pointsOf(*noValue), (Points{{1, -3}, {2, 0}}));
    EXPECT_EQ(noDepth->duckPrefs->decreaseDB, 0);
    EXPECT_EQ(oddPrefs->duckPrefs->attackDuration, 0.8);

    EXPECT_FALSE(roundTrip(list, "AEKeyframe", put("time", infinite)));
    EXPECT_FALSE(roundTrip(list, "AEKeyframeFloat", put("time", QJsonObject{{"float", "nan"}})));
    EXPECT_FALSE(roundTrip(list, "AEKeyframeList", put("keyframes", QJsonObject{{"double", 1}})));
    EXPECT_FALSE(roundTrip(list, "AEKeyframeList", put("defaultValue", infinite)));
}
