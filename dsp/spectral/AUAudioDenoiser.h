#pragma once
// A spectral noise gate: one envelope gate per bin, its thresholds set around that bin's noise
// fingerprint and its time axis the succession of windows. Changes the file's magnitudes in place; the
// caller runs performFFTInverse. One thread at a time.

#include "dsp/AUAudioGate.h"

#include <memory>
#include <vector>

class AUAudioFFTFile;

class AUAudioDenoiser {
public:
    AUAudioDenoiser(std::shared_ptr<AUAudioFFTFile> audioFFTFile,
                    std::vector<std::vector<float>> fingerprintList, float aboveLimitpercentage,
                    float belowLimitpercentage, float decreaseByPercentage, int attack, int decay);

    std::shared_ptr<AUAudioFFTFile> audioFFTFile;
    std::vector<std::vector<float>> fingerprintList; // per channel
    float aboveLimitpercentage;
    float belowLimitpercentage;
    float decreaseByPercentage; // the gain of a closed bin
    int attackInSamples;
    int decayInSamples;
    std::vector<AUAudioGate> gates;

    void denoise();
    void denoise(int channel);
};
