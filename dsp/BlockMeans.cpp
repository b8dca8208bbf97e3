#include "dsp/BlockMeans.h"

#include <algorithm>

BlockMeans::BlockMeans(size_t amount) : BlockMeans(amount, 1) {}

BlockMeans::BlockMeans(size_t numerator, size_t denominator)
    : numerator_(numerator), denominator_(denominator), amount_(blockLength(0)) {
    pending_.reserve(amount_ + 1);
}

template <class At> void BlockMeans::feed(size_t count, At at) {
    size_t i = 0;
    if (!pending_.empty()) {
        for (; i < count && pending_.size() < amount_; ++i)
            pending_.push_back(at(i));
        if (pending_.size() < amount_) return;
        means_.push_back(blockMean(pending_.data(), amount_));
        pending_.clear();
        amount_ = blockLength(++blocks_);
    }
    while (i + amount_ <= count) {
        const size_t first = i;
        means_.push_back(meanOf(amount_, [&at, first](size_t k) { return at(first + k); }));
        i += amount_;
        amount_ = blockLength(++blocks_);
    }
    for (; i < count; ++i)
        pending_.push_back(at(i));
}

void BlockMeans::add(std::span<const float> values) {
    feed(values.size(), [values](size_t i) { return values[i]; });
}

void BlockMeans::addMagnitudes(const float* values, size_t count, size_t stride, float scale) {
    // A stride known at compile time lets the loads vectorise: mono and stereo are nearly all files.
    switch (stride) {
    case 1:
        feed(count, [values, scale](size_t i) { return std::fabs(values[i] * scale); });
        break;
    case 2:
        feed(count, [values, scale](size_t i) { return std::fabs(values[i * 2] * scale); });
        break;
    default:
        feed(count, [values, stride, scale](size_t i) { return std::fabs(values[i * stride] * scale); });
    }
}
