#pragma once
// Small numeric helpers on float arrays; each returns a new array or a number. Stateless.

#include <cstddef>
#include <cstdint>
#include <span>
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
};
