#include "render/tools/SoxCluster.h"

#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prog.h"
#include "render/tools/GateRebuild.h"
#include "render/tools/SoxConvert.h"
#include "render/tools/SoxEdit.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFilePaths.h"
#include "render/tools/ToolPaths.h"

#include <QFileInfo>
#include <algorithm>

namespace {

bool needsDecoding(const QString& path) {
    const QString extension = toolFilePaths::extensionLower(path);
    return extension == "mp3" || extension == "m4a" || extension == "aif" || extension == "aiff";
}

void copyOver(const QString& from, const QString& to) {
    fu_deleteFile(to);
    fu_copyFile(from, to);
}

// The alert for a missing source, and the WAV the tool can read for a compressed one.
QString clusterSource(const QString& srcFilePath) {
    if (!fu_fileExists(srcFilePath)) {
        const QString text = "Could not create cluster, file " + srcFilePath + " not found.";
        XMain::execute([text] { Warning("SHX ERROR", text); }, true);
    }
    if (!needsDecoding(srcFilePath)) return srcFilePath;
    const QString source = toolFilePaths::withoutExtension(srcFilePath) + ".wav";
    soxUt_convertMp3ToWav(srcFilePath, source, false, 2, 16);
    return source;
}

} // namespace

void soxUt_createCluster(const QString& srcFilePath, double silenceDuration, double startSec, double endSec,
                         double fadeInSecs, double fadeOutSecs, const QString& dstFilePath, bool normalize,
                         double gain, std::optional<int> frequency, std::optional<int> nChannels,
                         std::optional<int> bitsPerSample) {
    qxLog("soxUt_createCluster: " + srcFilePath + " -> " + dstFilePath);
    fu_deleteFile(dstFilePath);
    const QString source = clusterSource(srcFilePath);
    const QString tmp = toolFilePaths::withoutExtension(dstFilePath) + "-tmp.wav";
    soxUt_runSox(soxArgs::clusterShape(source, tmp, startSec, endSec, fadeInSecs, fadeOutSecs, normalize,
                                       gain, frequency, nChannels, bitsPerSample));
    soxUt_runSox(soxArgs::clusterPad(tmp, dstFilePath, silenceDuration));
    fu_deleteFile(tmp);
}

void soxUt_createLoopCluster(const QString& srcFilePath, double silenceDuration, double startSec,
                             double length, int repeats, double fadeOutSecs, const QString& dstFilePath,
                             double gain, std::optional<int> frequency, std::optional<int> nChannels,
                             std::optional<int> bitsPerSample) {
    qxLog("soxUt_createLoopCluster: " + srcFilePath + " x" + QString::number(repeats) + " -> " + dstFilePath);
    fu_deleteFile(dstFilePath);
    soxUt_runSox(soxArgs::loopCluster(clusterSource(srcFilePath), repeats, startSec, length, silenceDuration,
                                      gain, fadeOutSecs, dstFilePath, frequency, nChannels, bitsPerSample));
}

void soxUt_clusterGate(const QString& srcFilePath, const QString& dstFilePath, double fadeInTime,
                       double fadeOutTime, bool removePauses, double pauseMaxLength,
                       const std::vector<cluster>& clusters, bool normalizeEachCluster,
                       const std::shared_ptr<Prog>& prog) {
    fu_deleteFile(dstFilePath);
    if (clusters.empty()) {
        copyOver(srcFilePath, dstFilePath);
        return;
    }
    const int count = static_cast<int>(clusters.size());
    std::vector<GateSpan> spans;
    double gap = clusters.front().inPoint;
    for (int i = 0; i < count; ++i) {
        const cluster& c = clusters[static_cast<size_t>(i)];
        // A fade may not reach before the start of the file.
        const double fadeIn = fadeInTime < c.inPoint ? fadeInTime : 0.0;
        if (removePauses) gap = std::min(gap, pauseMaxLength);
        spans.push_back({c, gap, fadeIn, fadeOutTime});
        gap = i + 1 < count ? clusters[static_cast<size_t>(i + 1)].inPoint - c.endPoint : 1.0;
    }
    if (prog) prog->newSubPhase("Creating Clusters...", SubPhaseType::counter, count);
    gateRebuild(clusterSource(srcFilePath), dstFilePath, spans, normalizeEachCluster, [&prog](int done) {
        if (prog) prog->subPhaseSetCounter(done);
    });
}
