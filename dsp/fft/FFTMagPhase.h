#pragma once
// One transformed window in the packed real layout: N ÷ 2 bins, bin 0 holding DC in its real part and
// Nyquist in its imaginary part, so its magnitude and phase mix the two. Magnitudes carry the factor 2
// of the packed transform. Reference semantics: hold it by std::shared_ptr and duplicate() to copy.

#include <memory>
#include <vector>

class FFTMagPhase {
public:
    FFTMagPhase() = default;
    FFTMagPhase(std::vector<float> mag, std::vector<float> phase)
        : mag(std::move(mag)), phase(std::move(phase)) {}

    std::vector<float> mag;
    std::vector<float> phase;

    std::shared_ptr<FFTMagPhase> duplicate() const;
    float getTotalMagnitude() const;
    void gain(float factor);
    // Index of the largest magnitude, then the second and third largest; -1 when there are not enough
    // bins. Bin 0 takes part like any other.
    int getDominantIndex() const;
    int getSecondDominantIndex() const;
    int getThirdDominantIndex() const;
    // The largest magnitude, at getDominantIndex(); 0 for no bins.
    float getMagDominantIndex() const;

private:
    int rankedIndex(size_t rank) const;
};
