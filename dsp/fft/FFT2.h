#pragma once
// Real block <-> magnitude and phase in the packed layout of FFTMagPhase. The forward transform takes
// the first 2^floor(log2 N) samples, applies no window and does not scale (the packed bins are twice
// the textbook transform); the inverse scales by 0.5 ÷ N, so a round trip gives the block back to
// rounding. FFTW plans are made once per length and kept for the life of the process; any thread may
// call, the plan table is the only shared state and takes a lock only to find or make a plan.

#include "dsp/fft/FFTMagPhase.h"

#include <span>
#include <vector>

class FFT2 {
public:
    // Fewer than two samples give no bins.
    static FFTMagPhase calculateForward(std::span<const float> samples);
    static std::vector<float> calculateInverse(const FFTMagPhase& magPhase);

    // The transform length used for `count` samples: the largest power of two not above it (0 below 2).
    static size_t usableLength(size_t count);
};
