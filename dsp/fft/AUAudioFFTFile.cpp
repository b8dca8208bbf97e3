#include "dsp/fft/AUAudioFFTFile.h"

#include "dsp/AUAudio.h"
#include "dsp/ArrayUtils.h"
#include "dsp/ProgressProtocol.h"
#include "dsp/SndFile.h"
#include "dsp/fft/FFT2.h"
#include "dsp/fft/FFTUtils.h"
#include "foundation/Log.h"

#include <algorithm>
#include <random>

AUAudioFFTFile::AUAudioFFTFile(const QString& srcPath, int windowSize, bool overlap)
    : windowSize(windowSize), srcPath(srcPath), overlap(overlap) {}

int64_t AUAudioFFTFile::timeToSampleN(double time) const {
    return static_cast<int64_t>(time * frequency);
}

double AUAudioFFTFile::sampleNToTime(int64_t sampleN) const {
    return frequency > 0 ? double(sampleN) / frequency : 0.0;
}

std::shared_ptr<AUAudioFFTFile> AUAudioFFTFile::duplicate() const {
    return std::make_shared<AUAudioFFTFile>(*this);
}

std::shared_ptr<AUAudioFFTFile> AUAudioFFTFile::duplicateRegion(double inTime, double outTime) const {
    auto copy = std::make_shared<AUAudioFFTFile>(srcPath, windowSize, overlap);
    copy->frequency = frequency;
    copy->nChannels = nChannels;
    const int64_t first = std::max<int64_t>(0, timeToSampleN(inTime));
    const int64_t last = std::min(timeToSampleN(outTime), srcSamplesCount) - 1;
    copy->stereoFloat.l = ArrayUtils::getSubArray(stereoFloat.l, first, last);
    if (nChannels == 2) copy->stereoFloat.r = ArrayUtils::getSubArray(stereoFloat.r, first, last);
    copy->srcSamplesCount = static_cast<int64_t>(copy->stereoFloat.l.size());
    copy->pad();
    return copy;
}

void AUAudioFFTFile::report(const QString& label, double fraction) const {
    if (progressDelegate) progressDelegate->progress(label, fraction);
}

const std::vector<float>& AUAudioFFTFile::channelSamples(int channel) const {
    return channel == 1 ? stereoFloat.r : stereoFloat.l;
}

bool AUAudioFFTFile::readSamples() {
    qxLog("readSamples()");
    const SndFile file(srcPath);
    if (!file.isOpen() || windowSize < 2) {
        qxLog("error: AUAudioFFTFile cannot read " + srcPath);
        return false;
    }
    frequency = file.sampleRate();
    nChannels = file.channels() == 2 ? 2 : 1;
    report("Reading file", 0.0);
    if (nChannels == 2)
        stereoFloat = AUAudio::readFileIntoStereoFloat(srcPath);
    else
        stereoFloat = {AUAudio::readFileIntoFloatArray(srcPath), {}};
    report("Reading file", 1.0);
    srcSamplesCount = static_cast<int64_t>(stereoFloat.l.size());
    pad();
    return true;
}

// Whole pairs of windows, so that the half-step windows of the overlapped form end on the data's end.
void AUAudioFFTFile::pad() {
    const auto pair = static_cast<int64_t>(2 * windowSize);
    if (srcSamplesCount % windowSize == 0 && srcSamplesCount > 0) return;
    const auto extra = static_cast<size_t>(pair - srcSamplesCount % pair);
    stereoFloat.l.resize(stereoFloat.l.size() + extra, 0.0f);
    if (nChannels == 2) stereoFloat.r.resize(stereoFloat.r.size() + extra, 0.0f);
}

void AUAudioFFTFile::performFFT() {
    qxLog("performFFT()");
    magPhaseList.assign(size_t(nChannels), {});
    const size_t w = size_t(windowSize);
    const size_t step = overlap ? w / 2 : w;
    for (int c = 0; c < nChannels; ++c) {
        const std::vector<float>& data = channelSamples(c);
        for (size_t start = 0; start + w <= data.size(); start += step)
            magPhaseList[size_t(c)].push_back(
                FFT2::calculateForward(std::span<const float>(data).subspan(start, w)));
    }
}

bool AUAudioFFTFile::performFFTInverse(bool retainOriginalLenght, const QString& saveToPath) {
    const size_t w = size_t(windowSize);
    const size_t half = w / 2;
    std::vector<std::vector<float>> channels;
    for (const auto& windows : magPhaseList) {
        std::vector<float> out;
        if (!overlap) {
            for (const FFTMagPhase& window : windows) {
                const std::vector<float> block = FFT2::calculateInverse(window);
                out.insert(out.end(), block.begin(), block.end());
            }
        } else if (!windows.empty()) {
            out.assign(half * (windows.size() + 1), 0.0f);
            for (size_t i = 0; i < windows.size(); ++i) {
                const std::vector<float> block = FFT2::calculateInverse(windows[i]);
                const bool first = i == 0;
                const bool last = i + 1 == windows.size();
                for (size_t j = 0; j < block.size(); ++j) {
                    // Rising over the first half, falling over the second: neighbours sum to one.
                    float weight = j < half ? float(j) / float(half) : float(w - j) / float(half);
                    if ((first && j < half) || (last && j >= half)) weight = 1.0f;
                    out[i * half + j] += block[j] * weight;
                }
            }
        }
        if (retainOriginalLenght && int64_t(out.size()) > srcSamplesCount)
            out.resize(size_t(srcSamplesCount));
        channels.push_back(std::move(out));
    }
    if (channels.empty() || channels[0].empty()) {
        qxLog("error: AUAudioFFTFile has nothing to write to " + saveToPath);
        return false;
    }
    if (channels.size() == 2)
        AUAudio::saveStereoArrayIntoAudioFile16(channels[0], channels[1], frequency, saveToPath);
    else
        AUAudio::saveArrayIntoAudioFile16(channels[0], frequency, saveToPath);
    return true;
}

std::vector<float> AUAudioFFTFile::getFrequencies(int frequency, int windowSize) {
    std::vector<float> out(size_t(std::max(0, windowSize / 2)));
    for (size_t k = 0; k < out.size(); ++k)
        out[k] = float(double(k) * frequency / windowSize);
    return out;
}

std::vector<float> AUAudioFFTFile::getFrequencies() const {
    return getFrequencies(frequency, windowSize);
}

float AUAudioFFTFile::binFrequency(int bin) const {
    return float(double(bin) * frequency / windowSize);
}

float AUAudioFFTFile::getDominantFrequency(size_t magPhaseIndex, int channel, float silenceFrequency) const {
    if (size_t(channel) >= magPhaseList.size() || magPhaseIndex >= magPhaseList[size_t(channel)].size())
        return silenceFrequency;
    const FFTMagPhase& window = magPhaseList[size_t(channel)][magPhaseIndex];
    if (window.getTotalMagnitude() <= 0.0f) return silenceFrequency;
    return binFrequency(window.getDominantIndex());
}

float AUAudioFFTFile::getSecondDominantFrequency(size_t magPhaseIndex, int channel,
                                                 float silenceFrequency) const {
    if (size_t(channel) >= magPhaseList.size() || magPhaseIndex >= magPhaseList[size_t(channel)].size())
        return silenceFrequency;
    const FFTMagPhase& window = magPhaseList[size_t(channel)][magPhaseIndex];
    if (window.getTotalMagnitude() <= 0.0f) return silenceFrequency;
    return binFrequency(window.getSecondDominantIndex());
}

std::vector<float> AUAudioFFTFile::getLinearBands(const FFTMagPhase& magPhase, float frequency,
                                                  float minFrequency, float maxFrequency) const {
    return FFTUtils::getLinearBands(magPhase, int(frequency), minFrequency, maxFrequency);
}

std::vector<float> AUAudioFFTFile::getLinearBandsMag(const FFTMagPhase& magPhase, float minFrequency,
                                                     float maxFrequency, int nBands) const {
    const std::vector<float> selected =
        getLinearBands(magPhase, float(frequency), minFrequency, maxFrequency);
    if (nBands <= 0) return {};
    return ArrayUtils::downsample(selected, std::max<size_t>(1, selected.size() / size_t(nBands)));
}

std::vector<float> AUAudioFFTFile::getFingerprint(int channel) const {
    std::vector<float> out(size_t(windowSize / 2), 0.0f);
    if (size_t(channel) >= magPhaseList.size()) return out;
    const auto& windows = magPhaseList[size_t(channel)];
    const QString label = "Getting Fingerprint for Channel " + QString::number(channel);
    for (size_t i = 0; i < windows.size(); ++i) {
        report(label, double(i) / double(windows.size()));
        for (size_t k = 0; k < out.size() && k < windows[i].mag.size(); ++k)
            out[k] = std::max(out[k], windows[i].mag[k]);
    }
    return out;
}

std::vector<float> AUAudioFFTFile::getFingerprint(int channel, float percentageSelect) const {
    std::vector<float> out(size_t(windowSize / 2), 0.0f);
    if (size_t(channel) >= magPhaseList.size() || magPhaseList[size_t(channel)].empty()) return out;
    const auto& windows = magPhaseList[size_t(channel)];
    const auto picks = static_cast<size_t>(double(windows.size()) * percentageSelect);
    std::mt19937 random{std::random_device{}()};
    std::uniform_int_distribution<size_t> pick(0, windows.size() - 1);
    for (size_t i = 0; i < picks; ++i) {
        const FFTMagPhase& window = windows[pick(random)];
        for (size_t k = 0; k < out.size() && k < window.mag.size(); ++k)
            out[k] = std::max(out[k], window.mag[k]);
    }
    return out;
}

std::vector<std::vector<float>> AUAudioFFTFile::getFingerprintList(float percentageSelect) const {
    std::vector<std::vector<float>> out;
    for (int c = 0; c < nChannels; ++c)
        out.push_back(percentageSelect == 1.0f ? getFingerprint(c) : getFingerprint(c, percentageSelect));
    return out;
}

std::vector<float> AUAudioFFTFile::getMixedFingerprint(float percentageSelect) const {
    const auto list = getFingerprintList(percentageSelect);
    std::vector<float> out(size_t(windowSize / 2), 0.0f);
    if (list.empty()) return out;
    for (const auto& fingerprint : list)
        for (size_t k = 0; k < out.size(); ++k)
            out[k] += fingerprint[k];
    return ArrayUtils::multiply(out, 1.0f / float(list.size()));
}
