// The two selections (a range, an item) and what acts on them: delete, deactivate, copy, cut, paste.
#include "foundation/Log.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/SimpleRound.h"

#include <algorithm>

void AETimeLine::clearSelection() {
    for (const auto& item : mainLane)
        item->selected = false;
    for (const auto& item : attachedItems)
        item->selected = false;
}

int64_t AETimeLine::selectItemInMainLane(double t) {
    const int64_t n = getAssetInMainLane(t);
    if (n >= 0) {
        clearSelection();
        const auto item = mainLane[static_cast<size_t>(n)];
        item->selected = true;
        drag->setRange(item->getRangeInTimeline());
        mustDraw = true;
    }
    return n;
}

void AETimeLine::selectAttachedItem(double t, int64_t lane) {
    const auto item = getAttachedItem(t, lane);
    if (!item) return;
    const double end = item->isBGM() ? item->bgmOutTime : item->outTime();
    drag->setRange(AETimeRange(item->inTime, end), item->lane);
    clearSelection();
    item->selected = true;
}

void AETimeLine::toggleActivateSelectedItem() {
    const auto isSelected = [](const Item& item) { return item->selected; };
    if (auto found = std::find_if(mainLane.begin(), mainLane.end(), isSelected); found != mainLane.end())
        (*found)->active = !itemActive(*found);
    const auto attached = std::find_if(attachedItems.begin(), attachedItems.end(),
                                       [](const Item& item) { return item->selected && item->lane != 0; });
    if (attached != attachedItems.end()) (*attached)->active = !itemActive(*attached);
}

void AETimeLine::removeSelectedItem() {
    for (size_t n = 0; n < mainLane.size(); ++n) {
        if (mainLane[n]->selected) {
            removeItemInMainLane(static_cast<int64_t>(n));
            mustDraw = true;
            return;
        }
    }
    const auto found = std::find_if(attachedItems.begin(), attachedItems.end(),
                                    [](const Item& item) { return item->selected; });
    if (found != attachedItems.end()) {
        attachedItems.erase(found);
        adjustItems();
    }
    mustDraw = true;
}

void AETimeLine::deleteSelection() {
    deleteOrDeactivate(false);
}

void AETimeLine::deactivateSelection() {
    deleteOrDeactivate(true);
}

void AETimeLine::deleteOrDeactivate(bool deactivate) {
    callUndo(true);
    if (draggingVolumeKF) {
        // A selected keyframe beats a selected range.
        if (draggingVolumeItem) draggingVolumeItem->kfView->deleteSelectedKFs();
        draggingVolumeItem.reset();
        draggingVolumeKF.reset();
        mustDraw = true;
        return;
    }
    if (!drag->active) return;
    const auto finish = [this] {
        mustDraw = true;
        draw();
        drag->active = false;
        drawActiveCut();
        idleFast();
    };
    if (drag->lane != 0) {
        if (!deactivate) deleteAttachedSelection(std::nullopt, false);
        finish();
        return;
    }
    const AETimeRange& range = drag->getRange();
    const double i = simpleRound(std::max(range.i, 0.0));
    const double o = simpleRound(std::min(range.o, getMainLaneOutTime()));
    int64_t a = getAssetInMainLane(i);
    const int64_t b = getAssetInMainLane(o);
    // An empty range selects nothing (it would otherwise take the rest of the clip it lies in).
    if (a == -1 || o <= i) return;
    int64_t last = b;
    // o on a cut: b is the clip after the selection.
    if (b > 0 && mainLane[static_cast<size_t>(b - 1)]->outTime() == o) last = b - 1;
    // No clip at o (attached items run on past the main lane): the range ends with the lane. Settled
    // before the cut at i, which shifts the index.
    if (last == -1) last = static_cast<int64_t>(mainLane.size()) - 1;
    const auto first = mainLane[static_cast<size_t>(a)];
    if (a == last && i == first->inTime && o == first->outTime()) {
        // Exactly one clip: it goes, with ripple, even when asked to deactivate.
        removeItemInMainLane(a, false);
        return;
    }
    if (i > first->inTime) {
        const size_t before = mainLane.size();
        sliceMainLane(i, false);
        if (mainLane.size() == before + 1) {
            a += 1;
            last += 1;
        } else {
            // One half was too short to keep and went at once: the clip at i is found again.
            a = getAssetInMainLane(i);
        }
    }
    if (last == -1 || last >= static_cast<int64_t>(mainLane.size()))
        last = static_cast<int64_t>(mainLane.size()) - 1;
    if (mainLane[static_cast<size_t>(last)]->outTime() > o) sliceMainLane(o, false);
    if (deactivate) {
        for (int64_t index = last; index >= a; --index)
            if (index < static_cast<int64_t>(mainLane.size()))
                mainLane[static_cast<size_t>(index)]->active = false;
    } else {
        removeItemsInMainLane(a, last);
    }
    if (!deactivate) {
        const double p = getPlayHeadTime();
        if (i < p && p < o) setPlayheadTime(i, false);
    }
    finish();
}

bool AETimeLine::deleteAttachedSelection(const std::optional<AETimeRange>& overrideDragRange,
                                         bool doUndoCallback) {
    callUndo(doUndoCallback);
    const AETimeRange range = overrideDragRange ? *overrideDragRange : drag->getRange();
    const double i = simpleRound(range.i);
    const double o = simpleRound(range.o);
    const int64_t lane = drag->lane;
    // The range must start on an item: an attached lane has gaps, and nothing ripples.
    const auto a = getAttachedItem(i, lane);
    if (!a) return true;
    splitAttachedItem(a, i, false, true);
    if (auto b = getAttachedItem(o, lane)) splitAttachedItem(b, o, false, true);
    if (auto c = getAttachedItem(i, lane)) removeAttachedItem(c);
    if (a->range.duration() <= 0.01) removeAttachedItem(a);
    AETimeLineLanesHelper::cleanLanes(*this);
    AETimeLineLanesHelper::setBGM(*this);
    cleanupShortItems();
    setupLanes();
    return true;
}

void AETimeLine::copySelection() {
    const AETimeRange& range = drag->getRange();
    const double i = std::max(range.i, 0.0);
    const double o = std::min(range.o, getMainLaneOutTime());
    int64_t a = getAssetInMainLane(i);
    if (a == -1) return;
    // Temporary cuts at the ends, joined again below.
    bool slicedIn = false;
    bool slicedOut = false;
    // A cut only counts when it made two halves: a half too short to keep goes at once.
    const auto cutAt = [this](double t) {
        const size_t before = mainLane.size();
        sliceMainLane(t, false);
        return mainLane.size() == before + 1;
    };
    if (i > mainLane[static_cast<size_t>(a)]->inTime) {
        slicedIn = cutAt(i);
        a = slicedIn ? a + 1 : getAssetInMainLane(i);
    }
    // The clip that ends the selection, found as a delete finds it.
    const auto lastAt = [this](double t) {
        const int64_t b = getAssetInMainLane(t);
        int64_t found = b;
        if (b > 0 && mainLane[static_cast<size_t>(b - 1)]->outTime() == t) found = b - 1;
        if (found < 0 || found >= static_cast<int64_t>(mainLane.size()))
            found = static_cast<int64_t>(mainLane.size()) - 1;
        return found;
    };
    int64_t last = lastAt(o);
    if (mainLane[static_cast<size_t>(last)]->outTime() > o) {
        slicedOut = cutAt(o);
        if (!slicedOut) last = lastAt(o);
    }
    clipboardLane.clear();
    for (int64_t n = a; n <= last && n < static_cast<int64_t>(mainLane.size()); ++n) {
        const auto& source = mainLane[static_cast<size_t>(n)];
        auto copy = AETimeLineItem::make(source->asset, std::nullopt, source->lane, source->inTime,
                                         source->range.duplicate());
        copy->kfView->keyframeDragDelegate = keyframeDragDelegate;
        clipboardLane.push_back(copy);
    }
    for (size_t n = 0; n < clipboardLane.size(); ++n)
        clipboardLane[n]->inTime = n == 0 ? 0 : clipboardLane[n - 1]->outTime();
    if (slicedOut) joinMainLane(last);
    if (slicedIn) joinMainLane(a - 1);
}

void AETimeLine::paste(double at) {
    callUndo(true);
    // A playhead at or past the end of the main lane appends.
    const bool atEnd = at >= getMainLaneOutTime();
    int64_t n = 0;
    if (!atEnd) {
        sliceMainLane(at, false);
        n = getAssetInMainLane(at);
    }
    for (const auto& source : clipboardLane) {
        auto item = AETimeLineItem::make(source->asset, std::nullopt, source->lane, source->inTime,
                                         source->range.duplicate());
        item->kfView->keyframeDragDelegate = keyframeDragDelegate;
        if (atEnd || n < 0 || n >= static_cast<int64_t>(mainLane.size())) {
            mainLane.push_back(item);
        } else {
            mainLane.insert(mainLane.begin() + n, item);
            n += 1;
        }
    }
    // Unlike an insert, a paste leaves the attached items where they were; music ends are
    // recomputed against the pasted jingles.
    refillMainLaneInTime();
    adjustBGM();
    getRightBound();
    setInsetViewSize();
    mustDraw = true;
    getCollectedItems();
    drag->active = false;
    hideActiveCut();
    hideEphemeral();
}

void AETimeLine::cut() {
    callUndo(true);
    copySelection();
    deleteSelection();
    drag->active = false;
}

void AETimeLine::newVolumeKeyframe(std::optional<double> t, int64_t lane, bool doUndoCallback) {
    callUndo(doUndoCallback);
    const double at = t ? *t : currentPHTime;
    const auto item = lane == 0 ? getItemAtTime(at) : getAttachedItem(at, lane);
    if (!item) return;
    const double assetTime = item->globalTimeToAssetTime(at);
    item->volumeKFs->setKeyframe(assetTime, item->volumeKFs->getValue(assetTime));
    mustDraw = true;
}

void AETimeLine::autoDuckSelection(bool doUndoCallback) {
    callUndo(doUndoCallback);
    const AETimeRange r = drag->getRange();
    const auto at = [&](double t) {
        return drag->lane == 0 ? getItemAtTime(t) : getAttachedItem(t, drag->lane);
    };
    const auto a = at(r.i);
    const auto b = at(r.o);
    if (!a || !b || a->id != b->id) return;
    a->volumeKFs->duck(AETimeRange(a->globalTimeToAssetTime(r.i), a->globalTimeToAssetTime(r.o)));
    // The applied envelope of music also holds its fade-out.
    a->updateGlobalKFs();
    mustDraw = true;
}
