#include "dsp/spectral/AUAudioSpectralFilters.h"

#include "dsp/fft/AUAudioFFTFile.h"

#include <cmath>
#include <functional>

namespace {

// Every bin of every window whose centre frequency fails `keep` goes to zero.
void keepBins(AUAudioFFTFile& file, const std::function<bool(float)>& keep) {
    const std::vector<float> frequencies = file.getFrequencies();
    for (auto& windows : file.magPhaseList)
        for (FFTMagPhase& window : windows)
            for (size_t k = 0; k < window.mag.size() && k < frequencies.size(); ++k)
                if (!keep(frequencies[k])) window.mag[k] = 0.0f;
}

} // namespace

AUAudioGain::AUAudioGain(std::shared_ptr<AUAudioFFTFile> audioFFTFile, float dbGain)
    : audioFFTFile(std::move(audioFFTFile)), dbGain(dbGain) {}

float AUAudioGain::percGain() const {
    return std::pow(10.0f, dbGain * 0.05f);
}

void AUAudioGain::gain() {
    for (int c = 0; c < int(audioFFTFile->magPhaseList.size()); ++c)
        gainChannel(c);
}

void AUAudioGain::gainChannel(int channel) {
    if (channel < 0 || size_t(channel) >= audioFFTFile->magPhaseList.size()) return;
    const float factor = percGain();
    for (FFTMagPhase& window : audioFFTFile->magPhaseList[size_t(channel)])
        window.gain(factor);
}

AUAudioLowPass::AUAudioLowPass(std::shared_ptr<AUAudioFFTFile> audioFFTFile, float cutoff)
    : audioFFTFile(std::move(audioFFTFile)), cutoff(cutoff) {}

void AUAudioLowPass::lowPass() {
    keepBins(*audioFFTFile, [this](float f) { return f <= cutoff; });
}

AUAudioBandPass::AUAudioBandPass(std::shared_ptr<AUAudioFFTFile> audioFFTFile, float lowCutoff,
                                 float hiCutoff)
    : audioFFTFile(std::move(audioFFTFile)), lowCutoff(lowCutoff), hiCutoff(hiCutoff) {}

void AUAudioBandPass::bandPass() {
    keepBins(*audioFFTFile, [this](float f) { return f >= lowCutoff && f <= hiCutoff; });
}
