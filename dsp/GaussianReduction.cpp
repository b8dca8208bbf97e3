#include "dsp/GaussianReduction.h"

#include <algorithm>

namespace {

// Smoothing flattens any array in the end, but rounding can leave ripples that never settle; past this
// many passes the array is as smooth as it will get.
constexpr int kMaxSmoothingPasses = 20000;

template <class Done> std::vector<double> reduce(std::span<const double> a, Done done) {
    std::vector<double> out = GaussianReduction::filterSpikes(a);
    for (int pass = 0; pass < kMaxSmoothingPasses && !done(out); ++pass)
        out = GaussianReduction::smooth(out);
    return out;
}

} // namespace

bool GaussianReduction::isGauss(std::span<const double> a) {
    bool fell = false;
    for (size_t i = 1; i < a.size(); ++i) {
        if (a[i - 1] > a[i]) {
            if (fell) return false;
            fell = true;
        }
    }
    return true;
}

bool GaussianReduction::isDoubleGauss(std::span<const double> a) {
    int state = 0;
    for (size_t i = 1; i < a.size(); ++i) {
        const bool falls = a[i - 1] > a[i];
        const bool rises = a[i - 1] < a[i];
        if ((state == 0 || state == 2) && falls)
            ++state;
        else if (state == 1 && rises)
            state = 2;
        else if (state == 3 && rises)
            return false;
    }
    return true;
}

size_t GaussianReduction::getValley(std::span<const double> a) {
    bool falling = false;
    for (size_t i = 1; i < a.size(); ++i) {
        if (!falling) {
            falling = a[i - 1] > a[i];
        } else if (a[i] >= a[i - 1]) {
            return i;
        }
    }
    return a.size();
}

size_t GaussianReduction::getFirstPeak(std::span<const double> a) {
    if (a.empty()) return 0;
    const size_t count = a.size();
    double p = a[0];
    for (size_t i = 1; i < count; ++i) {
        const double v = a[count - 1 - i];
        if (p > v) return count - 1 - i + 1;
        p = v;
    }
    return 0;
}

size_t GaussianReduction::getMaxIndex(std::span<const double> a) {
    if (a.empty()) return 0;
    return static_cast<size_t>(std::max_element(a.begin(), a.end()) - a.begin());
}

std::vector<double> GaussianReduction::filterSpikes(std::span<const double> a) {
    std::vector<double> out(a.begin(), a.end());
    const size_t n = a.size();
    if (n < 2) return out;
    for (size_t i = 0; i < n; ++i) {
        if (a[i] == 0.0) continue;
        const bool leftZero = i == 0 || a[i - 1] == 0.0;
        const bool rightZero = i == n - 1 || a[i + 1] == 0.0;
        if (leftZero && rightZero) out[i] = 0.0;
    }
    return out;
}

std::vector<double> GaussianReduction::smooth(std::span<const double> a) {
    const size_t n = a.size();
    if (n < 2) return std::vector<double>(a.begin(), a.end());
    std::vector<double> out(n);
    out[0] = (a[0] + a[1]) / 2.0;
    out[n - 1] = (a[n - 2] + a[n - 1]) / 2.0;
    for (size_t i = 1; i + 1 < n; ++i)
        out[i] = (a[i - 1] + a[i] + a[i + 1]) / 3.0;
    return out;
}

std::vector<double> GaussianReduction::reduceTo1(std::span<const double> a) {
    return reduce(a, [](const std::vector<double>& v) { return isGauss(v); });
}

std::vector<double> GaussianReduction::reduceTo2(std::span<const double> a) {
    return reduce(a, [](const std::vector<double>& v) { return isDoubleGauss(v); });
}

std::vector<double> GaussianReduction::convertToDoubleArray(std::span<const int64_t> a) {
    return std::vector<double>(a.begin(), a.end());
}
