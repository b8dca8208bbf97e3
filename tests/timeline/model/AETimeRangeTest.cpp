#include "timeline/model/AETimeRange.h"

#include "timeline/model/SimpleRound.h"

#include <gtest/gtest.h>

TEST(SimpleRound, TruncatesToTheGrid) {
    EXPECT_EQ(simpleRound(1.999), 1.9921875);
    EXPECT_EQ(simpleRound(0.0156), 0.0078125) << "a truncation, not a rounding";
    EXPECT_EQ(simpleRound(2.5078125), 2.5078125);
    EXPECT_EQ(simpleRound(-1.999), -1.9921875) << "towards zero";
    EXPECT_FALSE(simpleRoundAccepts(std::nan("")));
    EXPECT_FALSE(simpleRoundAccepts(1e300));
    EXPECT_TRUE(simpleRoundAccepts(1e9));
}

TEST(AETimeRange, EndsAreExcludedAndTouchingIsNotOverlapping) {
    const AETimeRange r(10.001, 20.999);
    EXPECT_EQ(r.i, 10.0);
    EXPECT_EQ(r.o, simpleRound(20.999));
    EXPECT_EQ(AETimeRange().duration(), 0.0);
    EXPECT_EQ(AETimeRange(1, 2).center(), 1.5);
    EXPECT_EQ(AETimeRange(0, 0.0234375).center(), 0.0078125);

    const AETimeRange a(10, 20);
    EXPECT_FALSE(a.isContained(10));
    EXPECT_TRUE(a.isContained(15));
    EXPECT_FALSE(a.isContained(20));
    EXPECT_FALSE(a.isOverlapping(AETimeRange(20, 30)));
    EXPECT_FALSE(a.isOverlapping(AETimeRange(0, 10)));
    EXPECT_TRUE(a.isOverlapping(AETimeRange(19, 30)));
    EXPECT_TRUE(a.isOverlapping(AETimeRange(12, 13))) << "inside";
    EXPECT_TRUE(a.isOverlapping(AETimeRange(0, 30))) << "around";
    EXPECT_TRUE(a.isOverlapping(AETimeRange(10, 20))) << "equal";

    AETimeRange copy = a.duplicate();
    copy.o = 99;
    EXPECT_EQ(a.o, 20.0) << "a range is a value";
}

TEST(AETimeRange, ArchiveRoundsWhatItReads) {
    const auto data = KeyedArchiver::archivedData(std::make_shared<AETimeRange>(1.5, 2.25));
    const auto back = std::dynamic_pointer_cast<AETimeRange>(KeyedUnarchiver::unarchiveObject(data, "test"));
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->isEqual(AETimeRange(1.5, 2.25)));

    QByteArray raw = data;
    raw.replace("2.25", "2.2599");
    const auto rounded =
        std::dynamic_pointer_cast<AETimeRange>(KeyedUnarchiver::unarchiveObject(raw, "test"));
    ASSERT_TRUE(rounded);
    EXPECT_EQ(rounded->o, 2.2578125);
    raw.replace("2.2599", "1e300");
    EXPECT_FALSE(KeyedUnarchiver::unarchiveObject(raw, "test")) << "never a fatal time from a file";
}
