#pragma once
// What one voice of the mixer plays: interleaved stereo float frames at the engine's rate.

#include <cstdint>

class VoiceSource {
public:
    virtual ~VoiceSource() = default;
    // Runs on the audio thread, so it must not lock, allocate or touch files. Fills up to `frames`
    // frames of `stereo`; fewer means the source has ended.
    virtual int64_t pull(float* stereo, int64_t frames) noexcept = 0;
};
