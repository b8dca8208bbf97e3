#include "foundation/StrUt.h"

#include <QLocale>
#include <charconv>
#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <locale>
#include <random>

TEST(StrUt, PadsWithLeadingZerosAndKeepsLongerNumbers) {
    EXPECT_EQ(strUt_pad2(5), "05");
    EXPECT_EQ(strUt_pad2(0), "00");
    EXPECT_EQ(strUt_pad2(123), "123");
    EXPECT_EQ(strUt_pad3(7), "007");
    EXPECT_EQ(strUt_pad3(250), "250");
    EXPECT_EQ(strUt_padN(42, 5), "00042");
    EXPECT_EQ(strUt_padN(-5, 2), "-05");
}

TEST(StrUt, DoubleToStringRoundsToTheAskedDigits) {
    EXPECT_EQ(strUt_doubleToString(2.5, 1), "2.5");
    EXPECT_EQ(strUt_doubleToString(1.0 / 3.0, 1), "0.3");
    EXPECT_EQ(strUt_doubleToString(0.06, 1), "0.1");
    EXPECT_EQ(strUt_doubleToString(59.96, 1), "60.0");
    EXPECT_EQ(strUt_doubleToString(-1.25, 3), "-1.250");
    EXPECT_EQ(strUt_doubleToString(7.6, 0), "8");
}

TEST(StrUt, DoublePrintTable) {
    const std::pair<double, const char*> table[] = {
        {1.0, "1.0"},
        {0.25, "0.25"},
        {-24.0, "-24.0"},
        {0.0, "0.0"},
        {-0.0, "-0.0"},
        {0.1, "0.1"},
        {1.5, "1.5"},
        {44100.0, "44100.0"},
        {1.0 / 3.0, "0.3333333333333333"},
        {123456.789, "123456.789"},
        {0.0001, "0.0001"},
        {1e15, "1000000000000000.0"},
        {1e16, "1e+16"},
        {1e21, "1e+21"},
        {1e-7, "1e-07"},
        {-2.5e-9, "-2.5e-09"},
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
    };
    for (const auto& [value, text] : table)
        EXPECT_EQ(strUt_doublePrint(value), text) << "for " << text;
}

TEST(StrUt, DoublePrintReadsBackToTheSameDouble) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> exponent(-12.0, 20.0);
    std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
    for (int i = 0; i < 2000; ++i) {
        const double value = mantissa(random) * std::pow(10.0, exponent(random));
        const QByteArray text = strUt_doublePrint(value).toLatin1();
        double back = 0.0;
        const auto [end, ec] = std::from_chars(text.constData(), text.constData() + text.size(), back);
        ASSERT_EQ(ec, std::errc()) << text.constData();
        ASSERT_EQ(end, text.constData() + text.size()) << text.constData();
        ASSERT_EQ(back, value) << text.constData();
    }
}

// A decimal comma in every place a locale can reach; tool arguments must not follow it.
TEST(StrUt, NumberTextIgnoresTheUsersLocale) {
    struct CommaPoint : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const QLocale previousQt;
    const std::locale previousStd;
    const std::string previousC = std::setlocale(LC_ALL, nullptr);
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    std::setlocale(LC_ALL, "de_DE.UTF-8"); // present on some machines only

    ASSERT_EQ(QLocale().toString(1.5), "1,5"); // the hostile setting is in force
    EXPECT_EQ(strUt_doublePrint(1.5), "1.5");
    EXPECT_EQ(strUt_doublePrint(-0.125), "-0.125");
    EXPECT_EQ(strUt_doublePrint(1234567.0), "1234567.0");
    EXPECT_EQ(strUt_doubleToString(2.25, 2), "2.25");
    EXPECT_EQ(strUt_padN(1234, 6), "001234");

    std::locale::global(previousStd);
    std::setlocale(LC_ALL, previousC.c_str());
    QLocale::setDefault(previousQt);
}

TEST(StrUt, AcceptCharsReplacesEachForeignCharacterOnce) {
    const QString safe = "abc_-1";
    EXPECT_EQ(strUt_acceptChars("a b-c", safe, "_"), "a_b-c");
    EXPECT_EQ(strUt_acceptChars(QString::fromUtf8("bò\xF0\x9F\x8E\x99"
                                                  "c"),
                                safe, "_"),
              "b__c");
    EXPECT_EQ(strUt_acceptChars("", safe, "_"), "");
}
