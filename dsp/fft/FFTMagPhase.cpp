#include "dsp/fft/FFTMagPhase.h"

#include <algorithm>
#include <numeric>

std::shared_ptr<FFTMagPhase> FFTMagPhase::duplicate() const {
    return std::make_shared<FFTMagPhase>(mag, phase);
}

float FFTMagPhase::getTotalMagnitude() const {
    return std::accumulate(mag.begin(), mag.end(), 0.0f);
}

void FFTMagPhase::gain(float factor) {
    for (float& m : mag)
        m *= factor;
}

int FFTMagPhase::rankedIndex(size_t rank) const {
    if (mag.size() <= rank) return -1;
    std::vector<int> order(mag.size());
    std::iota(order.begin(), order.end(), 0);
    // Stable: of equal magnitudes the lower bin ranks first.
    std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(rank + 1), order.end(),
                      [this](int a, int b) {
                          return mag[size_t(a)] > mag[size_t(b)] ||
                                 (mag[size_t(a)] == mag[size_t(b)] && a < b);
                      });
    return order[rank];
}

int FFTMagPhase::getDominantIndex() const {
    return rankedIndex(0);
}

int FFTMagPhase::getSecondDominantIndex() const {
    return rankedIndex(1);
}

int FFTMagPhase::getThirdDominantIndex() const {
    return rankedIndex(2);
}

float FFTMagPhase::getMagDominantIndex() const {
    const int i = getDominantIndex();
    return i < 0 ? 0.0f : mag[size_t(i)];
}
