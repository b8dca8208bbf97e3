#pragma once
// Mapping between times, sample numbers and horizontal positions.

#include <cstdint>
#include <span>

// Seconds at x of a view `width` wide that shows `duration` seconds; 0 for an empty view.
inline double aUt_xToTime(double duration, double x, double width) {
    return width > 0 ? duration * x / width : 0.0;
}

// The sample at `time`, 0 beyond either end.
inline float aUt_getSample(std::span<const float> samples, double time, double frequency) {
    const double at = time * frequency;
    if (!(at >= 0) || at >= static_cast<double>(samples.size())) return 0.0f;
    return samples[static_cast<size_t>(at)];
}

// Seconds of sample number n.
inline double aUt_getSampleTime(int64_t sampleN, double frequency) {
    return frequency > 0 ? static_cast<double>(sampleN) / frequency : 0.0;
}
