#pragma once
// Hesitation finder: a held vowel is a stretch whose spectrum hardly changes. The file is cut into
// frames of analysisInterval seconds, each frame's 200–4000 Hz spectrum normalised to its peak, and
// every run of neighbouring frames whose spectra differ by no more than `threshold` (standard deviation
// of the difference) for at least `minimumLength` seconds counts as a hesitation. The analysis can also
// compare each frame with the spectra of a UhmDB (algo 0).
//
// The whole file is held in memory. One object is used by one thread at a time; the analysis interval
// belongs to the object, so parallel cleans at different rates do not disturb each other.

#include "dsp/fft/FFTUtils.h"

#include <QString>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

class UhmDB;

struct UhmTimeInterval {
    double start = 0.0;
    double end = 0.0;
    double duration() const { return end - start; }
    bool operator==(const UhmTimeInterval&) const = default;
};

class Uhm {
public:
    Uhm(const QString& path, std::shared_ptr<UhmDB> uhmDB);

    static constexpr int nBands = 512;
    // The interval a new Uhm starts with.
    static constexpr double kDefaultAnalysisInterval = 1.0 / 60.0;

    QString path;
    FFTUtils fft;
    double duration = 0.0;
    std::shared_ptr<UhmDB> uhmDB;
    double minimumLength = 0.5;
    float threshold = 0.04f;
    std::optional<std::vector<std::vector<float>>> bandsList; // one normalised spectrum per frame
    std::optional<std::vector<float>> deltaList;
    double analysisInterval = kDefaultAnalysisInterval;

    std::vector<float> getRangeFingerprint(double startTime, double endTime);
    void addRangeToFingerprintDB(double startTime, double endTime);

    // algo 0: each frame's distance to the database; otherwise the step from each frame to the next.
    void analyze(int algo);
    std::vector<size_t> getSlicesUnderThreshold() const;
    double indexToTime(size_t i) const { return double(i) * analysisInterval; }
    std::vector<UhmTimeInterval> getTimeIntervalsUnderThreshold() const;
    // Touching intervals merged; the last run comes back one interval shorter at each end.
    std::vector<UhmTimeInterval> getMatchingIntervals() const;
    static std::vector<UhmTimeInterval> filterMatchingIntervals(const std::vector<UhmTimeInterval>& intervals,
                                                                double minimumLength);
    std::vector<UhmTimeInterval> getMinimumLengthMatchingIntervals() const;
    // The stretches between the hesitations, covering 0...duration.
    std::vector<UhmTimeInterval> getKeepIntervals(const std::vector<UhmTimeInterval>& uhmIntervals) const;
    // The panels' threshold is a quarter of the working one.
    std::vector<UhmTimeInterval> analyzeAndGetKeepIntervals(double minimumLength, float threshold);
    int64_t timeToSample(double time) const;
    // Writes the file without its hesitations, the cuts cross-faded over crossDissolveMS, normalised,
    // as mono 16-bit WAV at dstPath. False when nothing was written.
    bool performAnalysisAndCuts(const QString& dstPath, double minimumLength, float threshold,
                                int crossDissolveMS);

    static std::vector<UhmTimeInterval> mergeIntervals(const std::vector<UhmTimeInterval>& intervals,
                                                       double analysisInterval);
    static std::vector<UhmTimeInterval> keepIntervals(const std::vector<UhmTimeInterval>& uhmIntervals,
                                                      double duration);
};
