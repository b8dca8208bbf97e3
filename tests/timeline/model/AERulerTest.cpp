#include "timeline/model/AERuler.h"

#include <gtest/gtest.h>

namespace {
AERuler ruler(double i, double o, double width) {
    AERuler r;
    r.setRange(AETimeRange(i, o));
    r.width = width;
    return r;
}

std::vector<double> steps(double from, double unit, int count) {
    std::vector<double> v;
    for (int k = 0; k < count; ++k)
        v.push_back(from + k * unit);
    return v;
}
} // namespace

TEST(AERuler, TimeUnitPicksTheFirstUnitAtLeastTheSpan) {
    EXPECT_EQ(AERuler::timeUnit(0.1, 40), 5.0);    // 4 s wanted
    EXPECT_EQ(AERuler::timeUnit(0.125, 80), 10.0); // exactly a unit
    EXPECT_EQ(AERuler::timeUnit(0.0, 40), 0.05);
    EXPECT_EQ(AERuler::timeUnit(2000, 40), 60000.0); // past the largest
}

TEST(AERuler, MeaningfulTimesStartOnTheUnitBelowTheRange) {
    const AERuler full = ruler(0, 100, 1000);
    EXPECT_EQ(full.getMeaningfulTimesList(true), steps(0, 5, 20));
    EXPECT_EQ(full.getMeaningfulTimesList(false), steps(0, 10, 10));
    EXPECT_DOUBLE_EQ(full.timeToX(12.5), 125.0);

    const AERuler shifted = ruler(23, 123, 1000);
    EXPECT_EQ(shifted.getMeaningfulTimesList(false), steps(20, 10, 11));
    EXPECT_DOUBLE_EQ(shifted.timeToX(20), -30.0);
}

TEST(AERuler, DegenerateRulersHaveNoTicks) {
    EXPECT_TRUE(ruler(0, 100, 0).getMeaningfulTimesList(true).empty());
    EXPECT_EQ(ruler(0, 100, 0).timeToX(50), 0.0);
    EXPECT_TRUE(ruler(5, 5, 1000).getMeaningfulTimesList(true).empty());
    EXPECT_TRUE(ruler(9, 5, 1000).getMeaningfulTimesList(false).empty());
    EXPECT_TRUE(ruler(0, 100, 0).draw().isNull());
    // Past the largest unit the count is capped, not one tick per minute of a huge range.
    EXPECT_LE(ruler(0, 1e12, 100).getMeaningfulTimesList(true).size(), 102u);
}

TEST(AERuler, DrawPutsMinorTicksLowAndMajorTicksFullHeight) {
    const QImage image = ruler(0, 100, 1000).draw();
    ASSERT_EQ(image.size(), QSize(1000, 24));
    const auto grey = [&](int x, int y) { return image.pixelColor(x, y); };
    // t = 5 s: minor only, in the bottom quarter.
    EXPECT_NEAR(grey(50, 23).red(), 0.3 * 255, 1);
    EXPECT_EQ(grey(50, 18).alpha(), 255);
    EXPECT_EQ(grey(50, 17).alpha(), grey(75, 10).alpha());
    // t = 10 s: major, top to bottom.
    EXPECT_NEAR(grey(100, 0).red(), 0.5 * 255, 1);
    EXPECT_NEAR(grey(100, 23).red(), 0.5 * 255, 1);
    // Between ticks: the translucent ground.
    EXPECT_NEAR(grey(75, 10).alpha(), 0.3 * 255, 1);
}
