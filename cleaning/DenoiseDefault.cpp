#include "cleaning/DenoiseDefault.h"

#include "cleaning/AudioAnalysis.h"
#include "cleaning/ClusterAnalysis.h"
#include "cleaning/ClusterGate.h"
#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "foundation/Prog.h"
#include "render/tools/SoxEdit.h"
#include "render/tools/SoxFilters.h"

#include <QFileInfo>

void soxUt_denoiseDefault(const QString& srcPath, const QString& dstFilePath, double amount,
                          const std::shared_ptr<Prog>& prog) {
    qxLog("soxUt_denoiseDefault " + srcPath + " to " + dstFilePath);
    const QFileInfo info(srcPath);
    const QString stem = info.path() + "/" + info.completeBaseName();
    const QString trimmed = stem + "_lptrim.wav";
    const QString profile = stem + ".noiseprofile";

    const double t = AudioAnalysis::make(srcPath, -90, -3)->getAverage();
    const std::vector<cluster> list =
        getClusterListByWavePath(srcPath, t, 1.0, 1.0, 0.0, 0.0, false, 1.0, 1.0, 0.0, false, prog);
    const auto [start, end] = getLongestPause(list);

    if (prog) prog->newSubPhase("Finding Longest Pause", SubPhaseType::percentage);
    soxUt_trim(srcPath, start, end, trimmed);
    if (prog) prog->newSubPhase("Getting Noise Profile", SubPhaseType::percentage);
    soxUt_getNoiseProfile(trimmed, profile);
    if (prog)
        prog->newSubPhase("Generating denoised file", SubPhaseType::fileSize, fu_getFileSize(srcPath),
                          dstFilePath);
    soxUt_denoise(srcPath, profile, dstFilePath, amount);
    fu_deleteFile(profile);
    fu_deleteFile(trimmed);
}

void soxUt_denoiseDefaultAsync(const QString& srcPath, const QString& dstFilePath, double amount,
                               std::function<void()> callBack) {
    Queue::execute([srcPath, dstFilePath, amount, callBack] {
        soxUt_denoiseDefault(srcPath, dstFilePath, amount, nullptr);
        if (callBack) callBack();
    });
}
