#include "foundation/DateText.h"

#include <QLocale>
#include <gtest/gtest.h>

namespace {
// 5 March 2024, 14:37:09: minutes differ from the month, so a swapped field shows.
QDateTime sample() {
    return QDateTime(QDate(2024, 3, 5), QTime(14, 37, 9));
}
} // namespace

TEST(DateText, EachFormatReadsAsDocumentedWithEnglishNamesUnderAnyLocale) {
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QDateTime d = sample();
    EXPECT_EQ(du_getCompactDate(d), "05Mar24");
    EXPECT_EQ(du_getMonthName(d), "March");
    EXPECT_EQ(du_getMonth3LettersName(d), "Mar");
    EXPECT_EQ(du_getCompactNumericDate(d), "05.03.24");
    EXPECT_EQ(du_getCompactTime(d), "1437");
    EXPECT_EQ(du_getSimpleDate(d, false), "05 Mar 24");
    EXPECT_EQ(du_getSimpleDate(d, true), "05 Mar  14:37");
    EXPECT_EQ(du_getSimpleTime(d), "14:37");
    EXPECT_EQ(du_get8date(d), "20240537");
    EXPECT_EQ(du_getComplete(d), "05.Mar.24 14:37:09");
    EXPECT_EQ(du_getCompactTimeSec(d), "143709");
    EXPECT_EQ(du_getCompactTimeSecTC(d), "14:37:09");
    EXPECT_EQ(du_getDateString(d), "05/03/2024");
    EXPECT_EQ(du_getCompactDateTime(d), "05Mar24-1437");
    EXPECT_EQ(du_getCompactDateTimeSec(d), "05Mar24-143709");
    EXPECT_EQ(du_get86Date(d), "20240537_143709");
    EXPECT_EQ(du_getMonthName(QDateTime(QDate(2024, 10, 1), QTime(9, 5, 0))), "October");
    QLocale::setDefault(previous);
}

TEST(DateText, CreateDateGivesLocalMidnightOrNothing) {
    const auto day = du_createDate(5, 3, 2024);
    ASSERT_TRUE(day.has_value());
    EXPECT_EQ(day->date(), QDate(2024, 3, 5));
    EXPECT_EQ(day->time(), QTime(0, 0));
    EXPECT_TRUE(du_createDate(29, 2, 2024).has_value());
    EXPECT_FALSE(du_createDate(29, 2, 2023).has_value());
    EXPECT_FALSE(du_createDate(31, 4, 2024).has_value());
    EXPECT_FALSE(du_createDate(1, 13, 2024).has_value());
}
