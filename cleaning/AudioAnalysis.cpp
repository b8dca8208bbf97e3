#include "cleaning/AudioAnalysis.h"

#include "dsp/Levels.h"
#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "recording/WorkingFormat.h"
#include "render/tools/SoxConvert.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int kBins = 100;
const SpeechLevels::Wanted kWanted{{50, 500}, false};

QString withoutExtension(const QString& path) {
    const QFileInfo info(path);
    return info.completeSuffix().isEmpty() ? path : info.path() + "/" + info.completeBaseName();
}

// The cache files are memory images of their arrays.
template <class T> std::vector<T> loadArray(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray bytes = file.readAll();
    std::vector<T> values(static_cast<size_t>(bytes.size()) / sizeof(T));
    std::memcpy(values.data(), bytes.constData(), values.size() * sizeof(T));
    return values;
}

} // namespace

std::shared_ptr<AudioAnalysis> AudioAnalysis::make(const QString& filePath, int rangeStart, int rangeEnd,
                                                   std::function<void()> callback) {
    std::shared_ptr<AudioAnalysis> analysis(new AudioAnalysis(filePath, rangeStart, rangeEnd, callback));
    if (!callback) {
        analysis->performAnalysis();
    } else {
        Queue::execute([analysis] {
            analysis->performAnalysis();
            analysis->callback();
        });
    }
    return analysis;
}

AudioAnalysis::AudioAnalysis(const QString& filePath, int rangeStart, int rangeEnd,
                             std::function<void()> callback)
    : filePath(filePath), rangeStart(rangeStart), rangeEnd(rangeEnd), callback(std::move(callback)) {}

QString AudioAnalysis::subsCachePath(const QString& filePath) {
    return withoutExtension(filePath) + "_subs.dat";
}

QString AudioAnalysis::analysisCachePath(const QString& filePath) {
    return withoutExtension(filePath) + "_analisys.dat";
}

void AudioAnalysis::readLevels() {
    if (fu_fileExists(subsCachePath(filePath))) {
        levels = SpeechLevels::fromSamples(loadArray<int16_t>(subsCachePath(filePath)), kWanted);
        return;
    }
    levels = SpeechLevels::fromFile(filePath, kWanted);
    // A working copy is already mono 16-bit; anything else is read through such a copy.
    if (!levels.readable || (levels.channels == 1 && levels.bitsPerSample == 16)) return;
    const QString converted = withoutExtension(filePath) + "_ingest.wav";
    soxUt_convertToMono16(filePath, converted, false);
    levels = SpeechLevels::fromFile(converted, kWanted);
    fu_deleteFile(converted);
}

void AudioAnalysis::performAnalysis() {
    readLevels();
    if (fu_fileExists(analysisCachePath(filePath))) {
        subThresholds = loadArray<int64_t>(analysisCachePath(filePath));
        if (!subThresholds.empty()) return;
    }
    subThresholds = getSubThresholdsWAvg(levels.means(50));
}

int AudioAnalysis::binOf(double db, int rangeStart, int rangeEnd) {
    const int v = static_cast<int>(std::max(db, double(rangeStart))) - 1;
    return std::max(std::min(v, rangeEnd), rangeStart);
}

std::vector<int64_t> AudioAnalysis::getSubThresholdsWAvg(const std::vector<float>& means50) const {
    std::vector<int64_t> bins(kBins, 0);
    if (!levels.readable) return {};
    for (float x : means50)
        ++bins[static_cast<size_t>(-binOf(aUt_percToDb(x / 32767.0), rangeStart, rangeEnd))];
    return bins;
}

double AudioAnalysis::maxValue() const {
    return subThresholds.empty() ? 0.0
                                 : double(*std::max_element(subThresholds.begin(), subThresholds.end()));
}

std::vector<double> AudioAnalysis::subThresholdDouble() const {
    return std::vector<double>(subThresholds.rbegin(), subThresholds.rend());
}

double AudioAnalysis::getAverage(const std::vector<int64_t>& bins) {
    double weighted = 0.0, total = 0.0;
    for (size_t i = 1; i + 1 < bins.size(); ++i) {
        weighted += double(bins[i]) * -double(i);
        total += double(bins[i]);
    }
    return weighted / total;
}

double AudioAnalysis::getMedian(const std::vector<int64_t>& bins) {
    const auto first = std::find_if(bins.begin(), bins.end(), [](int64_t v) { return v != 0; });
    const auto last = std::find_if(bins.rbegin(), bins.rend(), [](int64_t v) { return v != 0; });
    if (first == bins.end()) return 0.0;
    const auto lastIndex = double(bins.rend() - last - 1);
    return weightedValue(double(first - bins.begin()), 1.0, lastIndex, 1.0);
}

double AudioAnalysis::getAverage() const {
    return getAverage(subThresholds);
}

double AudioAnalysis::getMedian() const {
    return getMedian(subThresholds);
}

double AudioAnalysis::getThresholdOldAlgo() const {
    const double a = getAverage();
    const std::vector<float>& means500 = levels.means(500);
    const auto n = static_cast<size_t>(levels.sampleCount / 500);
    double sum = 0.0;
    int count = 0;
    // Every 500th block mean: the step applies to an array already reduced by 500.
    for (size_t i = 0; i < n && i < means500.size(); i += 500) {
        const double db = aUt_percToDb(std::fabs(std::trunc(means500[i])) / 32767.0);
        if (db >= a) {
            sum += db;
            ++count;
        }
    }
    const double m = sum / count;
    // Written so that a NaN (no loud block, or no average) lands on the floor.
    const double raised = 1.5 * m >= -60.0 ? 1.5 * m : -60.0;
    return std::min(raised, -25.0);
}

void AudioAnalysis::removeCaches() const {
    fu_deleteFile(subsCachePath(filePath));
    fu_deleteFile(analysisCachePath(filePath));
}
