#include "render/tools/SoxFilters.h"

#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolPaths.h"

#include <array>

void soxUt_bandPass(const QString& srcFilePath, const QString& dstFilePath, double lowFreqCut,
                    double hiFreqCut, bool isForSync) {
    fu_deleteFile(dstFilePath);
    soxUt_runSox(soxArgs::bandPass(srcFilePath, dstFilePath, lowFreqCut, hiFreqCut, isForSync));
}

void soxUt_equalize(const QString& srcFilePath, const QString& dstFilePath,
                    const std::vector<BWEqBandSettings>& equalizerValues, double removeHum) {
    fu_deleteFile(dstFilePath);
    soxUt_runSox(soxArgs::equalize(srcFilePath, dstFilePath, equalizerValues, removeHum));
}

void soxUt_compressor(const QString& srcFilePath, const QString& dstFilePath, double ratio, double gain,
                      double attack, double decay) {
    fu_deleteFile(dstFilePath);
    soxUt_runSox(soxArgs::compressor(srcFilePath, dstFilePath, ratio, gain, attack, decay));
}

void soxUt_eqComp(const QString& srcFilePath, const QString& dstFilePath, double ratio, double gain,
                  double attack, double decay, const std::vector<BWEqBandSettings>& equalizerValues,
                  double removeHum) {
    qxLog("soxUt_eqComp: " + srcFilePath + " -> " + dstFilePath);
    fu_deleteFile(dstFilePath);
    soxUt_runSox(
        soxArgs::eqComp(srcFilePath, dstFilePath, ratio, gain, attack, decay, equalizerValues, removeHum));
}

std::vector<BWEqBandSettings> soxUt_getStandardEq(const std::vector<double>& gainList) {
    static constexpr std::array<double, 8> frequencies{62.5,   125.0,  250.0,  500.0,
                                                       1000.0, 2000.0, 4000.0, 8000.0};
    std::vector<BWEqBandSettings> bands;
    for (size_t i = 0; i < frequencies.size(); ++i)
        bands.push_back({frequencies[i], i < gainList.size() ? gainList[i] : 0.0});
    return bands;
}

void soxUt_getNoiseProfile(const QString& srcFilePath, const QString& noiseProfilePath) {
    fu_deleteFile(noiseProfilePath);
    soxUt_runSox(soxArgs::noiseProfile(srcFilePath, noiseProfilePath));
}

void soxUt_denoise(const QString& srcFilePath, const QString& noiseProfilePath, const QString& dstFilePath,
                   double amount) {
    fu_deleteFile(dstFilePath);
    soxUt_runSox(soxArgs::denoise(srcFilePath, noiseProfilePath, dstFilePath, amount));
}
