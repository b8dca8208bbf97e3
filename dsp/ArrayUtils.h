#pragma once
// Small numeric helpers on float arrays; each returns a new array or a number. Stateless.

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

class ArrayUtils {
public:
    // The same values as floats, no scaling: 16-bit data stays on its ±32767 scale.
    static std::vector<float> convertInt16ToFloat(std::span<const int16_t> values);
    static std::vector<float> getAbs(std::span<const float> values);
    // Means of non-overlapping blocks of `amount`; the remainder is dropped; empty input or amount 0
    // gives an empty array.
    static std::vector<float> downsample(std::span<const float> values, size_t amount);
    // Maxima of the same blocks, same rules.
    static std::vector<float> subsampleMax(std::span<const float> values, size_t amount);
    static std::vector<float> multiply(std::span<const float> values, float factor);
    // 0 for an empty array.
    static float average(std::span<const float> values);
    // Mean of the values not below the threshold; 0 when there are none.
    static float averageAboveThreshold(std::span<const float> values, float threshold);

    // 20 × log10(|v| ÷ reference): 16-bit data passes 32767 to read dB of full scale. 0 gives -inf.
    static std::vector<float> convertToDB(std::span<const float> values, float reference = 1.0f);
    // The inverse: reference × 10^(dB ÷ 20).
    static std::vector<float> convertDBToFloat(std::span<const float> values, float reference = 1.0f);
    // The largest value; 0 for an empty array.
    static float mx(std::span<const float> values);
    // Per block of `amount`: mean × (1 − maxInfluence) + maximum × maxInfluence; the remainder is
    // dropped.
    static std::vector<float> downsampleWMax(std::span<const float> values, size_t amount,
                                             float maxInfluence);
    static float sum(std::span<const float> values);
    // Element-wise a − b and a × b over the shorter length.
    static std::vector<float> subtract(std::span<const float> a, std::span<const float> b);
    static std::vector<float> multiply(std::span<const float> a, std::span<const float> b);
    // Population standard deviation; 0 for an empty array.
    static float deviation(std::span<const float> values);
    // The straight line through (x0, y0) and (x1, y1) at x; y0 when x0 equals x1.
    static double linearInterpolation(double x0, double y0, double x1, double y1, double x);
    // The array read at a fractional index, linearly between neighbours, clamped to the ends.
    static float linearInterpolationValue(std::span<const float> values, double index);
    // `newCount` values spanning the same first-to-last course, linearly interpolated.
    static std::vector<float> resampleArray(std::span<const float> values, size_t newCount);
    // Length × lengthRatio (truncated), same course.
    static std::vector<float> relengthArray(std::span<const float> values, double lengthRatio);
    // Played speedIncrease times faster: length ÷ speedIncrease.
    static std::vector<float> respeedArray(std::span<const float> values, double speedIncrease);
    // indexStart through indexEnd, both included, clamped to the array; empty when start > end.
    static std::vector<float> getSubArray(std::span<const float> values, int64_t indexStart,
                                          int64_t indexEnd);
    // A fades out as B fades in over the shorter length n: A[i] × (n − i) ÷ n + B[i] × i ÷ n.
    static std::vector<float> crossDissolveTotal(std::span<const float> a, std::span<const float> b);
    // A without its last d values, their dissolve into B's first d, then the rest of B. d is bound to
    // the shorter array.
    static std::vector<float> crossDissolve(std::span<const float> a, std::span<const float> b, size_t d);
    // The ranges (first, last sample, both included) of `values` joined by cross-dissolves of d
    // samples: inner edges reach d ÷ 2 before a start and d − d ÷ 2 after an end so that the dissolve
    // is centred on each cut.
    static std::vector<float> innerCuts(std::span<const float> values,
                                        const std::vector<std::pair<int64_t, int64_t>>& ranges, size_t d);
    // Each value times a multiplier going linearly from startMultiplier (first value) towards
    // endMultiplier, which the value after the last would get.
    static std::vector<float> ramp(std::span<const float> values, float startMultiplier, float endMultiplier);
};
