#include "foundation/ETA.h"

#include <gtest/gtest.h>

namespace {
QDateTime secondsAgo(int s) {
    return QDateTime::currentDateTime().addSecs(-s);
}
} // namespace

TEST(ETA, SecondsToGoAssumesTheSamePaceAndNoProgressCountsAsTheSmallestFraction) {
    EXPECT_NEAR(ETA::secondsToGo(secondsAgo(10), 0.5), 10, 1);
    EXPECT_NEAR(ETA::secondsToGo(secondsAgo(30), 0.25), 90, 1);
    EXPECT_EQ(ETA::secondsToGo(secondsAgo(30), 1.0), 0);
    EXPECT_EQ(ETA::secondsToGo(secondsAgo(30), 1.5), 0);
    // p = 0.00001: 2 s so far means about 2 × 99999 s to go, not a division by zero.
    // A loaded machine may add a few hundred milliseconds, each worth 100 s here.
    const QDateTime start = secondsAgo(2);
    const int64_t atZero = ETA::secondsToGo(start, 0.0);
    EXPECT_GE(atZero, 199998);
    EXPECT_LE(atZero, 2.5 * 99999);
    const int64_t negative = ETA::secondsToGo(start, -1.0);
    EXPECT_GE(negative, 199998);
    EXPECT_LE(negative, 2.5 * 99999);
    EXPECT_TRUE(ETA::calc(secondsAgo(2), 0.0).isValid());
}

TEST(ETA, RemainingReadsAsADuration) {
    EXPECT_EQ(ETA::getRemaining(QDateTime::currentDateTime().addSecs(-125), 0.5), "2m 05s");
    LocalETA local;
    local.startTime = secondsAgo(60);
    EXPECT_EQ(local.getRemaining(0.5), "1m 00s");
    EXPECT_NEAR(local.secondsToGo(0.75), 20, 1);
}

TEST(ETA, GetETAKeepsItsAnswerUntilTheCheckIntervalPasses) {
    ETA eta("job", 3600);
    eta.startTime = secondsAgo(100);
    const QDateTime first = eta.getETA(0.5);
    EXPECT_NEAR(QDateTime::currentDateTime().secsTo(first), 100, 1);
    EXPECT_EQ(eta.getETA(0.99), first);
    EXPECT_DOUBLE_EQ(eta.percentage, 0.99);

    ETA eager("job", 0);
    eager.startTime = secondsAgo(100);
    const QDateTime early = eager.getETA(0.5);
    EXPECT_LT(eager.getETA(0.99), early);
}

TEST(DiscorsiveETA, EachRangeHasItsText) {
    const std::pair<double, const char*> table[] = {
        {0, "Still a few seconds..."},
        {14, "Still a few seconds..."},
        {15, "Less than a minute..."},
        {44, "Less than a minute..."},
        {60, "About a minute..."},
        {100, "About two minutes..."},
        {180, "About three minutes..."},
        {300, "Something like 5 minutes..."},
        {600, "Something like 10 minutes..."},
        {900, "Something like 15 minutes..."},
        {1800, "Something like half an hour..."},
        {3600, "Something like an hour..."},
        {5399, "Something like an hour..."},
        {5400, "It should take a lot..."},
        {1e9, "It should take a lot..."},
    };
    for (const auto& [seconds, text] : table)
        EXPECT_EQ(DiscorsiveETA::getString(seconds), text) << seconds;
}
