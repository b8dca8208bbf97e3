#pragma once
// Means of consecutive, non-overlapping blocks of `amount` values, or of a fractional length
// (`numerator` / `denominator` on average: block k ends at value ⌊(k+1) × n / d⌋, so whole blocks
// never drift from the exact rate), fed in pieces of any size; a partial block at the end is dropped. The
// result does not depend on where the input was cut, nor on whether magnitudes were taken beforehand or on
// the way in: a file summed piece by piece gives the very floats that ArrayUtils::downsample gives on the
// whole of it. One thread at a time.

#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

class BlockMeans {
public:
    // amount must be above 0.
    explicit BlockMeans(size_t amount);
    // Both above 0, numerator not below denominator: 44100 values to 300 means, say.
    BlockMeans(size_t numerator, size_t denominator);

    void add(std::span<const float> values);
    // Feeds |values[i × stride] × scale| for i below count: one channel of interleaved audio, rescaled,
    // without copying it out first.
    void addMagnitudes(const float* values, size_t count, size_t stride, float scale);

    void reserve(size_t means) { means_.reserve(means); }
    const std::vector<float>& means() const { return means_; }
    std::vector<float> takeMeans() { return std::move(means_); }

    // Mean of exactly n values.
    static float blockMean(const float* values, size_t n) {
        return meanOf(n, [values](size_t i) { return values[i]; });
    }

private:
    // Eight independent float lanes, so the compiler can keep them in vector registers, combined in
    // double at the end. The order of operations is fixed, so equal values give equal means whichever
    // way they are fetched.
    template <class At> static float meanOf(size_t n, At at) {
        float lanes[8] = {};
        size_t i = 0;
        for (; i + 8 <= n; i += 8) {
            for (size_t k = 0; k < 8; ++k)
                lanes[k] += at(i + k);
        }
        double sum = 0.0;
        for (; i < n; ++i)
            sum += at(i);
        for (float lane : lanes)
            sum += lane;
        return static_cast<float>(sum / static_cast<double>(n));
    }

    template <class At> void feed(size_t count, At at);
    size_t blockLength(size_t k) const {
        return ((k + 1) * numerator_) / denominator_ - (k * numerator_) / denominator_;
    }

    size_t numerator_;
    size_t denominator_;
    size_t amount_;              // length of the block being filled
    size_t blocks_ = 0;          // blocks completed
    std::vector<float> pending_; // start of a block still waiting for its end
    std::vector<float> means_;
};
