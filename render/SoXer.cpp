#include "render/SoXer.h"

#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "project/model/AEAsset.h"
#include "project/model/AEBGMSettings.h"
#include "render/Mp3.h"
#include "render/tools/SoxEdit.h"
#include "render/tools/ToolFilePaths.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace {

// Shorter items are dropped: SoX cannot make a file of them worth having.
constexpr double kShortestItem = 0.01;

// Runs `work` and stores its wall-clock seconds in `seconds`.
void timed(double& seconds, const std::function<void()>& work) {
    QElapsedTimer clock;
    clock.start();
    work();
    seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

} // namespace

std::shared_ptr<SoXer> SoXer::make(const QString& destPath, int destFrequency, int destNChannels,
                                   int destBitsPerSample, const std::shared_ptr<AETimeLine>& timeline,
                                   const QString& title, const QString& comment, const QString& picture,
                                   PercentageCallback percentageCallback) {
    std::shared_ptr<SoXer> soxer(new SoXer(destPath, destFrequency, destNChannels, destBitsPerSample,
                                           timeline->detachedDuplicate(), std::move(percentageCallback)));
    soxer->title = title;
    soxer->shownotes = comment;
    soxer->picturePath = picture;
    return soxer;
}

SoXer::SoXer(const QString& destPath, int destFrequency, int destNChannels, int destBitsPerSample,
             const std::shared_ptr<AETimeLine>& timeline, PercentageCallback percentageCallback)
    : destPath(destPath), destFrequency(destFrequency), destNChannels(destNChannels),
      destBitsPerSample(destBitsPerSample), timeline(timeline),
      percentageCallback(std::move(percentageCallback)), destFolder(QFileInfo(destPath).absolutePath()),
      tempFU(destFolder, "temp_") {
    itemsToProduce = static_cast<int>(timeline->mainLane.size() + timeline->attachedItems.size()) + 3;
    mustEncodeMP3 = QFileInfo(destPath).suffix().toLower() == "mp3";
    // The encoder gets about the last 70 % of the bar.
    if (mustEncodeMP3) itemsToProduce = static_cast<int>(itemsToProduce * 3.5);
    timelineOutTime_ = timeline->getTimelineOutTime();
    gatherSources();
}

SoXer::~SoXer() {
    if (barTimer) barTimer->stop();
}

void SoXer::gatherSources() {
    for (const auto* items : {&timeline->mainLane, &timeline->attachedItems}) {
        for (const auto& item : *items) {
            const auto& asset = item->asset;
            if (!asset || sources_.count(asset.get())) continue;
            Source source;
            source.type = asset->type;
            source.duration = asset->duration;
            source.volumeGain = asset->volumeGain;
            if (asset->bgmSettings) {
                source.loopable = asset->bgmSettings->loopable;
                source.fadeOut = asset->bgmSettings->fadeOut;
            }
            if (asset->type != AEAssetType::silence)
                source.path = asset->getUsableFilePath().value_or(asset->originalFilePath);
            sources_.emplace(asset.get(), source);
        }
    }
}

const SoXer::Source& SoXer::sourceOf(const AETimeLineItem& item) const {
    static const Source none;
    const auto found = sources_.find(item.asset.get());
    return found == sources_.end() ? none : found->second;
}

void SoXer::report(double percent) const {
    if (percentageCallback) percentageCallback(percent);
}

void SoXer::produced() {
    const int done = ++itemsProduced;
    report(100.0 * done / std::max(itemsToProduce, 1));
}

QString SoXer::itemPath(const AETimeLineItem& item) const {
    return tempFU.getPath(destFolder + "/" + item.id + ".wav");
}

bool SoXer::perform(bool selection) {
    fu_deleteFile(destPath);
    if (!tempFU.created()) {
        qxLog("SoXer: cannot make a temporary folder in " + destFolder);
        Warning("Export Error", "Cannot write in the folder " + destFolder + ".");
        return false;
    }
    const QString base = toolFilePaths::withoutExtension(destPath);
    const QString ext = toolFilePaths::extensionLower(destPath);
    const QString mainFile = tempFU.getPath(QFileInfo(base).fileName() + "_main.wav");
    {
        std::lock_guard lock(listMutex_);
        laneFiles_ = QStringList{mainFile};
    }
    QElapsedTimer clock;
    clock.start();
    Parallelize::execute([&] { timed(stageTimes.mainLane, [&] { mainLaneJob(selection, mainFile); }); },
                         [&] { timed(stageTimes.lanes, [&] { laneJob(); }); });
    clock.restart();
    // Mixed beside the destination only when it is the result: a WAV that only feeds the encoder stays
    // in the temporary folder, so a file of the user's with that name is never touched.
    const QString wav = ext == "mp3" ? tempFU.getPath(QFileInfo(base).fileName() + ".wav") : base + ".wav";
    QStringList files;
    {
        std::lock_guard lock(listMutex_);
        files = laneFiles_;
    }
    files.erase(
        std::remove_if(files.begin(), files.end(), [](const QString& f) { return !fu_fileExists(f); }),
        files.end());
    if (files.size() > 1) {
        soxUt_mixdown(files, wav);
    } else if (!files.isEmpty()) {
        fu_deleteFile(wav);
        QFile::rename(files.front(), wav);
    }
    stageTimes.mix = static_cast<double>(clock.restart()) / 1000.0;
    produced();

    if (ext == "mp3") {
        std::weak_ptr<SoXer> weak = weak_from_this();
        barTimer = QXTimer::loop("SoXer.updateBar", 0.25, 0.25, false, [weak] {
            if (auto self = weak.lock()) self->updateBar();
        });
        fu_deleteFile(base + ".mp3");
        mp3EncodingStart = QDateTime::currentDateTimeUtc();
        mp3EncodingStarted = true;
        Mp3::encodeWithTags(wav, base + ".mp3", title, picturePath, shownotes, chapters);
        fu_deleteFile(wav);
        barTimer->stop();
        stageTimes.encode = static_cast<double>(clock.restart()) / 1000.0;
    }
    tempFU.remove();
    qxLog(QString("SoXer: main lane %1 s, lanes %2 s, mix %3 s, encode %4 s")
              .arg(stageTimes.mainLane, 0, 'f', 2)
              .arg(stageTimes.lanes, 0, 'f', 2)
              .arg(stageTimes.mix, 0, 'f', 2)
              .arg(stageTimes.encode, 0, 'f', 2));
    const bool done = fu_fileExists(destPath);
    if (!done) qxLog("SoXer: no result at " + destPath);
    return done;
}

void SoXer::performAsync(bool selection, std::function<void(bool done)> callback) {
    auto self = shared_from_this();
    Queue::execute([self, selection, callback = std::move(callback)] {
        const bool done = self->perform(selection);
        if (callback) callback(done);
    });
}

void SoXer::mainLaneJob(bool selection, const QString& mainFile) {
    AETimeLine::Items items = timeline->mainLane;
    if (selection) {
        timeline->copySelection();
        items = timeline->clipboardLane;
    }
    QStringList list;
    for (const auto& item : items) {
        if (item->range.duration() > kShortestItem) {
            const QString path = itemPath(*item);
            list << path;
            timeLineItem2Cluster(*item, path, 0);
        }
        produced();
    }
    soxUt_concatenate(list, mainFile, destFrequency, destNChannels, destBitsPerSample, 0, 0);
    produced();
    for (const QString& file : list)
        fu_deleteFile(file);
}

std::vector<int64_t> SoXer::lanesToRender() const {
    std::vector<int64_t> out;
    for (size_t i = 1; i < timeline->lanes.size(); ++i)
        out.push_back(timeline->lanes[i]->n);
    // Lanes not laid out yet (no window has shown the timeline) still render, in ascending order.
    std::vector<int64_t> extra;
    for (const auto& item : timeline->attachedItems)
        if (item->lane != 0 && std::find(out.begin(), out.end(), item->lane) == out.end() &&
            std::find(extra.begin(), extra.end(), item->lane) == extra.end())
            extra.push_back(item->lane);
    std::sort(extra.begin(), extra.end());
    out.insert(out.end(), extra.begin(), extra.end());
    return out;
}

double SoXer::clusterLength(const AETimeLineItem& item) const {
    const Source& source = sourceOf(item);
    if (source.type != AEAssetType::bgm) return item.range.duration();
    if (source.loopable) return item.bgmOutTime - item.inTime;
    return nonLoopableEnd(item) - item.range.i;
}

double SoXer::nonLoopableEnd(const AETimeLineItem& item) const {
    // Music that does not loop still stops where the timeline ends it.
    if (item.bgmOutTime <= item.inTime) return item.range.o;
    return std::min(item.range.o, item.range.i + (item.bgmOutTime - item.inTime));
}

void SoXer::laneJob() {
    for (const int64_t lane : lanesToRender())
        renderLane(lane);
}

void SoXer::renderLane(int64_t lane) {
    const AETimeLine::Items items = timeline->getLaneItemSubset(lane);
    if (items.empty()) return;
    const QString laneFile = tempFU.getPath("_lane" + QString::number(lane) + ".wav");
    {
        std::lock_guard lock(listMutex_);
        laneFiles_ << laneFile;
    }
    QStringList list;
    // Where the lane file has got to: each gap is measured from what was really written, so rounding
    // of item ends cannot add up along the lane.
    double cursor = 0;
    for (const auto& item : items) {
        if (item->range.duration() > kShortestItem) {
            const double gap = item->inTime - cursor;
            const QString path = itemPath(*item);
            list << path;
            timeLineItem2Cluster(*item, path, gap);
            cursor += (sourceOf(*item).type == AEAssetType::silence ? 0.0 : writtenPadding(gap)) +
                      clusterLength(*item);
        }
        produced();
    }
    soxUt_concatenate(list, laneFile, destFrequency, destNChannels, destBitsPerSample, 0, 0);
    produced();
    for (const QString& file : list)
        fu_deleteFile(file);
}
