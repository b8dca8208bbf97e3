#include "render/tools/SoxCluster.h"

#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Hallard.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prog.h"
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

// Removes the cluster files and their folder however the gate ends.
class ClusterFolder {
public:
    explicit ClusterFolder(const QString& dstFilePath)
        : path_(QFileInfo(dstFilePath).absolutePath() + "/cluster_temp_" + hallard_getNewId().left(8)) {
        fu_createFolder(path_);
    }
    ~ClusterFolder() { fu_deleteFolder(path_); }
    ClusterFolder(const ClusterFolder&) = delete;
    ClusterFolder& operator=(const ClusterFolder&) = delete;

    const QString& path() const { return path_; }

private:
    QString path_;
};

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
    const ClusterFolder folder(dstFilePath);
    const QString name = QFileInfo(toolFilePaths::withoutExtension(dstFilePath)).fileName();
    const int count = static_cast<int>(clusters.size());

    if (prog) prog->newSubPhase("Creating Clusters...", SubPhaseType::counter, count);
    QStringList files;
    double gap = clusters.front().inPoint;
    for (int i = 0; i < count; ++i) {
        const cluster& c = clusters[static_cast<size_t>(i)];
        const QString file = folder.path() + "/" + name + "_cl" + QString::number(i + 1) + ".wav";
        // A fade may not reach before the start of the file.
        const double fadeIn = fadeInTime < c.inPoint ? fadeInTime : 0.0;
        if (removePauses) gap = std::min(gap, pauseMaxLength);
        soxUt_createCluster(srcFilePath, gap, c.inPoint, c.endPoint, fadeIn, fadeOutTime, file,
                            normalizeEachCluster, 0.0);
        files << file;
        gap = i + 1 < count ? clusters[static_cast<size_t>(i + 1)].inPoint - c.endPoint : 1.0;
        if (prog) prog->subPhaseSetCounter(i + 1);
    }

    if (prog)
        prog->newSubPhase("Merging Clusters...", SubPhaseType::fileSize, fu_getFileSize(srcFilePath),
                          dstFilePath);
    soxUt_concatenate(files, dstFilePath);

    if (prog) prog->newSubPhase("Cleaning up...", SubPhaseType::counter, count);
    for (int i = 0; i < count; ++i) {
        fu_deleteFile(files[i]);
        if (prog) prog->subPhaseSetCounter(i + 1);
    }
}
