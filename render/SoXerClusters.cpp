#include "foundation/FUName.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "render/AUAudioConvolution.h"
#include "render/SoXer.h"
#include "render/tools/SoxCluster.h"
#include "render/tools/SoxEdit.h"
#include "render/tools/ToolFilePaths.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AETimeLineItem.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace {

QString checkedSource(const QString& path) {
    if (!QFileInfo(path).isFile()) qxLog("! " + path);
    return path;
}

} // namespace

std::shared_ptr<AEKeyframeList> SoXer::volumeKeyframes(const AETimeLineItem& item) const {
    if (!item.kfView || !item.kfView->keyframes || item.kfView->keyframes->keyframes.empty()) return nullptr;
    return item.kfView->keyframes;
}

void SoXer::timeLineItem2Cluster(const AETimeLineItem& item, const QString& path, double silenceDuration) {
    const Source& source = sourceOf(item);
    if (source.type == AEAssetType::bgm && source.loopable && source.duration > 0.01) {
        loopableItemToCluster(item, path, silenceDuration);
        return;
    }
    if (source.type == AEAssetType::silence) {
        soxUt_generateSilence(path, destFrequency, destNChannels, item.range.duration());
        return;
    }
    const auto keyframes = volumeKeyframes(item);
    const QString clusterPath = keyframes ? FUName::addSuffix(path, "convolution") : path;
    const double end = source.type == AEAssetType::bgm ? nonLoopableEnd(item) : item.range.o;
    soxUt_createCluster(checkedSource(source.path), silenceDuration, item.range.i, end, 0, 0, clusterPath,
                        false, source.volumeGain, destFrequency, destNChannels, destBitsPerSample);
    if (!keyframes || !fu_fileExists(clusterPath)) return;
    AUAudioConvolution::convolution(clusterPath, path,
                                    keyframes->shiftInTime(item.range.i - writtenPadding(silenceDuration)));
}

void SoXer::loopableItemToCluster(const AETimeLineItem& item, const QString& path, double silenceDuration) {
    const Source& source = sourceOf(item);
    // The passes the span takes: the first from where the item starts in the asset, whole ones, and a
    // last part unless it would be 10 ms or less. One tool run makes them all from the source repeated.
    double remaining = item.bgmOutTime - item.inTime;
    const double firstEnd = std::min(item.range.i + remaining, source.duration);
    double length = firstEnd - item.range.i;
    remaining -= length;
    int passes = 1;
    while (remaining > source.duration) {
        length += source.duration;
        remaining -= source.duration;
        ++passes;
    }
    if (remaining > 0.01) {
        length += remaining;
        ++passes;
    }

    const auto keyframes = volumeKeyframes(item);
    const QString target = keyframes ? FUName::addSuffix(path, "convolution") : path;
    soxUt_createLoopCluster(checkedSource(source.path), silenceDuration, item.range.i, length, passes,
                            source.fadeOut, target, source.volumeGain, destFrequency, destNChannels,
                            destBitsPerSample);
    if (!keyframes) return;
    if (fu_fileExists(target))
        AUAudioConvolution::convolution(
            target, path, keyframes->shiftInTime(item.range.i - writtenPadding(silenceDuration)));
    fu_deleteFile(target);
}

double SoXer::writtenPadding(double silenceDuration) {
    return silenceDuration > kShortestPadding ? silenceDuration : 0.0;
}

double SoXer::encodingPercentage(double elapsed, double outTime) {
    // The encoder is expected to run at five times real time.
    const double expected = std::max(outTime / 5.0, 1e-3);
    double p = 30.0 + 70.0 * elapsed / expected;
    if (p > 90.0) p = 90.0 + (p - 90.0) / 10.0;
    return p;
}

void SoXer::updateBar() {
    if (!mp3EncodingStarted) return;
    const double elapsed =
        static_cast<double>(mp3EncodingStart.msecsTo(QDateTime::currentDateTimeUtc())) / 1000.0;
    report(encodingPercentage(elapsed, timelineOutTime_));
}
