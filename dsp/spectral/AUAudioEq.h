#pragma once
// A spectral equaliser: a gain curve drawn through points (frequency, dB) applied to every window of a
// transformed AUAudioFFTFile, and a matcher that bends one file's spectrum towards another's
// fingerprint inside a band. Changes magnitudes in place; the caller runs performFFTInverse.

#include <memory>
#include <vector>

class AUAudioFFTFile;

struct AUAudioEqBand {
    float frequency = 0.0f;
    float dbGain = 0.0f;
};

class AUAudioEqShape {
public:
    explicit AUAudioEqShape(std::vector<AUAudioEqBand> bands); // sorted here by frequency
    std::vector<AUAudioEqBand> eqBands;

    // minY at or below minX, maxY at or above maxX, the straight line between.
    static float linearBound(float minX, float minY, float maxX, float maxY, float x);
    // The linear factor at `frequency`: dB interpolated between the neighbouring points, flat beyond
    // the first and last. 1.0 without points.
    float getLinearInterpolatedValue(float frequency) const;
    std::vector<float> getShape(const std::vector<float>& frequencyList) const;
};

class AUAudioEq {
public:
    AUAudioEq(std::shared_ptr<AUAudioFFTFile> audioFFTFile, AUAudioEqShape eqShape);
    std::shared_ptr<AUAudioFFTFile> audioFFTFile;
    AUAudioEqShape eqShape;

    void eq();
    void eqChannel(int channel, const std::vector<float>& shape);

    // The per-bin factor that moves this file's own mixed fingerprint towards `fingerPrint`: 1 outside
    // [minFreq0, maxFreq1], ramping in over [minFreq0, minFreq1] and out over [maxFreq0, maxFreq1], with
    // `max` the weight of the match in between. A bin where either fingerprint is zero keeps 1.
    std::vector<float> matchCurve(const std::vector<float>& fingerPrint, float minFreq0, float minFreq1,
                                  float maxFreq0, float maxFreq1, float max) const;
    void matchFingerprint(const std::vector<float>& fingerPrint, float minFreq0, float minFreq1,
                          float maxFreq0, float maxFreq1, float max);
    // The wanted fingerprint is the other file's mixed one (it must be transformed already).
    void matchFingerprint(const AUAudioFFTFile& fingerPrintFile, float minFreq0, float minFreq1,
                          float maxFreq0, float maxFreq1, float max);

private:
    void applyCurve(const std::vector<float>& curve, const char* label);
};
