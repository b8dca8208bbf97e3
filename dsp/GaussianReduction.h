#pragma once
// Reading the shape of a level histogram: whether it has one or two humps, where the first peak and
// the valley after it lie, and smoothing until it has the wanted number of humps. Stateless.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

class GaussianReduction {
public:
    // At most one falling step, however small.
    static bool isGauss(std::span<const double> a);
    // Rising, falling, rising, falling: a further rise fails.
    static bool isDoubleGauss(std::span<const double> a);
    // The first index after the first fall where the values stop falling; the count when they never do.
    static size_t getValley(std::span<const double> a);
    static size_t getFirstPeak(std::span<const double> a);
    // First index of the largest value; 0 for an empty array.
    static size_t getMaxIndex(std::span<const double> a);
    // Lone non-zero values (both neighbours zero) become zero.
    static std::vector<double> filterSpikes(std::span<const double> a);
    // filterSpikes, then three-point smoothing until one hump (reduceTo1) or two (reduceTo2) remain.
    static std::vector<double> reduceTo1(std::span<const double> a);
    static std::vector<double> reduceTo2(std::span<const double> a);
    static std::vector<double> convertToDoubleArray(std::span<const int64_t> a);
    // One pass of the smoothing: the ends average with their neighbour, inner values with both.
    static std::vector<double> smooth(std::span<const double> a);
};
