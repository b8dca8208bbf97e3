// Markers live in asset time on items and assets; the timeline shows and finds them in its own time.
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <algorithm>

namespace {

std::vector<std::shared_ptr<AEMarker>> sortedByInTime(std::vector<std::shared_ptr<AEMarker>> markers) {
    std::stable_sort(markers.begin(), markers.end(),
                     [](const auto& a, const auto& b) { return a->inTime < b->inTime; });
    return markers;
}

// Removes the first marker with that id from the item, or else from its asset.
bool removeFirstWithId(AETimeLineItem& item, const QString& id) {
    const auto sameId = [&](const std::shared_ptr<AEMarker>& m) { return m->id == id; };
    for (auto* list : {&item.markers, &item.asset->markers}) {
        if (auto found = std::find_if(list->begin(), list->end(), sameId); found != list->end()) {
            list->erase(found);
            return true;
        }
    }
    return false;
}

} // namespace

std::vector<std::shared_ptr<AEMarker>> AETimeLine::getMarkerList() const {
    std::vector<std::shared_ptr<AEMarker>> all;
    for (const auto& item : collectedItems) {
        auto visible = item->getVisibleMarkers();
        all.insert(all.end(), visible.begin(), visible.end());
    }
    return all;
}

std::shared_ptr<AEMarker> AETimeLine::getMarkerAtTime(double t) const {
    for (const auto& item : collectedItems) {
        for (const auto* list : {&item->markers, &item->asset->markers})
            for (const auto& marker : *list)
                if (marker->inTime + item->inTime - item->range.i == t) return marker;
    }
    return nullptr;
}

std::shared_ptr<AEMarker> AETimeLine::getNextMarker(std::optional<double> t) {
    const double at = t ? *t : getPlayHeadTime();
    for (const auto& marker : sortedByInTime(getMarkerList()))
        if (marker->inTime > at) return marker;
    return nullptr;
}

std::shared_ptr<AEMarker> AETimeLine::getPreviousMarker(std::optional<double> t) {
    const double at = t ? *t : getPlayHeadTime();
    std::shared_ptr<AEMarker> previous;
    for (const auto& marker : sortedByInTime(getMarkerList()))
        if (marker->inTime < at) previous = marker;
    return previous;
}

void AETimeLine::addMarkerToCurrentSelectedMainLaneItem(bool openViewController, AEMarkerType type) {
    // No two markers at one spot: the one there is opened instead.
    if (auto existing = getMarkerAtTime(currentPHTime)) {
        if (openViewController) inspectMarker(existing);
        return;
    }
    const int64_t n = getAssetInMainLane(currentPHTime);
    if (n == -1) return;
    callUndo(true);
    const bool ephemeralShown = view && view->ephemeralPlayhead && !view->ephemeralPlayhead->hidden;
    const double t = ephemeralShown ? view->ephemeralPlayhead->currentTime : currentPHTime;
    auto marker = mainLane[static_cast<size_t>(n)]->addMarker(std::nullopt, t, "Marker", type);
    updateMarkerListWindow();
    mustDraw = true;
    if (openViewController) inspectMarker(marker);
}

void AETimeLine::deleteMarker(const std::shared_ptr<AEMarker>& marker) {
    callUndo(true);
    for (const auto& item : collectedItems)
        item->deleteMarker(*marker);
    updateMarkerListWindow();
    updateViewAfterSomething();
}

void AETimeLine::inspectMarker(const std::shared_ptr<AEMarker>& marker) {
    if (markerInspectorPresenter) markerInspectorPresenter(marker);
    markeriInspectorOpen = true;
}

void AETimeLine::markerVCDone(const std::shared_ptr<AEMarker>& marker, AEMarkerVCDoneAction action) {
    switch (action) {
    case AEMarkerVCDoneAction::ok:
        markerInspectorOk(marker);
        break;
    case AEMarkerVCDoneAction::remove:
        markerInspectorDelete(marker);
        break;
    case AEMarkerVCDoneAction::cancel:
        markeriInspectorOpen = false;
        break;
    case AEMarkerVCDoneAction::deleteSelection: {
        qxLog("deleteSelection");
        // The item under the marker: the one that shows it.
        for (const auto& item : collectedItems) {
            const auto shown = item->getVisibleMarkers();
            if (std::none_of(shown.begin(), shown.end(), [&](const auto& m) { return m->id == marker->id; }))
                continue;
            const double out = std::min(item->assetTimeToGlobalTime(marker->outTime), item->outTime());
            drag->setRange(AETimeRange(item->assetTimeToGlobalTime(marker->inTime), out));
            deleteSelection();
            break;
        }
        markeriInspectorOpen = false;
        break;
    }
    }
}

void AETimeLine::markerInspectorOk(const std::shared_ptr<AEMarker>& marker) {
    callUndo(true);
    markeriInspectorOpen = false;
    for (const auto& item : collectedItems) {
        const auto found = std::find_if(item->markers.begin(), item->markers.end(),
                                        [&](const auto& m) { return m->id == marker->id; });
        if (found != item->markers.end()) {
            (*found)->notes = marker->notes;
            (*found)->type = marker->type;
            (*found)->inTime = marker->inTime;
            break;
        }
    }
    mustDraw = true;
    updateMarkerListWindow();
}

void AETimeLine::markerInspectorDelete(const std::shared_ptr<AEMarker>& marker) {
    callUndo(true);
    markeriInspectorOpen = false;
    for (const auto& item : collectedItems)
        if (removeFirstWithId(*item, marker->id)) break;
    mustDraw = true;
    updateMarkerListWindow();
}

void AETimeLine::updateMarkerListWindow() {
    if (markerListUpdater) markerListUpdater();
}
