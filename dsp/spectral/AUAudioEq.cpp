#include "dsp/spectral/AUAudioEq.h"

#include "dsp/ProgressProtocol.h"
#include "dsp/fft/AUAudioFFTFile.h"
#include "foundation/Log.h"

#include <algorithm>
#include <cmath>

namespace {

float dbToFactor(float db) {
    return std::pow(10.0f, db * 0.05f);
}

} // namespace

AUAudioEqShape::AUAudioEqShape(std::vector<AUAudioEqBand> bands) : eqBands(std::move(bands)) {
    std::stable_sort(eqBands.begin(), eqBands.end(), [](const AUAudioEqBand& a, const AUAudioEqBand& b) {
        return a.frequency < b.frequency;
    });
}

float AUAudioEqShape::linearBound(float minX, float minY, float maxX, float maxY, float x) {
    if (x <= minX) return minY;
    if (x >= maxX) return maxY;
    return (x - minX) / (maxX - minX) * (maxY - minY) + minY;
}

float AUAudioEqShape::getLinearInterpolatedValue(float frequency) const {
    if (eqBands.empty()) return 1.0f;
    if (frequency <= eqBands.front().frequency) return dbToFactor(eqBands.front().dbGain);
    if (frequency >= eqBands.back().frequency) return dbToFactor(eqBands.back().dbGain);
    const auto upper = std::upper_bound(eqBands.begin(), eqBands.end(), frequency,
                                        [](float f, const AUAudioEqBand& b) { return f < b.frequency; });
    const AUAudioEqBand& lo = *(upper - 1);
    const AUAudioEqBand& hi = *upper;
    return dbToFactor(linearBound(lo.frequency, lo.dbGain, hi.frequency, hi.dbGain, frequency));
}

std::vector<float> AUAudioEqShape::getShape(const std::vector<float>& frequencyList) const {
    std::vector<float> out;
    out.reserve(frequencyList.size());
    for (float f : frequencyList)
        out.push_back(getLinearInterpolatedValue(f));
    return out;
}

AUAudioEq::AUAudioEq(std::shared_ptr<AUAudioFFTFile> audioFFTFile, AUAudioEqShape eqShape)
    : audioFFTFile(std::move(audioFFTFile)), eqShape(std::move(eqShape)) {}

void AUAudioEq::eq() {
    qxLog("eq()");
    const std::vector<float> shape = eqShape.getShape(audioFFTFile->getFrequencies());
    for (int c = 0; c < int(audioFFTFile->magPhaseList.size()); ++c)
        eqChannel(c, shape);
}

void AUAudioEq::eqChannel(int channel, const std::vector<float>& shape) {
    if (channel < 0 || size_t(channel) >= audioFFTFile->magPhaseList.size()) return;
    auto& windows = audioFFTFile->magPhaseList[size_t(channel)];
    const QString label = "Equalization: channel " + QString::number(channel);
    for (size_t i = 0; i < windows.size(); ++i) {
        if (audioFFTFile->progressDelegate)
            audioFFTFile->progressDelegate->progress(label, double(i) / double(windows.size()));
        std::vector<float>& mag = windows[i].mag;
        for (size_t k = 0; k < mag.size() && k < shape.size(); ++k)
            mag[k] *= shape[k];
    }
}

std::vector<float> AUAudioEq::matchCurve(const std::vector<float>& fingerPrint, float minFreq0,
                                         float minFreq1, float maxFreq0, float maxFreq1, float max) const {
    const std::vector<float> own = audioFFTFile->getMixedFingerprint(1.0f);
    const std::vector<float> frequencies = audioFFTFile->getFrequencies();
    std::vector<float> curve(frequencies.size(), 1.0f);
    for (size_t k = 0; k < curve.size(); ++k) {
        const bool defined =
            k < own.size() && k < fingerPrint.size() && own[k] > 0.0f && fingerPrint[k] > 0.0f;
        const float r = defined ? fingerPrint[k] / own[k] : 1.0f;
        const float f = frequencies[k];
        if (f < minFreq0 || f > maxFreq1) continue;
        if (f < minFreq1) {
            const float w = (f - minFreq0) / (minFreq1 - minFreq0) * max;
            curve[k] = (1.0f - w) + w * r;
        } else if (f < maxFreq0) {
            curve[k] = (1.0f - max) + max * r;
        } else {
            const float w =
                maxFreq1 > maxFreq0 ? (f - maxFreq0) / (maxFreq1 - maxFreq0) * (1.0f - max) : 0.0f;
            curve[k] = w + (1.0f - w) * r;
        }
    }
    return curve;
}

void AUAudioEq::applyCurve(const std::vector<float>& curve, const char* label) {
    for (auto& windows : audioFFTFile->magPhaseList)
        for (size_t i = 0; i < windows.size(); ++i) {
            if (audioFFTFile->progressDelegate)
                audioFFTFile->progressDelegate->progress(label, double(i) / double(windows.size()));
            std::vector<float>& mag = windows[i].mag;
            for (size_t k = 0; k < mag.size() && k < curve.size(); ++k)
                mag[k] *= curve[k];
        }
}

void AUAudioEq::matchFingerprint(const std::vector<float>& fingerPrint, float minFreq0, float minFreq1,
                                 float maxFreq0, float maxFreq1, float max) {
    applyCurve(matchCurve(fingerPrint, minFreq0, minFreq1, maxFreq0, maxFreq1, max), "Eq. Matching ");
}

void AUAudioEq::matchFingerprint(const AUAudioFFTFile& fingerPrintFile, float minFreq0, float minFreq1,
                                 float maxFreq0, float maxFreq1, float max) {
    AUAudioEq matcher(audioFFTFile, eqShape);
    matcher.matchFingerprint(fingerPrintFile.getMixedFingerprint(1.0f), minFreq0, minFreq1, maxFreq0,
                             maxFreq1, max);
}
