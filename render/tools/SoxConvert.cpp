#include "render/tools/SoxConvert.h"

#include "foundation/FileUtils.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFilePaths.h"
#include "render/tools/ToolPaths.h"

void soxUt_convert(const QString& srcFilePath, const QString& dstFilePath, std::optional<int> frequency,
                   std::optional<int> nChannels, std::optional<int> bitsPerSample, bool normalize) {
    fu_deleteFile(dstFilePath);
    if (toolFilePaths::extensionLower(srcFilePath) == "mp3") return;
    soxUt_runSox(soxArgs::convert(srcFilePath, dstFilePath, frequency, nChannels, bitsPerSample, normalize));
}

void soxUt_convertMp3ToWav(const QString& srcFilePath, const QString& dstFilePath, bool, int nChannels,
                           int bitsPerSample) {
    fu_deleteFile(dstFilePath);
    soxUt_runFFMpeg(ffArgs::decodeToWav(srcFilePath, dstFilePath, nChannels, bitsPerSample, std::nullopt));
}

void soxUt_convertMp3ToWavMono16(const QString& srcFilePath, const QString& dstFilePath,
                                 std::optional<int> resampleTo, bool) {
    fu_deleteFile(dstFilePath);
    soxUt_runFFMpeg(ffArgs::decodeToWav(srcFilePath, dstFilePath, 1, 16, resampleTo));
}

void soxUt_convertToAAC(const QString& srcFilePath, const QString& dstFilePath, int bitrate) {
    fu_deleteFile(dstFilePath);
    soxUt_runFFMpeg(ffArgs::encodeAAC(srcFilePath, dstFilePath, bitrate));
}

void soxUt_convertToMp3(const QString& srcFilePath, const QString& destFilePath, int kbitrate,
                        std::optional<int> channels) {
    soxUt_runFFMpeg(ffArgs::encodeMp3(srcFilePath, destFilePath, kbitrate, channels));
}

QString soxUt_convertToMp3InTheSameFolder(const QString& srcFilePath, int kbitrate) {
    const QString dst = toolFilePaths::withoutExtension(srcFilePath) + ".mp3";
    soxUt_convertToMp3(srcFilePath, dst, kbitrate);
    return dst;
}
