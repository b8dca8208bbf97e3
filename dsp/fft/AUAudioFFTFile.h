#pragma once
// A whole file (one or two channels) cut into windows of windowSize samples and transformed, for the
// spectral processors that change magnitudes and write the result back. No analysis window is used:
// without overlap a window-by-window inverse gives the file back to rounding; with overlap the windows
// start every half window and the inverse joins them by a linear cross-fade of the shared halves.
// One thread at a time; the progress delegate is told on that thread.

#include "dsp/StereoFloat.h"
#include "dsp/fft/FFTMagPhase.h"

#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

class ProgressProtocol;

class AUAudioFFTFile {
public:
    // windowSize must be a power of two; nothing is read until readSamples().
    AUAudioFFTFile(const QString& srcPath, int windowSize, bool overlap = false);

    int windowSize;
    QString srcPath;
    int frequency = 0;
    int nChannels = 0;
    StereoFloat stereoFloat;
    int64_t srcSamplesCount = 0;
    std::vector<std::vector<FFTMagPhase>> magPhaseList; // per channel, per window
    std::vector<float> emptySamples;
    bool overlap;
    ProgressProtocol* progressDelegate = nullptr;

    int64_t timeToSampleN(double time) const;
    double sampleNToTime(int64_t sampleN) const;
    std::shared_ptr<AUAudioFFTFile> duplicate() const;
    // The samples between the two times (padded like a read), not yet transformed.
    std::shared_ptr<AUAudioFFTFile> duplicateRegion(double inTime, double outTime) const;

    // False when the file cannot be read.
    bool readSamples();
    void performFFT();
    // False when nothing was written.
    bool performFFTInverse(bool retainOriginalLenght, const QString& saveToPath);

    static std::vector<float> getFrequencies(int frequency, int windowSize);
    std::vector<float> getFrequencies() const;
    // The centre frequency of the loudest bin of one window; silenceFrequency for a silent window.
    float getDominantFrequency(size_t magPhaseIndex, int channel, float silenceFrequency) const;
    float getSecondDominantFrequency(size_t magPhaseIndex, int channel, float silenceFrequency) const;
    // The magnitudes between the two frequencies, averaged down to about nBands values.
    std::vector<float> getLinearBandsMag(const FFTMagPhase& magPhase, float minFrequency, float maxFrequency,
                                         int nBands) const;
    std::vector<float> getLinearBands(const FFTMagPhase& magPhase, float frequency, float minFrequency,
                                      float maxFrequency) const;

    // Noise fingerprints: the peak magnitude of each bin over the windows of a channel (all of them, or
    // count × percentageSelect drawn at random with replacement).
    std::vector<float> getFingerprint(int channel) const;
    std::vector<float> getFingerprint(int channel, float percentageSelect) const;
    std::vector<std::vector<float>> getFingerprintList(float percentageSelect) const;
    // The channels' fingerprints averaged.
    std::vector<float> getMixedFingerprint(float percentageSelect) const;

    // Channel `channel` of the samples (0 left, 1 right).
    const std::vector<float>& channelSamples(int channel) const;

private:
    void pad();
    void report(const QString& label, double fraction) const;
    float binFrequency(int bin) const;
};
