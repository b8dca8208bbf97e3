#include "dsp/ArrayUtils.h"

#include "dsp/BlockMeans.h"

#include <gtest/gtest.h>
#include <random>

using V = std::vector<float>;

TEST(ArrayUtilsDownsample, BlockMeansAndMaximaDropTheRemainder) {
    EXPECT_EQ(ArrayUtils::downsample(V{1, 2, 3, 4, 5, 6, 7}, 3), (V{2, 5}));
    EXPECT_EQ(ArrayUtils::downsample(V{1, 2, 3, 4, 5, 6, 7}, 2), (V{1.5f, 3.5f, 5.5f}));
    EXPECT_EQ(ArrayUtils::downsample(V{-4, 4, 10}, 1), (V{-4, 4, 10}));
    EXPECT_TRUE(ArrayUtils::downsample(V{}, 3).empty());
    EXPECT_TRUE(ArrayUtils::downsample(V{1, 2, 3}, 0).empty());
    EXPECT_TRUE(ArrayUtils::downsample(V{1, 2}, 3).empty());
    EXPECT_EQ(ArrayUtils::subsampleMax(V{1, -5, 3, 2, 9, 0, 7}, 3), (V{3, 9}));
    EXPECT_TRUE(ArrayUtils::subsampleMax(V{1, 2}, 0).empty());
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

TEST(ArrayUtilsArithmetic, WorkedExamples) {
    EXPECT_EQ(ArrayUtils::getAbs(V{-1.5f, 0.0f, 2.0f, -0.0f}), (V{1.5f, 0.0f, 2.0f, 0.0f}));
    EXPECT_EQ(ArrayUtils::multiply(V{-1.0f, 0.5f, 1.0f}, 32767.0f), (V{-32767.0f, 16383.5f, 32767.0f}));
    const std::vector<int16_t> ints = {-32768, -1, 0, 32767};
    EXPECT_EQ(ArrayUtils::convertInt16ToFloat(ints), (V{-32768.0f, -1.0f, 0.0f, 32767.0f}));
    EXPECT_EQ(ArrayUtils::average(V{}), 0.0f);
    EXPECT_EQ(ArrayUtils::average(V{1, 2, 3, 4}), 2.5f);
    // Values equal to the threshold count: it is "not below".
    EXPECT_EQ(ArrayUtils::averageAboveThreshold(V{100, 2000, 3000, 1000}, 2000.0f), 2500.0f);
    EXPECT_EQ(ArrayUtils::averageAboveThreshold(V{100, 200}, 1842.7f), 0.0f);
    EXPECT_EQ(ArrayUtils::averageAboveThreshold(V{}, 0.0f), 0.0f);
    EXPECT_EQ(ArrayUtils::sum(V{1, 2, 3.5f}), 6.5f);
    EXPECT_EQ(ArrayUtils::mx(V{-3, 7, 2}), 7.0f);
    EXPECT_EQ(ArrayUtils::mx(V{}), 0.0f);
    EXPECT_FLOAT_EQ(ArrayUtils::deviation(V{2, 4, 4, 4, 5, 5, 7, 9}), 2.0f) << "population, not sample";
    EXPECT_EQ(ArrayUtils::subtract(V{5, 5, 5}, V{1, 2}), (V{4, 3}));
    EXPECT_EQ(ArrayUtils::multiply(V{2, 3}, V{4, 5, 6}), (V{8, 15}));
    // Mean 2 and maximum 3 of the first block, mean 5 and maximum 6 of the second; remainder dropped.
    EXPECT_EQ(ArrayUtils::downsampleWMax(V{1, 2, 3, 4, 5, 6, 9}, 3, 0.25f), (V{2.25f, 5.25f}));
    const V db = ArrayUtils::convertToDB(V{32767, 16383.5f, 0}, 32767);
    EXPECT_FLOAT_EQ(db[0], 0.0f);
    EXPECT_NEAR(db[1], -6.0206f, 1e-4);
    EXPECT_TRUE(std::isinf(db[2]) && db[2] < 0);
    const V back = ArrayUtils::convertDBToFloat(V{0, -20}, 2);
    EXPECT_FLOAT_EQ(back[0], 2.0f);
    EXPECT_FLOAT_EQ(back[1], 0.2f);
}

TEST(ArrayUtilsSlices, SubArraysRampsAndResampling) {
    const V v{0, 1, 2, 3, 4};
    EXPECT_EQ(ArrayUtils::getSubArray(v, 1, 3), (V{1, 2, 3}));
    EXPECT_EQ(ArrayUtils::getSubArray(v, 3, 3), (V{3}));
    EXPECT_TRUE(ArrayUtils::getSubArray(v, 3, 1).empty()) << "start above end";
    EXPECT_EQ(ArrayUtils::getSubArray(v, -2, 99), v);
    EXPECT_TRUE(ArrayUtils::getSubArray(V{}, 0, 0).empty());
    EXPECT_EQ(ArrayUtils::ramp(V{2, 2, 2, 2}, 0.0f, 1.0f), (V{0.0f, 0.5f, 1.0f, 1.5f}));
    EXPECT_EQ(ArrayUtils::ramp(V{1, 1}, 0.5f, 0.5f), (V{0.5f, 0.5f}));
    EXPECT_TRUE(ArrayUtils::ramp(V{}, 0.0f, 1.0f).empty());
    EXPECT_EQ(ArrayUtils::resampleArray(V{0, 10}, 3), (V{0, 5, 10}));
    EXPECT_EQ(ArrayUtils::relengthArray(V{0, 1, 2, 3}, 0.5).size(), 2u);
    EXPECT_EQ(ArrayUtils::respeedArray(V{0, 1, 2, 3, 4, 5}, 2.0), (V{0, 2.5f, 5}));
    EXPECT_TRUE(ArrayUtils::respeedArray(V{1, 2}, 0.0).empty());
    EXPECT_FLOAT_EQ(ArrayUtils::linearInterpolationValue(V{0, 10, 20}, 1.25), 12.5f);
    EXPECT_EQ(ArrayUtils::linearInterpolationValue(V{0, 10, 20}, 7.0), 20.0f);
    EXPECT_EQ(ArrayUtils::linearInterpolation(1, 10, 3, 30, 2), 20.0);
    EXPECT_EQ(ArrayUtils::linearInterpolation(1, 10, 1, 30, 2), 10.0);
}

TEST(ArrayUtilsDissolve, LinearFadeAcrossTheJoin) {
    // n = 4: weights of A are 4/4, 3/4, 2/4, 1/4.
    EXPECT_EQ(ArrayUtils::crossDissolveTotal(V{4, 4, 4, 4}, V{8, 8, 8, 8}), (V{4, 5, 6, 7}));
    const V joined = ArrayUtils::crossDissolve(V{1, 1, 1, 4, 4}, V{8, 8, 2, 2}, 2);
    // A minus its last two, then (4,4)x(8,8) over two samples, then the rest of B.
    EXPECT_EQ(joined, (V{1, 1, 1, 4, 6, 2, 2}));
    EXPECT_EQ(joined.size(), 5u + 4u - 2u);
    EXPECT_EQ(ArrayUtils::crossDissolve(V{1}, V{2, 3}, 5), (V{1, 3})) << "d bound to the shorter array";
}

TEST(ArrayUtilsDissolve, InnerCutsCentreEachDissolveOnItsCut) {
    V ramp(100);
    for (size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<float>(i);
    EXPECT_EQ(ArrayUtils::innerCuts(ramp, {{10, 14}}, 4), ArrayUtils::getSubArray(ramp, 10, 14));
    // Keep 10…19 and 50…59 with d = 4: the first part runs to 21, the second from 48; 4 samples overlap.
    const V out = ArrayUtils::innerCuts(ramp, {{10, 19}, {50, 59}}, 4);
    ASSERT_EQ(out.size(), 12u + 12u - 4u);
    EXPECT_EQ(out.front(), 10.0f);
    EXPECT_EQ(out.back(), 59.0f);
    EXPECT_EQ(out[7], 17.0f) << "untouched before the dissolve";
    EXPECT_EQ(out[12], 52.0f) << "untouched after it";
    EXPECT_FLOAT_EQ(out[10], 0.5f * 20 + 0.5f * 50) << "the cut sits in the middle of the dissolve";
    EXPECT_TRUE(ArrayUtils::innerCuts(ramp, {}, 4).empty());
}
