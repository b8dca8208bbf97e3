#include "foundation/Timecode.h"

#include <gtest/gtest.h>

TEST(Timecode, ClockTextsTruncateTheFraction) {
    EXPECT_EQ(tc_getIntegerTimecode(3661), "01:01:01");
    EXPECT_EQ(tc_getIntegerTimecode(90061), "25:01:01") << "hours do not wrap at a day";
    EXPECT_EQ(tc_getIntegerTimecode(0), "00:00:00");
    EXPECT_EQ(tc_getIntegerTimecode(59.999), "00:00:59");
    EXPECT_EQ(tc_getFloatTimecode(65.25), "00:01:05.250");
    EXPECT_EQ(tc_getFloatTimecode(65.0), "00:01:05.000");
    EXPECT_EQ(tc_getFloatTimecode(1.0625), "00:00:01.062");
    EXPECT_EQ(tc_getFloatTimecode(59.9999), "00:00:59.999");
    EXPECT_EQ(tc_getFloatTimecodeX(65.25), "00:01:05.2");
    EXPECT_EQ(tc_getFloatTimecodeX(65.99), "00:01:05.9");
    EXPECT_EQ(tc_getHHMMSSFF(65.5, 25.0), "00:01:05:12");
    EXPECT_EQ(tc_getHHMMSSFF(3600.04, 30.0), "01:00:00:01");
    EXPECT_EQ(tc_getMMSS(65.9f), "01:05");
    EXPECT_EQ(tc_getMMSS(3725.0f), "62:05");
}

TEST(Timecode, ReadableDurationsDropLeadingZeroFields) {
    EXPECT_EQ(tc_getReadableDuration(5), "5s");
    EXPECT_EQ(tc_getReadableDuration(0), "0s");
    EXPECT_EQ(tc_getReadableDuration(125), "2m 05s");
    EXPECT_EQ(tc_getReadableDuration(3725), "1h 02m 05s");
    EXPECT_EQ(tc_getReadableDuration(3600), "1h 00m 00s");
    EXPECT_EQ(tc_getReadableDuration(125.9), "2m 05s");
    EXPECT_EQ(tc_getReadableDurationHMM(125), "2m");
    EXPECT_EQ(tc_getReadableDurationHMM(3725), "1h 02m");
    EXPECT_EQ(tc_getReadableDurationHMM(30), "0m");
}

TEST(Timecode, ShortDurationUsesTheLargestUnitReached) {
    EXPECT_EQ(tc_getDurationShort(30), "30.0s");
    EXPECT_EQ(tc_getDurationShort(59.96), "60.0s");
    EXPECT_EQ(tc_getDurationShort(60), "1.0m");
    EXPECT_EQ(tc_getDurationShort(150), "2.5m");
    EXPECT_EQ(tc_getDurationShort(3600), "1.0h");
    EXPECT_EQ(tc_getDurationShort(5400), "1.5h");
}
