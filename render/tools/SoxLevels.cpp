#include "render/tools/SoxLevels.h"

#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "render/tools/Shell.h"
#include "render/tools/SoxConvert.h"
#include "render/tools/SoxEdit.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFilePaths.h"
#include "render/tools/ToolPaths.h"

#include <QRegularExpression>
#include <optional>

namespace {
const double fallbackLevel = -12.0;
}

QString soxUt_getStats(const QString& srcPath) {
    return shell2(soxUt_getSoxPath(), soxArgs::stats(srcPath));
}

double soxUt_rmsLevelFromStats(const QString& stats) {
    const QString label = "RMS lev dB";
    const qsizetype at = stats.indexOf(label);
    if (at < 0) return fallbackLevel;
    const qsizetype rowStart = at + label.size();
    const qsizetype rowEnd = stats.indexOf(u'\n', rowStart);
    const QString row = stats.mid(rowStart, rowEnd < 0 ? -1 : rowEnd - rowStart);

    // The last blank-separated word, its sign included ("-23.41", "-inf").
    const QStringList words = row.split(QRegularExpression("\\s+"), Qt::SkipEmptyParts);
    const QString word = words.isEmpty() ? QString() : words.back();
    if (word.isEmpty()) return fallbackLevel;

    bool ok = false;
    const double level = word.toDouble(&ok);
    if (ok) return level;
    qxLog("soxUt_getRMSLevel: \"" + word + "\" is not a level; " + QString::number(fallbackLevel) +
          " instead");
    return fallbackLevel;
}

double soxUt_getRMSLevel(const QString& srcPath) {
    if (toolFilePaths::extensionLower(srcPath) == "mp3") {
        const QString wav = srcPath + ".wav";
        soxUt_convertMp3ToWavMono16(srcPath, wav, std::nullopt, false);
        const double level = soxUt_getRMSLevel(wav);
        fu_deleteFile(wav);
        return level;
    }
    return soxUt_rmsLevelFromStats(soxUt_getStats(srcPath));
}

void soxUt_autoRMS(const QString& srcPath, const QString& dstPath, double rmsLevel) {
    soxUt_gain(srcPath, dstPath, rmsLevel - soxUt_getRMSLevel(srcPath));
}
