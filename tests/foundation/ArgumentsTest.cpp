#include "foundation/Arguments.h"

#include <gtest/gtest.h>

TEST(Arguments, LookupsByIndexAndLabel) {
    setArgsForTesting({"zendrel", "-rate", "1.5", "-n", "x7", "-flag"});
    EXPECT_EQ(getArgument(0), "zendrel");
    EXPECT_EQ(getArgument(6), "");
    EXPECT_EQ(getArgument(-1), "");
    EXPECT_EQ(getArgumentValue("-rate", "d"), "1.5");
    EXPECT_EQ(getArgumentValue("-flag", "d"), "d");
    EXPECT_EQ(getArgumentValue("-absent", "d"), "d");
    EXPECT_EQ(getArgumentValueOffset("-rate", "d", 2), "-n");
    EXPECT_EQ(getArgumentValueOffset("-rate", "d", 0), "-rate");
    EXPECT_DOUBLE_EQ(getArgumentDouble("-rate", 0), 1.5);
    EXPECT_EQ(getArgumentInt("-n", 4), 4);
    EXPECT_EQ(getArgumentDouble("-absent", 2.0), 2.0);
    EXPECT_TRUE(isArgumentPresent("-flag"));
    EXPECT_FALSE(isArgumentPresent("flag"));
    setArgsForTesting({});
}
