#include "dsp/fft/FFTUtils.h"

#include "dsp/AUAudio.h"
#include "dsp/SndFile.h"
#include "dsp/fft/FFT2.h"

#include <cmath>

FFTUtils::FFTUtils(const QString& path) : path(path) {
    if (const SndFile file(path); file.isOpen()) frequency = file.sampleRate();
    samples = AUAudio::readFileIntoFloatArray(path);
}

std::vector<float> FFTUtils::getSubsamples(int64_t start, int64_t end) const {
    const int64_t last = std::min(end, static_cast<int64_t>(samples.size()) - 1);
    if (start < 0 || start > last) return {};
    return {samples.begin() + start, samples.begin() + last + 1};
}

std::vector<float> FFTUtils::getBands(std::span<const float> values) const {
    return getLinearBands(FFT2::calculateForward(values), frequency, kMinBandFrequency, kMaxBandFrequency);
}

// std::round takes halves away from zero, which is what makes a slice of exactly 2^k keep 2^k.
int64_t FFTUtils::intervalLength(int64_t count) {
    if (count <= 0) return 0;
    return int64_t{1} << static_cast<int>(std::round(std::log2(double(count)) - 0.5));
}

int64_t FFTUtils::samplesRangeLength(int64_t count) {
    if (count <= 0) return 0;
    return int64_t{1} << static_cast<int>(std::round(std::log2(double(count))));
}

std::vector<float> FFTUtils::getBandsInInterval(double startTime, double endTime) const {
    const auto s = static_cast<int64_t>(startTime * frequency);
    const auto e = static_cast<int64_t>(endTime * frequency);
    const int64_t n = intervalLength(e - s);
    if (n == 0) return {};
    return getBands(getSubsamples(s, s + n - 1));
}

std::vector<float> FFTUtils::getBandsInSamplesRange(int64_t startSampleN, int64_t endSampleN) const {
    const int64_t n = samplesRangeLength(endSampleN - startSampleN);
    if (n == 0) return {};
    return getBands(getSubsamples(startSampleN, startSampleN + n - 1));
}

std::vector<float> FFTUtils::getLinearBands(const FFTMagPhase& magPhase, int frequency, double minFrequency,
                                            double maxFrequency) {
    const double windowSize = 2.0 * double(magPhase.mag.size());
    std::vector<float> out;
    for (size_t k = 0; k < magPhase.mag.size(); ++k) {
        const double f = double(k) * frequency / windowSize;
        if (f >= minFrequency && f <= maxFrequency) out.push_back(magPhase.mag[k]);
    }
    return out;
}
