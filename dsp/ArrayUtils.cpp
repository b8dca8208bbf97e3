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

std::vector<float> ArrayUtils::convertToDB(std::span<const float> values, float reference) {
    std::vector<float> out(values.size());
    std::transform(values.begin(), values.end(), out.begin(),
                   [reference](float v) { return 20.0f * std::log10(std::fabs(v) / reference); });
    return out;
}

std::vector<float> ArrayUtils::convertDBToFloat(std::span<const float> values, float reference) {
    std::vector<float> out(values.size());
    std::transform(values.begin(), values.end(), out.begin(),
                   [reference](float db) { return reference * std::pow(10.0f, db / 20.0f); });
    return out;
}

float ArrayUtils::mx(std::span<const float> values) {
    return values.empty() ? 0.0f : *std::max_element(values.begin(), values.end());
}

std::vector<float> ArrayUtils::downsampleWMax(std::span<const float> values, size_t amount,
                                              float maxInfluence) {
    const std::vector<float> means = downsample(values, amount);
    const std::vector<float> maxima = subsampleMax(values, amount);
    std::vector<float> out(means.size());
    for (size_t i = 0; i < out.size(); ++i)
        out[i] = means[i] * (1.0f - maxInfluence) + maxima[i] * maxInfluence;
    return out;
}

float ArrayUtils::sum(std::span<const float> values) {
    double total = 0.0;
    for (float v : values)
        total += v;
    return static_cast<float>(total);
}

std::vector<float> ArrayUtils::subtract(std::span<const float> a, std::span<const float> b) {
    std::vector<float> out(std::min(a.size(), b.size()));
    for (size_t i = 0; i < out.size(); ++i)
        out[i] = a[i] - b[i];
    return out;
}

std::vector<float> ArrayUtils::multiply(std::span<const float> a, std::span<const float> b) {
    std::vector<float> out(std::min(a.size(), b.size()));
    for (size_t i = 0; i < out.size(); ++i)
        out[i] = a[i] * b[i];
    return out;
}

float ArrayUtils::deviation(std::span<const float> values) {
    if (values.empty()) return 0.0f;
    double mean = 0.0;
    for (float v : values)
        mean += v;
    mean /= static_cast<double>(values.size());
    double squares = 0.0;
    for (float v : values)
        squares += (v - mean) * (v - mean);
    return static_cast<float>(std::sqrt(squares / static_cast<double>(values.size())));
}

double ArrayUtils::linearInterpolation(double x0, double y0, double x1, double y1, double x) {
    if (x1 == x0) return y0;
    return y0 + (y1 - y0) * (x - x0) / (x1 - x0);
}

float ArrayUtils::linearInterpolationValue(std::span<const float> values, double index) {
    if (values.empty()) return 0.0f;
    if (!(index > 0)) return values.front();
    const double last = static_cast<double>(values.size() - 1);
    if (index >= last) return values.back();
    const auto below = static_cast<size_t>(index);
    const double fraction = index - static_cast<double>(below);
    return static_cast<float>(values[below] + (values[below + 1] - values[below]) * fraction);
}

std::vector<float> ArrayUtils::resampleArray(std::span<const float> values, size_t newCount) {
    if (values.empty() || newCount == 0) return {};
    std::vector<float> out(newCount);
    if (newCount == 1) {
        out[0] = values.front();
        return out;
    }
    const double step = static_cast<double>(values.size() - 1) / static_cast<double>(newCount - 1);
    for (size_t i = 0; i < newCount; ++i)
        out[i] = linearInterpolationValue(values, step * static_cast<double>(i));
    return out;
}

std::vector<float> ArrayUtils::relengthArray(std::span<const float> values, double lengthRatio) {
    if (!(lengthRatio > 0)) return {};
    return resampleArray(values, static_cast<size_t>(static_cast<double>(values.size()) * lengthRatio));
}

std::vector<float> ArrayUtils::respeedArray(std::span<const float> values, double speedIncrease) {
    if (!(speedIncrease > 0)) return {};
    return relengthArray(values, 1.0 / speedIncrease);
}

std::vector<float> ArrayUtils::getSubArray(std::span<const float> values, int64_t indexStart,
                                           int64_t indexEnd) {
    const int64_t count = static_cast<int64_t>(values.size());
    const int64_t first = std::max<int64_t>(indexStart, 0);
    const int64_t last = std::min<int64_t>(indexEnd, count - 1);
    if (first > last) return {};
    return std::vector<float>(values.begin() + first, values.begin() + last + 1);
}

std::vector<float> ArrayUtils::crossDissolveTotal(std::span<const float> a, std::span<const float> b) {
    const size_t n = std::min(a.size(), b.size());
    std::vector<float> out(n);
    const auto total = static_cast<float>(n);
    for (size_t i = 0; i < n; ++i) {
        const auto at = static_cast<float>(i);
        out[i] = a[i] * (total - at) / total + b[i] * at / total;
    }
    return out;
}

std::vector<float> ArrayUtils::crossDissolve(std::span<const float> a, std::span<const float> b, size_t d) {
    d = std::min({d, a.size(), b.size()});
    std::vector<float> out(a.begin(), a.end() - static_cast<std::ptrdiff_t>(d));
    const std::vector<float> dissolve = crossDissolveTotal(a.last(d), b.first(d));
    out.insert(out.end(), dissolve.begin(), dissolve.end());
    out.insert(out.end(), b.begin() + static_cast<std::ptrdiff_t>(d), b.end());
    return out;
}

std::vector<float> ArrayUtils::innerCuts(std::span<const float> values,
                                         const std::vector<std::pair<int64_t, int64_t>>& ranges, size_t d) {
    if (ranges.empty()) return {};
    if (ranges.size() == 1) return getSubArray(values, ranges[0].first, ranges[0].second);
    const auto before = static_cast<int64_t>(d / 2);
    const auto after = static_cast<int64_t>(d - d / 2);
    std::vector<float> out;
    for (size_t i = 0; i < ranges.size(); ++i) {
        const bool first = i == 0;
        const bool last = i + 1 == ranges.size();
        const std::vector<float> part = getSubArray(values, ranges[i].first - (first ? 0 : before),
                                                    ranges[i].second + (last ? 0 : after));
        out = first ? part : crossDissolve(out, part, d);
    }
    return out;
}

std::vector<float> ArrayUtils::ramp(std::span<const float> values, float startMultiplier,
                                    float endMultiplier) {
    std::vector<float> out(values.size());
    if (values.empty()) return out;
    const double step =
        (static_cast<double>(endMultiplier) - startMultiplier) / static_cast<double>(values.size());
    for (size_t i = 0; i < values.size(); ++i)
        out[i] = static_cast<float>(values[i] * (startMultiplier + step * static_cast<double>(i)));
    return out;
}
