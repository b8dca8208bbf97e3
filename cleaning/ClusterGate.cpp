#include "cleaning/ClusterGate.h"

#include "cleaning/ClusterAnalysis.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "foundation/Prog.h"
#include "foundation/Timecode.h"
#include "recording/WorkingFormat.h"
#include "render/tools/SoxCluster.h"
#include "render/tools/SoxConvert.h"
#include "render/tools/SoxFilters.h"

#include <QFileInfo>

namespace {

void subPhase(const std::shared_ptr<Prog>& prog, const QString& label,
              SubPhaseType type = SubPhaseType::percentage, int64_t expected = 0,
              const QString& target = {}) {
    if (prog) prog->newSubPhase(label, type, expected, target);
}

void logCount(const QString& label, const std::vector<cluster>& list, double fileDuration) {
    qxLog(label + QString::number(list.size()) + " (" +
          QString::number(fileDuration > 0 ? double(list.size()) * 60.0 / fileDuration : 0.0) +
          " per minute)");
}

void logCoverage(const std::vector<cluster>& list, double fileDuration) {
    double sum = 0.0;
    for (const cluster& c : list)
        sum += c.duration();
    qxLog("Average duration: " + tc_getReadableDuration(sum / (list.empty() ? 1.0 : double(list.size()))));
    qxLog("Coverage: " + QString::number(fileDuration > 0 ? 100.0 * sum / fileDuration : 0.0) + "%");
}

QString withoutExtension(const QString& path) {
    const QFileInfo info(path);
    return info.path() + "/" + info.completeBaseName();
}

} // namespace

std::vector<cluster> getClusterListByWavePath(const QString& path, double threshold, double decay,
                                              double minDuration, double fadeInDuration,
                                              double fadeOutDuration, bool noisyEnironment,
                                              double environmentNoiseLevel, double hysteresis, double preRoll,
                                              bool isForSync, const std::shared_ptr<Prog>& prog) {
    qxLog("getClusterListByWavePath " + path);
    QString work = path;
    const QString extension = QFileInfo(path).suffix();
    const SpeechLevels original = SpeechLevels::fromFile(path, {});
    if (QStringList{"mp3", "m4a", "aif", "aiff"}.contains(extension)) {
        work = path + "_16.wav";
        soxUt_convertMp3ToWavMono16(path, work, std::nullopt, true);
    } else if (original.bitsPerSample == 24 || original.bitsPerSample == 32) {
        work = path + "_16.wav";
        soxUt_convertToMono16(path, work, false);
    }
    if (noisyEnironment) {
        subPhase(prog, "Pre-Eq for Noisy Environment", SubPhaseType::fileSize, fu_getFileSize(work), "");
        const QString bandPassed = withoutExtension(path) + "_bandpass.wav";
        soxUt_bandPass(work, bandPassed, 1000, 3000, isForSync);
        if (work != path) fu_deleteFile(work);
        work = bandPassed;
    }
    subPhase(prog, "Generating Cluster List");
    subPhase(prog, "Reading Audio File");
    const SpeechLevels levels = SpeechLevels::fromFile(work, clusterLevelsWanted());
    if (work != path) fu_deleteFile(work);
    const auto decayInSamples = static_cast<int32_t>(decay * levels.sampleRate);
    const double audioLength = levels.duration();

    const std::vector<double> array =
        getClusterArray(levels, threshold, isForSync, decayInSamples, levels.sampleRate, noisyEnironment,
                        environmentNoiseLevel, hysteresis, prog);
    subPhase(prog, "Spikes Filter");
    const std::vector<double> filtered = filterSpikes(array, minDuration);
    subPhase(prog, "Generating Cluster List");
    std::vector<cluster> list = getClusterList(filtered, audioLength).value_or(std::vector<cluster>{});

    const double fileDuration = original.duration();
    logCount("Pre-filter Cluster count: ", list, fileDuration);
    list = filterClusterListByDuration(list, minDuration);
    logCount("Pre-filter Cluster count: ", list, fileDuration);
    logCoverage(list, fileDuration);
    subPhase(prog, "Expanding Clusters");
    list = expandClusterList(list, decay, fadeInDuration, fadeOutDuration, preRoll);
    logCount("Cluster count: ", list, fileDuration);
    logCoverage(list, fileDuration);
    return list;
}

void performClusterGate(const QString& srcFilePath, const QString& dstFilePath, double threshold,
                        double decay, double minDuration, double fadeInDuration, double fadeOutDuration,
                        bool removePauses, double pauseMaxLength, bool noisyEnironment,
                        double environmentNoiseLevel, double hysteresis, bool normalizeEachCluster,
                        double preRoll, const std::shared_ptr<Prog>& prog) {
    const std::vector<cluster> clusters =
        getClusterListByWavePath(srcFilePath, threshold, decay, minDuration, fadeInDuration, fadeOutDuration,
                                 noisyEnironment, environmentNoiseLevel, hysteresis, preRoll, false, prog);
    soxUt_clusterGate(srcFilePath, dstFilePath, fadeInDuration, fadeOutDuration, removePauses, pauseMaxLength,
                      clusters, normalizeEachCluster, prog);
}
