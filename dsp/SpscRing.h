#pragma once
// A ring of floats between one writer thread and one reader thread, without locks.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <vector>

class SpscRing {
public:
    explicit SpscRing(size_t capacity) : buffer_(capacity + 1) {}

    size_t readable() const {
        const size_t w = write_.load(std::memory_order_acquire);
        const size_t r = read_.load(std::memory_order_relaxed);
        return w >= r ? w - r : buffer_.size() - r + w;
    }
    size_t writable() const { return buffer_.size() - 1 - readableFromWriter(); }

    // Writer: as many of `count` values as fit; the number written.
    size_t write(const float* values, size_t count) {
        count = std::min(count, writable());
        size_t w = write_.load(std::memory_order_relaxed);
        for (size_t i = 0; i < count; ++i) {
            buffer_[w] = values[i];
            w = w + 1 == buffer_.size() ? 0 : w + 1;
        }
        write_.store(w, std::memory_order_release);
        return count;
    }

    // Reader: up to `count` values; the number read.
    size_t read(float* values, size_t count) {
        count = std::min(count, readable());
        size_t r = read_.load(std::memory_order_relaxed);
        for (size_t i = 0; i < count; ++i) {
            values[i] = buffer_[r];
            r = r + 1 == buffer_.size() ? 0 : r + 1;
        }
        read_.store(r, std::memory_order_release);
        return count;
    }

private:
    size_t readableFromWriter() const {
        const size_t w = write_.load(std::memory_order_relaxed);
        const size_t r = read_.load(std::memory_order_acquire);
        return w >= r ? w - r : buffer_.size() - r + w;
    }

    std::vector<float> buffer_;
    std::atomic<size_t> write_{0};
    std::atomic<size_t> read_{0};
};
