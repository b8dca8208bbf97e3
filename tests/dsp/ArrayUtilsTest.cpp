#include "dsp/ArrayUtils.h"

#include "dsp/BlockMeans.h"

#include <gtest/gtest.h>
#include <random>

using V = std::vector<float>;

TEST(ArrayUtilsDownsample, BlockMeansDropTheRemainder) {
    EXPECT_EQ(ArrayUtils::downsample(V{1, 2, 3, 4, 5, 6, 7}, 3), (V{2, 5}));
    EXPECT_EQ(ArrayUtils::downsample(V{1, 2, 3, 4, 5, 6, 7}, 2), (V{1.5f, 3.5f, 5.5f}));
    EXPECT_EQ(ArrayUtils::downsample(V{-4, 4, 10}, 1), (V{-4, 4, 10}));
}

TEST(ArrayUtilsDownsample, EmptyInputZeroAmountOrTooFewValuesGiveNothing) {
    EXPECT_TRUE(ArrayUtils::downsample(V{}, 3).empty());
    EXPECT_TRUE(ArrayUtils::downsample(V{1, 2, 3}, 0).empty());
    EXPECT_TRUE(ArrayUtils::downsample(V{1, 2}, 3).empty());
}

// A file is summarised slice by slice; wherever the cuts fall the floats must be those of one pass.
TEST(ArrayUtilsDownsample, PiecewiseFeedingMatchesOnePassBitForBit) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> value(0.0f, 32767.0f);
    V input(20000);
    for (float& v : input)
        v = value(random);
    for (size_t amount : {1u, 73u, 147u, 160u}) {
        const V whole = ArrayUtils::downsample(input, amount);
        BlockMeans pieces(amount);
        std::uniform_int_distribution<size_t> cut(0, 400);
        size_t at = 0;
        while (at < input.size()) {
            const size_t n = std::min(cut(random), input.size() - at);
            pieces.add(std::span<const float>(input).subspan(at, n));
            at += n;
        }
        ASSERT_EQ(pieces.means().size(), input.size() / amount) << amount;
        EXPECT_EQ(pieces.means(), whole) << amount;
    }
}

TEST(ArrayUtilsSubsampleMax, MaximumOfEachBlock) {
    EXPECT_EQ(ArrayUtils::subsampleMax(V{1, -5, 3, 2, 9, 0, 7}, 3), (V{3, 9}));
    EXPECT_TRUE(ArrayUtils::subsampleMax(V{1, 2}, 0).empty());
}

TEST(ArrayUtilsElementwise, AbsMultiplyAndInt16Conversion) {
    EXPECT_EQ(ArrayUtils::getAbs(V{-1.5f, 0.0f, 2.0f, -0.0f}), (V{1.5f, 0.0f, 2.0f, 0.0f}));
    EXPECT_EQ(ArrayUtils::multiply(V{-1.0f, 0.5f, 1.0f}, 32767.0f), (V{-32767.0f, 16383.5f, 32767.0f}));
    const std::vector<int16_t> ints = {-32768, -1, 0, 32767};
    EXPECT_EQ(ArrayUtils::convertInt16ToFloat(ints), (V{-32768.0f, -1.0f, 0.0f, 32767.0f}));
}

TEST(ArrayUtilsAverage, PlainAndAboveThreshold) {
    EXPECT_EQ(ArrayUtils::average(V{}), 0.0f);
    EXPECT_EQ(ArrayUtils::average(V{1, 2, 3, 4}), 2.5f);
    // Values equal to the threshold count: it is "not below".
    EXPECT_EQ(ArrayUtils::averageAboveThreshold(V{100, 2000, 3000, 1000}, 2000.0f), 2500.0f);
    EXPECT_EQ(ArrayUtils::averageAboveThreshold(V{100, 200}, 1842.7f), 0.0f);
    EXPECT_EQ(ArrayUtils::averageAboveThreshold(V{}, 0.0f), 0.0f);
}
