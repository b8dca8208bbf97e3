#include "cleaning/Uhm.h"

#include "cleaning/UhmDB.h"
#include "dsp/AUAudio.h"
#include "dsp/ArrayUtils.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "render/tools/SoxConvert.h"

#include <algorithm>
#include <cmath>
#include <limits>

Uhm::Uhm(const QString& path, std::shared_ptr<UhmDB> uhmDB) : path(path), fft(path), uhmDB(std::move(uhmDB)) {
    duration = fft.frequency > 0 ? double(fft.samples.size()) / fft.frequency : 0.0;
}

std::vector<float> Uhm::getRangeFingerprint(double startTime, double endTime) {
    fft.nBands = nBands;
    return fft.getBandsInInterval(startTime, endTime);
}

void Uhm::addRangeToFingerprintDB(double startTime, double endTime) {
    if (!uhmDB) return;
    uhmDB->addFingerprint(UhmDB::normalizeFingerprint(getRangeFingerprint(startTime, endTime)));
}

void Uhm::analyze(int algo) {
    fft.nBands = nBands;
    std::vector<std::vector<float>> frames;
    // Frames at i × interval rather than a running sum, so that rounding does not drift the grid.
    for (size_t i = 0; indexToTime(i) + analysisInterval <= duration; ++i) {
        const double t = indexToTime(i);
        frames.push_back(
            UhmDB::normalizeFingerprint(fft.getBandsInInterval(t, std::min(t + analysisInterval, duration))));
    }
    std::vector<float> deltas;
    if (algo == 0) {
        for (const auto& frame : frames)
            deltas.push_back(uhmDB ? uhmDB->getDifferenceFromList(frame)
                                   : std::numeric_limits<float>::infinity());
    } else {
        for (size_t i = 1; i < frames.size(); ++i)
            deltas.push_back(UhmDB::getFingerprintDifference(frames[i - 1], frames[i]));
    }
    bandsList = std::move(frames);
    deltaList = std::move(deltas);
}

std::vector<size_t> Uhm::getSlicesUnderThreshold() const {
    std::vector<size_t> out;
    if (!deltaList) return out;
    for (size_t i = 0; i < deltaList->size(); ++i)
        if ((*deltaList)[i] <= threshold) out.push_back(i);
    return out;
}

std::vector<UhmTimeInterval> Uhm::getTimeIntervalsUnderThreshold() const {
    std::vector<UhmTimeInterval> out;
    for (size_t i : getSlicesUnderThreshold())
        out.push_back({indexToTime(i), indexToTime(i + 1)});
    return out;
}

std::vector<UhmTimeInterval> Uhm::mergeIntervals(const std::vector<UhmTimeInterval>& intervals,
                                                 double analysisInterval) {
    if (intervals.size() <= 1) return intervals;
    std::vector<UhmTimeInterval> out;
    UhmTimeInterval running = intervals.front();
    for (size_t i = 1; i < intervals.size(); ++i) {
        if (intervals[i].start != running.end) {
            out.push_back(running);
            running = intervals[i];
        } else {
            running.end = intervals[i].end;
        }
    }
    out.push_back({running.start + analysisInterval, running.end - analysisInterval});
    return out;
}

std::vector<UhmTimeInterval> Uhm::getMatchingIntervals() const {
    return mergeIntervals(getTimeIntervalsUnderThreshold(), analysisInterval);
}

std::vector<UhmTimeInterval> Uhm::filterMatchingIntervals(const std::vector<UhmTimeInterval>& intervals,
                                                          double minimumLength) {
    std::vector<UhmTimeInterval> out;
    std::copy_if(intervals.begin(), intervals.end(), std::back_inserter(out),
                 [minimumLength](const UhmTimeInterval& i) { return i.duration() >= minimumLength; });
    return out;
}

std::vector<UhmTimeInterval> Uhm::getMinimumLengthMatchingIntervals() const {
    return filterMatchingIntervals(getMatchingIntervals(), minimumLength);
}

std::vector<UhmTimeInterval> Uhm::keepIntervals(const std::vector<UhmTimeInterval>& uhms, double duration) {
    if (uhms.empty()) return {{0.0, duration}};
    std::vector<UhmTimeInterval> out;
    if (uhms.front().start > 0.0) out.push_back({0.0, uhms.front().start});
    for (size_t i = 1; i < uhms.size(); ++i)
        out.push_back({uhms[i - 1].end, uhms[i].start});
    if (duration > uhms.back().end) out.push_back({uhms.back().end, duration});
    return out;
}

std::vector<UhmTimeInterval> Uhm::getKeepIntervals(const std::vector<UhmTimeInterval>& uhmIntervals) const {
    return keepIntervals(uhmIntervals, duration);
}

std::vector<UhmTimeInterval> Uhm::analyzeAndGetKeepIntervals(double minimumLength, float threshold) {
    this->minimumLength = minimumLength;
    this->threshold = threshold * 4.0f;
    analyze(1);
    return getKeepIntervals(getMinimumLengthMatchingIntervals());
}

int64_t Uhm::timeToSample(double time) const {
    return static_cast<int64_t>(time * fft.frequency);
}

bool Uhm::performAnalysisAndCuts(const QString& dstPath, double minimumLength, float threshold,
                                 int crossDissolveMS) {
    qxLog("Uhm.performAnalysisAndCuts " + path + " to " + dstPath);
    const auto d = static_cast<size_t>(std::max<int64_t>(0, timeToSample(crossDissolveMS / 1000.0)));
    const std::vector<UhmTimeInterval> keep = analyzeAndGetKeepIntervals(minimumLength, threshold);
    const std::vector<float>& samples = fft.samples;
    std::vector<std::pair<int64_t, int64_t>> ranges;
    for (const UhmTimeInterval& k : keep)
        ranges.emplace_back(timeToSample(k.start), timeToSample(k.end) - 1);
    std::vector<float> out = ArrayUtils::innerCuts(samples, ranges, d);
    if (out.empty()) {
        qxLog("error: Uhm.performAnalysisAndCuts: nothing to keep of " + path);
        return false;
    }
    float peak = 0.0f;
    for (float v : out)
        peak = std::max(peak, std::fabs(v));
    if (peak > 0.0f) out = ArrayUtils::multiply(out, 1.0f / peak);
    const QString temp = dstPath + "_temp.wav";
    AUAudio::saveArrayIntoAudioFile(out, fft.frequency, 32, temp);
    soxUt_convertMp3ToWavMono16(temp, dstPath, std::nullopt, false);
    fu_deleteFile(temp);
    return fu_fileExists(dstPath);
}
