#pragma once
// One-shot processors on the magnitudes of a transformed AUAudioFFTFile: a gain, a low-pass and a
// band-pass that zero whole bins. Phases stay; the caller runs performFFTInverse afterwards. Each holds
// the file by reference and changes it in place; one thread at a time.

#include <memory>

class AUAudioFFTFile;

class AUAudioGain {
public:
    AUAudioGain(std::shared_ptr<AUAudioFFTFile> audioFFTFile, float dbGain);
    std::shared_ptr<AUAudioFFTFile> audioFFTFile;
    float dbGain;
    float percGain() const;
    void gain();
    void gainChannel(int channel);
};

// Bins whose centre is strictly above the cut-off go to zero; a bin at it stays.
class AUAudioLowPass {
public:
    AUAudioLowPass(std::shared_ptr<AUAudioFFTFile> audioFFTFile, float cutoff);
    std::shared_ptr<AUAudioFFTFile> audioFFTFile;
    float cutoff;
    void lowPass();
};

// Bins whose centre lies in [lowCutoff, hiCutoff] stay, the others go to zero.
class AUAudioBandPass {
public:
    AUAudioBandPass(std::shared_ptr<AUAudioFFTFile> audioFFTFile, float lowCutoff, float hiCutoff);
    std::shared_ptr<AUAudioFFTFile> audioFFTFile;
    float lowCutoff;
    float hiCutoff;
    void bandPass();
};
