#include "dsp/spectral/AUAudioDenoiser.h"

#include "dsp/ProgressProtocol.h"
#include "dsp/fft/AUAudioFFTFile.h"

AUAudioDenoiser::AUAudioDenoiser(std::shared_ptr<AUAudioFFTFile> audioFFTFile,
                                 std::vector<std::vector<float>> fingerprintList, float aboveLimitpercentage,
                                 float belowLimitpercentage, float decreaseByPercentage, int attack,
                                 int decay)
    : audioFFTFile(std::move(audioFFTFile)), fingerprintList(std::move(fingerprintList)),
      aboveLimitpercentage(aboveLimitpercentage), belowLimitpercentage(belowLimitpercentage),
      decreaseByPercentage(decreaseByPercentage), attackInSamples(attack), decayInSamples(decay) {}

void AUAudioDenoiser::denoise() {
    for (int c = 0; c < int(audioFFTFile->magPhaseList.size()); ++c)
        denoise(c);
}

void AUAudioDenoiser::denoise(int channel) {
    if (channel < 0 || size_t(channel) >= audioFFTFile->magPhaseList.size() ||
        size_t(channel) >= fingerprintList.size())
        return;
    gates.clear();
    for (float a : fingerprintList[size_t(channel)])
        gates.emplace_back(float(attackInSamples), a * (1.0f + aboveLimitpercentage), float(decayInSamples),
                           a * (1.0f - belowLimitpercentage), decreaseByPercentage);
    auto& windows = audioFFTFile->magPhaseList[size_t(channel)];
    const QString label = "Denoising: Channel " + QString::number(channel);
    for (size_t i = 0; i < windows.size(); ++i) {
        if (audioFFTFile->progressDelegate)
            audioFFTFile->progressDelegate->progress(label, double(i) / double(windows.size()));
        std::vector<float>& mag = windows[i].mag;
        for (size_t k = 0; k < mag.size() && k < gates.size(); ++k)
            mag[k] = gates[k].newSample(mag[k]);
    }
}
