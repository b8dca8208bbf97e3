#include "render/tools/SoxEdit.h"

#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "foundation/StrUt.h"
#include "render/tools/SoxConvert.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFilePaths.h"
#include "render/tools/ToolPaths.h"

void soxUt_trim(const QString& srcFilePath, double inPoint, double outPoint, const QString& dstFilePath) {
    fu_deleteFile(dstFilePath);
    soxUt_runSox(soxArgs::trim(srcFilePath, inPoint, outPoint, dstFilePath));
}

void soxUt_generateSilence(const QString& dstPath, std::optional<int> frequency, std::optional<int> channels,
                           std::optional<double> duration) {
    fu_deleteFile(dstPath);
    soxUt_runSox(soxArgs::generateSilence(dstPath, frequency, channels, duration));
}

void soxUt_pad(const QString& srcFilePath, const QString& dstFilePath, double seconds) {
    qxLog("soxUt_pad: " + srcFilePath + " " + strUt_doublePrint(seconds));
    fu_deleteFile(dstFilePath);
    const QString extension = toolFilePaths::extensionLower(srcFilePath);
    const bool compressed = extension == "mp3" || extension == "m4a" || extension == "aac";
    const QString source = compressed ? srcFilePath + ".wav" : srcFilePath;
    if (compressed) soxUt_convertMp3ToWavMono16(srcFilePath, source, std::nullopt, false);
    soxUt_runSox(soxArgs::pad(source, dstFilePath, seconds));
    if (compressed) fu_deleteFile(source);
}

void soxUt_concatenate(const QStringList& srcPathList, const QString& dstPath, std::optional<int> frequency,
                       std::optional<int> nChannels, std::optional<int> bitsPerSample, double fadeInSecs,
                       double fadeOutSecs) {
    fu_deleteFile(dstPath);
    QStringList present;
    for (const QString& path : srcPathList)
        if (fu_fileExists(path)) present << path;
    // With no input SoX would take the destination for one.
    if (present.isEmpty()) return;
    soxUt_runSox(
        soxArgs::concatenate(present, dstPath, frequency, nChannels, bitsPerSample, fadeInSecs, fadeOutSecs));
}

void soxUt_mixdown(const QStringList& srcPathList, const QString& dstPath, bool removePauses, double length,
                   double threshold, std::optional<int> nChannels, std::optional<int> frequency) {
    fu_deleteFile(dstPath);
    soxUt_runSox(
        soxArgs::mixdown(srcPathList, dstPath, removePauses, length, threshold, nChannels, frequency));
}

void soxUt_removePauses(const QString& srcFilePath, const QString& dstFilePath, double length,
                        double dBThreshold) {
    fu_deleteFile(dstFilePath);
    soxUt_runSox(soxArgs::removePauses(srcFilePath, dstFilePath, length, dBThreshold));
}

void soxUt_gain(const QString& srcPath, const QString& dstPath, double gain) {
    fu_deleteFile(dstPath);
    soxUt_runSox(soxArgs::gain(srcPath, dstPath, gain));
}

QStringList soxUt_splitAtSilence(const QString& srcPath, double silenceDuration) {
    const QString base = toolFilePaths::withoutExtension(srcPath);
    const QString extension = srcPath.mid(base.size()); // with its dot
    const QString stem = base + "_part";
    const auto piece = [&](int n) { return stem + strUt_pad3(n) + extension; };
    // Pieces of an earlier run would be taken for this one's.
    for (int n = 1; fu_deleteFile(piece(n)); ++n)
        continue;
    soxUt_runSox(soxArgs::splitAtSilence(srcPath, stem + extension, silenceDuration));
    QStringList pieces;
    for (int n = 1; fu_fileExists(piece(n)); ++n)
        pieces << piece(n);
    return pieces;
}
