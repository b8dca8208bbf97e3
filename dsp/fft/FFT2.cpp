#include "dsp/fft/FFT2.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <fftw3.h>
#include <map>
#include <memory>
#include <mutex>

namespace {

struct FftwFree {
    void operator()(void* p) const { fftwf_free(p); }
};
template <typename T> using FftwBuffer = std::unique_ptr<T[], FftwFree>;

template <typename T> FftwBuffer<T> fftwAlloc(size_t count) {
    return FftwBuffer<T>(static_cast<T*>(fftwf_malloc(sizeof(T) * count)));
}

// The two plans of one length. FFTW's planner is not thread-safe, its execute functions are: plans are
// made under the lock and then run with per-call buffers, which fftwf_malloc aligns like the planning
// buffers.
struct Plans {
    fftwf_plan forward = nullptr;
    fftwf_plan inverse = nullptr;
};

const Plans& plansFor(size_t n) {
    static std::mutex mutex;
    static std::map<size_t, Plans> table;
    const std::lock_guard lock(mutex);
    auto [it, added] = table.try_emplace(n);
    if (added) {
        auto real = fftwAlloc<float>(n);
        auto spectrum = fftwAlloc<fftwf_complex>(n / 2 + 1);
        const int size = static_cast<int>(n);
        it->second.forward = fftwf_plan_dft_r2c_1d(size, real.get(), spectrum.get(), FFTW_ESTIMATE);
        it->second.inverse = fftwf_plan_dft_c2r_1d(size, spectrum.get(), real.get(), FFTW_ESTIMATE);
    }
    return it->second;
}

} // namespace

size_t FFT2::usableLength(size_t count) {
    return count < 2 ? 0 : std::bit_floor(count);
}

FFTMagPhase FFT2::calculateForward(std::span<const float> samples) {
    const size_t n = usableLength(samples.size());
    if (n == 0) return {};
    const Plans& plans = plansFor(n);
    auto real = fftwAlloc<float>(n);
    auto spectrum = fftwAlloc<fftwf_complex>(n / 2 + 1);
    std::copy_n(samples.begin(), n, real.get());
    fftwf_execute_dft_r2c(plans.forward, real.get(), spectrum.get());

    const size_t bins = n / 2;
    FFTMagPhase out;
    out.mag.resize(bins);
    out.phase.resize(bins);
    // Packed bin 0: DC real, Nyquist imaginary; every bin doubled.
    const std::complex<float> packed0(2.0f * spectrum[0][0], 2.0f * spectrum[bins][0]);
    out.mag[0] = std::abs(packed0);
    out.phase[0] = std::arg(packed0);
    for (size_t k = 1; k < bins; ++k) {
        const float re = 2.0f * spectrum[k][0];
        const float im = 2.0f * spectrum[k][1];
        out.mag[k] = std::sqrt(re * re + im * im);
        out.phase[k] = std::atan2(im, re);
    }
    return out;
}

std::vector<float> FFT2::calculateInverse(const FFTMagPhase& magPhase) {
    const size_t bins = std::min(magPhase.mag.size(), magPhase.phase.size());
    const size_t n = 2 * bins;
    if (bins == 0 || !std::has_single_bit(n)) return {};
    const Plans& plans = plansFor(n);
    auto spectrum = fftwAlloc<fftwf_complex>(bins + 1);
    auto real = fftwAlloc<float>(n);
    const std::complex<float> packed0 = std::polar(magPhase.mag[0], magPhase.phase[0]);
    spectrum[0][0] = packed0.real();
    spectrum[0][1] = 0.0f;
    spectrum[bins][0] = packed0.imag();
    spectrum[bins][1] = 0.0f;
    for (size_t k = 1; k < bins; ++k) {
        spectrum[k][0] = magPhase.mag[k] * std::cos(magPhase.phase[k]);
        spectrum[k][1] = magPhase.mag[k] * std::sin(magPhase.phase[k]);
    }
    fftwf_execute_dft_c2r(plans.inverse, spectrum.get(), real.get());
    const float scale = 0.5f / static_cast<float>(n);
    std::vector<float> out(n);
    for (size_t i = 0; i < n; ++i)
        out[i] = real[i] * scale;
    return out;
}
