#include "dsp/ArrayUtils.h"

#include "dsp/BlockMeans.h"

#include <algorithm>
#include <cmath>

std::vector<float> ArrayUtils::convertInt16ToFloat(std::span<const int16_t> values) {
    return std::vector<float>(values.begin(), values.end());
}

std::vector<float> ArrayUtils::getAbs(std::span<const float> values) {
    std::vector<float> out(values.size());
    std::transform(values.begin(), values.end(), out.begin(), [](float v) { return std::fabs(v); });
    return out;
}

std::vector<float> ArrayUtils::downsample(std::span<const float> values, size_t amount) {
    if (amount == 0 || values.empty()) return {};
    BlockMeans means(amount);
    means.add(values);
    return means.takeMeans();
}

std::vector<float> ArrayUtils::subsampleMax(std::span<const float> values, size_t amount) {
    if (amount == 0) return {};
    std::vector<float> out;
    out.reserve(values.size() / amount);
    for (size_t at = 0; at + amount <= values.size(); at += amount)
        out.push_back(*std::max_element(values.begin() + static_cast<std::ptrdiff_t>(at),
                                        values.begin() + static_cast<std::ptrdiff_t>(at + amount)));
    return out;
}

std::vector<float> ArrayUtils::multiply(std::span<const float> values, float factor) {
    std::vector<float> out(values.size());
    std::transform(values.begin(), values.end(), out.begin(), [factor](float v) { return v * factor; });
    return out;
}

float ArrayUtils::average(std::span<const float> values) {
    if (values.empty()) return 0.0f;
    return BlockMeans::blockMean(values.data(), values.size());
}

float ArrayUtils::averageAboveThreshold(std::span<const float> values, float threshold) {
    double sum = 0.0;
    size_t count = 0;
    for (float v : values) {
        if (v >= threshold) {
            sum += v;
            ++count;
        }
    }
    return count == 0 ? 0.0f : static_cast<float>(sum / static_cast<double>(count));
}
