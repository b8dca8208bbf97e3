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

// Frames handed on at a time by the stream.
constexpr int64_t kStreamBlock = 65536;

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
    const auto mix = openMix(selection);
    QElapsedTimer clock;
    clock.start();
    if (mix && ext == "mp3") {
        std::weak_ptr<SoXer> weak = weak_from_this();
        barTimer = QXTimer::loop("SoXer.updateBar", 0.25, 0.25, false, [weak] {
            if (auto self = weak.lock()) self->updateBar();
        });
        fu_deleteFile(base + ".mp3");
        mp3EncodingStart = QDateTime::currentDateTimeUtc();
        mp3EncodingStarted = true;
        TimelineMix& stream = *mix;
        Mp3::encodeStreamWithTags([&stream] { return stream.readBytes(kStreamBlock); }, stream.rate,
                                  stream.channels, static_cast<double>(stream.frames()) / stream.rate,
                                  base + ".mp3", title, shownotes, chapters);
        barTimer->stop();
        stageTimes.encode = static_cast<double>(clock.restart()) / 1000.0;
    } else if (mix) {
        fu_deleteFile(base + ".wav");
        mix->writeWav(base + ".wav", [this, &mix] { reportStream(*mix); });
        stageTimes.mix = static_cast<double>(clock.restart()) / 1000.0;
    }
    produced();
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

std::unique_ptr<TimelineMix> SoXer::openMix(bool selection) {
    if (!tempFU.created()) return nullptr;
    AETimeLine::Items mainItems = timeline->mainLane;
    if (selection) {
        timeline->copySelection();
        mainItems = timeline->clipboardLane;
    }
    const std::vector<int64_t> lanes = lanesToRender();
    std::vector<std::vector<LanePiece>> plans(lanes.size() + 1);
    Parallelize::execute([&] { timed(stageTimes.mainLane, [&] { plans[0] = planLane(mainItems, false); }); },
                         [&] {
                             timed(stageTimes.lanes, [&] {
                                 for (size_t i = 0; i < lanes.size(); ++i)
                                     plans[i + 1] = planLane(timeline->getLaneItemSubset(lanes[i]), true);
                             });
                         });
    // A lane with no piece made no file, and the mix counts only the files there are.
    std::vector<LaneStream> streams;
    for (auto& plan : plans)
        if (!plan.empty()) streams.emplace_back(std::move(plan), destFrequency, destNChannels);
    if (streams.empty()) return nullptr;
    return std::make_unique<TimelineMix>(std::move(streams), destFrequency, destNChannels);
}

void SoXer::reportStream(const TimelineMix& mix) {
    // The items are planned; the rest of the bar follows the frames.
    const double planned = itemsProduced;
    const double share =
        static_cast<double>(mix.framesRead()) / static_cast<double>(std::max<int64_t>(mix.frames(), 1));
    report(100.0 * (planned + share * (itemsToProduce - planned)) / std::max(itemsToProduce, 1));
}

void SoXer::performAsync(bool selection, std::function<void(bool done)> callback) {
    auto self = shared_from_this();
    Queue::execute([self, selection, callback = std::move(callback)] {
        const bool done = self->perform(selection);
        if (callback) callback(done);
    });
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

std::vector<LanePiece> SoXer::planLane(const std::vector<std::shared_ptr<AETimeLineItem>>& items,
                                       bool attached) {
    std::vector<LanePiece> pieces;
    // Where the lane has got to: each gap is measured from what the item files held, so rounding of
    // item ends cannot add up along the lane.
    double cursor = 0;
    for (const auto& item : items) {
        if (item->range.duration() > kShortestItem) {
            const double gap = item->inTime - cursor;
            const double padding = attached ? gap : 0.0;
            auto piece = streamedPiece(*item, padding);
            if (!piece) piece = renderedPiece(*item, padding);
            if (piece) pieces.push_back(std::move(*piece));
            cursor += (sourceOf(*item).type == AEAssetType::silence ? 0.0 : writtenPadding(gap)) +
                      clusterLength(*item);
        }
        produced();
    }
    return pieces;
}
