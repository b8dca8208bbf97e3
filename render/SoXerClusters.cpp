#include "dsp/Levels.h"
#include "dsp/SndFile.h"
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

bool SoXer::loops(const AETimeLineItem& item) const {
    const Source& source = sourceOf(item);
    return source.type == AEAssetType::bgm && source.loopable && source.duration > 0.01;
}

double SoXer::clusterEnd(const AETimeLineItem& item) const {
    const Source& source = sourceOf(item);
    const double end = source.type == AEAssetType::bgm ? nonLoopableEnd(item) : item.range.o;
    return end;
}

SoXer::LoopSpan SoXer::loopSpan(const AETimeLineItem& item) const {
    const Source& source = sourceOf(item);
    // The passes the span takes: the first from where the item starts in the asset, whole ones, and a
    // last part unless it would be 10 ms or less.
    double remaining = item.bgmOutTime - item.inTime;
    const double firstEnd = std::min(item.range.i + remaining, source.duration);
    LoopSpan span;
    span.length = firstEnd - item.range.i;
    remaining -= span.length;
    while (remaining > source.duration) {
        span.length += source.duration;
        remaining -= source.duration;
        ++span.passes;
    }
    if (remaining > 0.01) {
        span.length += remaining;
        ++span.passes;
    }
    return span;
}

std::optional<LanePiece> SoXer::streamedPiece(const AETimeLineItem& item, double silenceDuration) const {
    const Source& source = sourceOf(item);
    const int rate = destFrequency;
    LanePiece piece;
    if (source.type == AEAssetType::silence) {
        // Silence ignores the gap before it, as the sound tool's silence file did.
        piece.bodyFrames = LaneStream::samplesIn(item.range.duration(), rate);
        return piece;
    }
    if (!LaneStream::streamable(source.path, rate, destNChannels)) return std::nullopt;
    const int64_t available = SndFile(source.path).frames();
    piece.path = source.path;
    piece.padFrames = LaneStream::samplesIn(writtenPadding(silenceDuration), rate);
    piece.startFrame = LaneStream::samplesIn(item.range.i, rate);
    if (source.volumeGain != 0.0) piece.gain = aUt_dbToDouble(std::clamp(source.volumeGain, -40.0, 20.0));
    if (loops(item)) {
        const LoopSpan span = loopSpan(item);
        piece.loop = true;
        piece.bodyFrames = std::min(LaneStream::samplesIn(span.length, rate),
                                    std::max<int64_t>(0, span.passes * available - piece.startFrame));
        piece.fadeOutFrames =
            std::min(LaneStream::samplesIn(source.fadeOut, rate), piece.padFrames + piece.bodyFrames);
    } else {
        piece.bodyFrames = std::min(LaneStream::samplesIn(clusterEnd(item) - item.range.i, rate),
                                    std::max<int64_t>(0, available - piece.startFrame));
    }
    if (const auto keyframes = volumeKeyframes(item))
        piece.envelope = AUAudioConvolution::gainPoints(
            keyframes->shiftInTime(item.range.i - writtenPadding(silenceDuration)));
    return piece;
}

std::optional<LanePiece> SoXer::renderedPiece(const AETimeLineItem& item, double silenceDuration) {
    const QString path = itemPath(item);
    timeLineItem2Cluster(item, path, silenceDuration);
    if (!fu_fileExists(path)) return std::nullopt;
    LanePiece piece;
    piece.path = path;
    piece.bodyFrames = SndFile(path).frames();
    return piece;
}

void SoXer::timeLineItem2Cluster(const AETimeLineItem& item, const QString& path, double silenceDuration) {
    const Source& source = sourceOf(item);
    if (loops(item)) {
        loopableItemToCluster(item, path, silenceDuration);
        return;
    }
    if (source.type == AEAssetType::silence) {
        soxUt_generateSilence(path, destFrequency, destNChannels, item.range.duration());
        return;
    }
    const auto keyframes = volumeKeyframes(item);
    const QString clusterPath = keyframes ? FUName::addSuffix(path, "convolution") : path;
    soxUt_createCluster(checkedSource(source.path), silenceDuration, item.range.i, clusterEnd(item), 0, 0,
                        clusterPath, false, source.volumeGain, destFrequency, destNChannels,
                        destBitsPerSample);
    if (!keyframes || !fu_fileExists(clusterPath)) return;
    AUAudioConvolution::convolution(clusterPath, path,
                                    keyframes->shiftInTime(item.range.i - writtenPadding(silenceDuration)));
}

void SoXer::loopableItemToCluster(const AETimeLineItem& item, const QString& path, double silenceDuration) {
    const Source& source = sourceOf(item);
    // One tool run makes all the passes from the source repeated.
    const auto [length, passes] = loopSpan(item);
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
