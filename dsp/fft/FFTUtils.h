#pragma once
// The spectrum of a stretch of one file, for frame-by-frame analyses: the whole first channel is read
// once at construction and every frame is cut from memory. Not shared between threads.

#include "dsp/fft/FFTMagPhase.h"

#include <QString>
#include <cstdint>
#include <span>
#include <vector>

class FFTUtils {
public:
    explicit FFTUtils(const QString& path);

    QString path;
    int nBands = 64;
    int bandsPerOctave = 4;
    std::vector<float> samples; // first channel, ±1.0
    int frequency = 0;          // sample rate; 0 when the file could not be read

    static constexpr double kMinBandFrequency = 200.0;
    static constexpr double kMaxBandFrequency = 4000.0;

    // From `start` through the smaller of `end` and the last index; empty when start is past either.
    std::vector<float> getSubsamples(int64_t start, int64_t end) const;
    // The magnitudes of the bins between 200 and 4000 Hz of the samples' transform.
    std::vector<float> getBands(std::span<const float> samples) const;
    // The slice from startTime, its length rounded to a power of two a little below its own.
    std::vector<float> getBandsInInterval(double startTime, double endTime) const;
    // The same from sample numbers, the length rounded to the nearest power of two.
    std::vector<float> getBandsInSamplesRange(int64_t startSampleN, int64_t endSampleN) const;

    // The transform lengths used by the two interval forms for a slice of `count` samples.
    static int64_t intervalLength(int64_t count);
    static int64_t samplesRangeLength(int64_t count);

    // mag[k] for every bin whose centre k × frequency ÷ (2 × bins) lies in [minFrequency, maxFrequency].
    static std::vector<float> getLinearBands(const FFTMagPhase& magPhase, int frequency, double minFrequency,
                                             double maxFrequency);
};
