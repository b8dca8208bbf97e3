// Cutting: a cut never changes what is heard. Both halves play the same asset with adjoining ranges,
// markers stay in asset time, envelopes are divided, attached items do not move.
#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/SimpleRound.h"
#include "timeline/model/VirtualScroller.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double kFarthestCut = 4000.0;
constexpr double kSnapRadiusPixels = 12.0;
} // namespace

void AETimeLine::sliceMainLane(double at, bool doUndoCallback) {
    // Cutting on a cut is no edit at all, and takes no undo step.
    for (const auto& item : mainLane)
        if (item->inTime == at) return;
    if (!mainLane.empty() && mainLane.back()->outTime() == at) return;
    const double t = simpleRound(at);
    qxLog("sliceMainLane @" + QString::number(t) + " (rounded)");
    const VSRange visible = virtualScroller ? virtualScroller->visibleRange : VSRange{};
    callUndo(doUndoCallback);
    // The insertion below ripples the attached items; these copies go back in their place.
    Items keptAttached;
    keptAttached.reserve(attachedItems.size());
    for (const auto& item : attachedItems)
        keptAttached.push_back(item->duplicate());

    const int64_t n = getAssetInMainLane(t);
    if (n != -1) {
        const auto a = mainLane[static_cast<size_t>(n)];
        const AETimeRange old(a->range.i, a->range.o);
        a->range.o = (t - a->inTime) + a->range.i;
        const double rest = old.duration() - a->range.duration();
        // Past the end of the clip there is nothing to cut: the clip must not grow.
        if (rest <= 0) a->range = old;
        if (rest > 0) {
            const AETimeRange second(a->range.i + a->range.duration(), old.o);
            const auto b = n + 1 < static_cast<int64_t>(mainLane.size())
                               ? insertItemInMainLane(a->asset, n + 1, second, false)
                               : appendItemInMainLane(a->asset, second, false, true);
            // A sliver under the shortest clip is cleaned away at once; then there is no second half
            // to take markers and envelope (and the clip now after the cut must not get them).
            if (std::find(mainLane.begin(), mainLane.end(), b) != mainLane.end()) {
                // Both halves hold every marker; each shows only those inside its own range.
                b->markers.insert(b->markers.end(), a->markers.begin(), a->markers.end());
                b->setVolumeKFs(a->volumeKFs->duplicate());
                b->volumeKFs->keepKeyframesInTimeRange(b->range);
            }
            attachedItems = std::move(keptAttached);
            a->volumeKFs->keepKeyframesInTimeRange(a->range);
        }
    }
    if (virtualScroller) virtualScroller->setVisibleRange(visible.i, visible.o);
    adjustItems();
    mustDraw = true;
    drawActiveCut(t);
    showEphemeral();
    idleFast();
    draw();
}

void AETimeLine::splitAttachedItem(const Item& item, double at, bool doUndoCallback,
                                   bool dontPerformAdjustments) {
    const bool isBGM = item->isBGM();
    const double t = simpleRound(at);
    if (t == item->inTime || t == item->outTime()) {
        AETimeLineLanesHelper::cleanLanes(*this);
        AETimeLineLanesHelper::setBGM(*this);
        return;
    }
    callUndo(doUndoCallback);
    const AETimeRange old = item->range.simpleRound();
    // Music ends in timeline time; the second half's range needs the same moment in asset time.
    const double timelineEnd = std::min(item->outTime(), item->bgmOutTime);
    const double end =
        isBGM ? simpleRound(item->globalTimeToAssetTime(timelineEnd)) : simpleRound(item->range.o);
    item->range.o = simpleRound((t - item->inTime) + item->range.i);
    const double previousBgmOut = item->bgmOutTime;
    // Music measures its old length to its old end, so that the second half runs on to it.
    double length = old.duration();
    if (isBGM) {
        item->bgmOutTime = t;
        length = timelineEnd - item->inTime;
    }
    if (length - item->range.duration() > 0) {
        const AETimeRange second(item->range.o, end);
        // Refused when t is at or past the end of the main lane: then the tail is lost.
        if (auto half = attachItem(item->asset, item->lane, t, second, true, false)) {
            half->takeEnvelopeOf(*item);
            half->volumeKFs->keepKeyframesInTimeRange(half->range);
            if (isBGM) {
                half->bgmOutTime = simpleRound(previousBgmOut);
                item->cutOnce = true;
            }
        }
    }
    item->volumeKFs->keepKeyframesInTimeRange(item->range);
    getCollectedItems();
    if (!dontPerformAdjustments) {
        AETimeLineLanesHelper::cleanLanes(*this);
        AETimeLineLanesHelper::setBGM(*this);
    }
    adjustBGM();
    cleanupShortItems();
    if (!dontPerformAdjustments) setupLanes();
    mustDraw = true;
}

void AETimeLine::blade(const AEMouseEvent& event, bool doUndoCallback, bool superBlade) {
    callUndo(doUndoCallback);
    const auto lane = mouseEventToLane(event);
    const double t = simpleRound(mouseEventToTime(event));
    if (superBlade) {
        const double playhead = getPlayHeadTime();
        sliceMainLane(t, false);
        const auto allLanes = lanes;
        for (const auto& l : allLanes) {
            if (l->n == 0) continue;
            if (auto item = getAttachedItem(t, l->n)) splitAttachedItem(item, t, false);
        }
        setPlayheadTime(playhead);
        return;
    }
    if (!lane) return;
    // The flag is passed on, so one click leaves two identical snapshots.
    if (*lane == 0) {
        sliceMainLane(t, doUndoCallback);
    } else if (auto item = getAttachedItem(t, *lane)) {
        splitAttachedItem(item, t, doUndoCallback);
    }
}

void AETimeLine::joinMainLane(int64_t index) {
    if (index < 0 || index >= static_cast<int64_t>(mainLane.size()) - 1) return;
    const auto i = static_cast<size_t>(index);
    mainLane[i]->range.o = mainLane[i + 1]->range.o;
    mainLane.erase(mainLane.begin() + index + 1);
    refillMainLaneInTime();
    getRightBound();
    setInsetViewSize();
    mustDraw = true;
    getCollectedItems();
}

int64_t AETimeLine::getNearestCutIndex(std::optional<double> t) const {
    if (!t && view && view->ephemeralPlayhead && !view->ephemeralPlayhead->hidden)
        t = view->ephemeralPlayhead->currentTime;
    if (!t) return -1;
    // The start of the timeline is the first candidate; a tie goes to the earlier cut.
    int64_t best = 0;
    double bestDist = *t;
    for (size_t i = 0; i < mainLane.size(); ++i) {
        const double d = std::fabs(mainLane[i]->outTime() - *t);
        if (std::min(bestDist, kFarthestCut) > d) {
            bestDist = d;
            best = static_cast<int64_t>(i) + 1;
        }
    }
    return best;
}

double AETimeLine::getNearestCutTime() const {
    if (mainLane.empty()) return -1.0;
    const int64_t n = getNearestCutIndex();
    if (n == static_cast<int64_t>(mainLane.size())) return mainLane.back()->outTime();
    if (n >= 0) return mainLane[static_cast<size_t>(n)]->inTime;
    return -1.0;
}

double AETimeLine::getNearestSnapTime(double at) {
    const double snap = xToTime(kSnapRadiusPixels, true);
    bool found = false;
    double bestDist = at;
    double value = at;
    const auto consider = [&](double candidate) {
        const double d = std::fabs(candidate - at);
        if (std::min(bestDist, snap) > d) {
            bestDist = d;
            found = true;
            value = candidate;
        }
    };
    for (const auto& item : getCollectedItems()) {
        consider(item->outTime());
        for (const auto& marker : item->getVisibleMarkers())
            consider(marker->inTime);
    }
    return found ? value : at;
}

double AETimeLine::getPreviousCutTime() const {
    if (mainLane.empty()) return 0;
    double previous = mainLane.front()->inTime;
    for (const auto& item : mainLane)
        if (item->inTime < currentPHTime) previous = item->inTime;
    return previous;
}

double AETimeLine::getNextCutTime() const {
    if (mainLane.empty()) return 0;
    for (const auto& item : mainLane)
        if (item->outTime() > currentPHTime) return item->outTime();
    return mainLane.back()->outTime();
}

void AETimeLine::goToPreviousCut() {
    setPlayheadTime(getPreviousCutTime(), true);
}

void AETimeLine::goToNextCut() {
    setPlayheadTime(getNextCutTime(), true);
}

void AETimeLine::goToBegin() {
    setPlayheadTime(0, false);
}

void AETimeLine::goToEnd() {
    setPlayheadTime(getTimelineOutTime(), false);
}

void AETimeLine::drawActiveCut(std::optional<double> time) {
    if (drag->dragging) return;
    const double t = time ? *time : getNearestCutTime();
    if (t == -1.0) {
        hideActiveCut();
        if (triangleDelegate) triangleDelegate->showTriangles(-1000.0, 0, 0);
        return;
    }
    const double x = timeToX(t);
    const auto ys = laneToYs(0);
    if (view && view->nearestCut) {
        AEPlayHead& cut = *view->nearestCut;
        cut.hidden = false;
        cut.x = x - cut.image.width() / 2.0;
        cut.currentTime = t;
        if (ys) {
            cut.y = ys->first;
            cut.height = ys->second - ys->first;
        }
    }
    const double halfWidth = view && view->nearestCut ? view->nearestCut->image.width() / 2.0 : 0;
    if (triangleDelegate && ys)
        triangleDelegate->showTriangles(x + deltaOrigin.x() - halfWidth, ys->first, ys->second);
}

void AETimeLine::hideActiveCut() {
    // Callable from any thread: the overlay belongs to the main thread.
    std::weak_ptr<AETimeLine> weak = weak_from_this();
    const auto hide = [weak] {
        if (auto self = weak.lock(); self && self->view && self->view->nearestCut)
            self->view->nearestCut->hidden = true;
    };
    if (XMain::isMain())
        hide();
    else
        XMain::execute(hide, true);
}
