#pragma once
// A level histogram of a sound file: 100 bins, index = −dB, each counting the 50-sample block means
// that fall there. The cleaning chain reads its thresholds from it. With no callback the analysis runs
// on the constructing thread; with one it runs on the pool and the callback follows there.
//
// `<name>_subs.dat` (16-bit samples) and `<name>_analisys.dat` (the bins) beside the file are reused
// when present. Unreadable input gives empty bins, and getAverage is then not a number.

#include "dsp/SpeechLevels.h"

#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class AudioAnalysis : public std::enable_shared_from_this<AudioAnalysis> {
public:
    static std::shared_ptr<AudioAnalysis> make(const QString& filePath, int rangeStart, int rangeEnd,
                                               std::function<void()> callback = {});

    QString filePath;
    SpeechLevels levels; // 50- and 500-sample block means of the samples
    std::vector<int64_t> subThresholds;
    int rangeStart = -90;
    int rangeEnd = -3;
    std::function<void()> callback;

    void performAnalysis();
    double maxValue() const;
    // The bins in reversed order, entry 0 being the quietest.
    std::vector<double> subThresholdDouble() const;
    double getAverage() const;
    double getMedian() const;
    // The automatic threshold of a gate in a noisy room: 1.5 × the mean level of the loud blocks, held
    // within −60...−25 dB.
    double getThresholdOldAlgo() const;
    // Deletes the reusable caches beside the file.
    void removeCaches() const;

    std::vector<int64_t> getSubThresholdsWAvg(const std::vector<float>& means50) const;
    static double getAverage(const std::vector<int64_t>& bins);
    static double getMedian(const std::vector<int64_t>& bins);
    static double weightedValue(double a, double wa, double b, double wb) {
        return (a * wa + b * wb) / (wa + wb);
    }
    // The bin of a level: dB truncated, minus one, held within the range.
    static int binOf(double db, int rangeStart, int rangeEnd);

    static QString subsCachePath(const QString& filePath);
    static QString analysisCachePath(const QString& filePath);

private:
    AudioAnalysis(const QString& filePath, int rangeStart, int rangeEnd, std::function<void()> callback);
    void readLevels();
};
