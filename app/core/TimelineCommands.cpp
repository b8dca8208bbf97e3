#include "app/core/TimelineCommands.h"

#include "app/core/AEPreferences.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "render/tools/SoxLevels.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <set>

namespace {

std::shared_ptr<AEAsset> at(const TimelineCommands::AssetList& list, int index) {
    if (index < 0 || index >= static_cast<int>(list.size())) return nullptr;
    return list[static_cast<size_t>(index)];
}

int64_t countUsed(const TimelineCommands::AssetList& list, const std::set<QString>& onTimeline) {
    return std::count_if(list.begin(), list.end(),
                         [&](const auto& asset) { return asset && onTimeline.count(asset->id) > 0; });
}

} // namespace

void TimelineCommands::tlLoaded(const std::shared_ptr<AEEpisode>& openEpisode, const AssetList& common) {
    episode = openEpisode;
    commonAssets = common;
    episodeAssets = episode ? episode->assets : AssetList{};
    undoQueue = Undo{};
    setTimeline(episode && episode->timeline ? episode->timeline : AETimeLine::make("untitled"));
    timeline->undoDoCallback = [this] { addStatus(); };
}

void TimelineCommands::setTimeline(const std::shared_ptr<AETimeLine>& next) {
    timeline = next;
    AETimeLineLanesHelper::timeline = next;
    if (episode) episode->timeline = next;
}

void TimelineCommands::done() {
    if (afterAction) afterAction();
}

std::shared_ptr<AEAsset> TimelineCommands::selectedAsset() const {
    if (selectedCommonAssetIndex != -1) return at(commonAssets, selectedCommonAssetIndex);
    return at(episodeAssets, selectedEpisodeAssetIndex);
}

void TimelineCommands::performInsert(int64_t lane) {
    insertAsset(selectedAsset(), lane);
}

void TimelineCommands::insertAsset(const std::shared_ptr<AEAsset>& asset, int64_t lane) {
    if (!asset || !timeline) return;
    if (asset->type == AEAssetType::bgm || lane == -1) {
        timeline->attachItem(asset, -1, timeline->currentPHTime);
    } else if (lane == 1) {
        timeline->attachItem(asset, 1, timeline->currentPHTime);
    } else {
        // The cut nearest the hover playhead; none showing (pointer outside) appends.
        const int64_t n = timeline->getNearestCutIndex();
        if (n == -1)
            timeline->appendItemInMainLane(asset);
        else
            timeline->insertItemInMainLane(asset, n);
    }
    done();
}

void TimelineCommands::performInsertAtPlayhead() {
    const auto asset = selectedAsset();
    if (!asset || !timeline) return;
    if (asset->type == AEAssetType::bgm) {
        timeline->attachItem(asset, -1, timeline->currentPHTime);
    } else {
        const double t = timeline->currentPHTime;
        addStatus(); // one undo step for the slice and the insert
        timeline->sliceMainLane(t, false);
        const int64_t n = timeline->getNearestCutIndex(t);
        if (n == -1)
            timeline->appendItemInMainLane(asset, std::nullopt, false);
        else
            timeline->insertItemInMainLane(asset, n, std::nullopt, false);
    }
    done();
}

void TimelineCommands::performAppend() {
    const auto asset = selectedCommonAssetIndex != -1 ? at(commonAssets, selectedCommonAssetIndex)
                                                      : at(episodeAssets, selectedEpisodeAssetIndex);
    if (!asset || !timeline) return;
    timeline->appendItemInMainLane(asset);
    done();
}

void TimelineCommands::copy() {
    if (timeline) timeline->copySelection();
    done();
}

void TimelineCommands::cut() {
    if (!timeline) return;
    timeline->cut();
    autoSave();
    done();
}

void TimelineCommands::paste() {
    if (!timeline) return;
    timeline->paste(timeline->getPlayHeadTime());
    autoSave();
    done();
}

void TimelineCommands::addStatus() {
    if (!timeline) return;
    undoQueue.addStatus(timeline->getStatus());
    changed = true;
}

void TimelineCommands::undo() {
    if (!timeline) return;
    setTimeline(undoTimeline(timeline, undoQueue));
    changed = true;
    if (timelineSwapped) timelineSwapped();
    done();
}

void TimelineCommands::redo() {
    if (!timeline) return;
    setTimeline(redoTimeline(timeline, undoQueue));
    changed = true;
    if (timelineSwapped) timelineSwapped();
    done();
}

void TimelineCommands::addMarker(bool openInspector, AEMarkerType type) {
    if (timeline) timeline->addMarkerToCurrentSelectedMainLaneItem(openInspector, type);
    done();
}

void TimelineCommands::addVolumeKeyframe() {
    if (!timeline) return;
    AEPreferences::displayVolumeKFs = true;
    int64_t lane = 0;
    const double t = timeline->currentPHTime;
    // The lane last pressed on, when an item of it lies under the playhead; else a selected one there.
    if (timeline->drag && timeline->drag->lane != 0 && timeline->getAttachedItem(t, timeline->drag->lane))
        lane = timeline->drag->lane;
    for (const auto& item : timeline->attachedItems)
        if (item->selected && timeline->getAttachedItem(t, item->lane) == item) lane = item->lane;
    timeline->newVolumeKeyframe(t, lane);
    done();
}

void TimelineCommands::goToMarker(bool next) {
    if (!timeline) return;
    const auto marker = next ? timeline->getNextMarker() : timeline->getPreviousMarker();
    if (marker) timeline->setPlayheadTime(marker->inTime, true);
    done();
}

void TimelineCommands::insertSilence(double seconds) {
    if (!timeline || !(seconds > 0)) return;
    timeline->insertSilence(seconds);
    done();
}

void TimelineCommands::autoSave() {
    if (!episode || !timeline) return;
    qxLog("TimelineCommands.autoSave " + episode->episodeId);
    episode->assets = episodeAssets;
    episode->timeline = timeline;
    episode->duration = timeline->getTimelineOutTime();
    if (changed) episode->modified();
    changed = false;
    episode->saveTimeline();
    saveShow(true);
}

AETimelineStats TimelineCommands::getStats() const {
    AETimelineStats stats;
    if (!timeline) return stats;
    stats.duration = timeline->getTimelineOutTime();
    std::set<QString> onTimeline;
    int64_t items = 0;
    for (const auto* lane : {&timeline->mainLane, &timeline->attachedItems})
        for (const auto& item : *lane) {
            ++items;
            if (item->asset) onTimeline.insert(item->asset->id);
        }
    stats.totalItems = items;
    stats.commonAssetUsed = countUsed(commonAssets, onTimeline);
    stats.episodeAssetUsed = countUsed(episodeAssets, onTimeline);
    return stats;
}

bool TimelineCommands::autoVolume(const std::shared_ptr<AEAsset>& asset) {
    if (!asset) return false;
    const auto path = asset->getUsableFilePath();
    if (!path) return false;
    const double rms = soxUt_getRMSLevel(*path);
    if (!std::isfinite(rms)) return false;
    asset->volumeGain = kAutoGainTargetDb - rms;
    return true;
}
