// Putting clips on the timeline and taking them off, and the repair passes that follow every change.
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEBGMSettings.h"
#include "timeline/model/AEDucking.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/SimpleRound.h"
#include "timeline/model/VirtualScroller.h"

#include <algorithm>

void AETimeLine::callUndo(bool doUndoCallback) const {
    if (doUndoCallback && undoDoCallback) undoDoCallback();
}

void AETimeLine::keepViewport() {
    if (!virtualScroller) return;
    const VSRange visible = virtualScroller->visibleRange;
    setViewportRange(visible.i, visible.o);
}

AETimeLine::Item AETimeLine::newMainLaneItem(const std::shared_ptr<AEAsset>& asset,
                                             const std::optional<AETimeRange>& range) const {
    auto item = AETimeLineItem::make(asset, std::nullopt, 0, 0, range);
    item->kfView->keyframeDragDelegate = keyframeDragDelegate;
    return item;
}

AETimeLine::Item AETimeLine::insertItemInMainLane(const std::shared_ptr<AEAsset>& asset, int64_t atIndex,
                                                  const std::optional<AETimeRange>& range,
                                                  bool doUndoCallback) {
    qxLog("insertItemInMainLane (index: " + QString::number(atIndex) + ")");
    keepViewport();
    callUndo(doUndoCallback);
    const double inserted = range ? range->duration() : asset->duration;
    auto item = newMainLaneItem(asset, range);
    double startingFrom = 0;
    if (atIndex >= 0 && atIndex < static_cast<int64_t>(mainLane.size())) {
        startingFrom = mainLane[static_cast<size_t>(atIndex)]->inTime;
        mainLane.insert(mainLane.begin() + atIndex, item);
    } else {
        // Taken before the append: appending moves no attached item.
        startingFrom = getTimelineOutTime();
        mainLane.push_back(item);
    }
    doAutoBGM(item);
    refillMainLaneInTime();
    getRightBound();
    if (doUndoCallback) setInsetViewSize();
    mustDraw = true;
    adjustAttachedItems(startingFrom, inserted);
    if (doUndoCallback) adjustItems();
    adjustBGM();
    getCollectedItems();
    cleanupShortItems();
    setupLanes();
    return item;
}

AETimeLine::Item AETimeLine::appendItemInMainLane(const std::shared_ptr<AEAsset>& asset,
                                                  const std::optional<AETimeRange>& range,
                                                  bool doUndoCallback, bool fromSlice) {
    keepViewport();
    callUndo(doUndoCallback);
    auto item = newMainLaneItem(asset, range);
    mainLane.push_back(item);
    adjustItems();
    doAutoBGM(item);
    refillMainLaneInTime();
    adjustBGM();
    if (!fromSlice) centerToPlayHead();
    getRightBound();
    setInsetViewSize();
    getCollectedItems();
    mustDraw = true;
    return item;
}

void AETimeLine::removeItemInMainLane(int64_t n, bool doUndoCallback, bool forceDraw, bool cleanupAtEnd) {
    qxLog("MainLane.count = " + QString::number(mainLane.size()));
    if (!virtualScroller || mainLane.empty()) return;
    if (n < 0 || n >= static_cast<int64_t>(mainLane.size())) return;
    keepViewport();
    callUndo(doUndoCallback);
    const auto item = mainLane[static_cast<size_t>(n)];
    const double out = simpleRound(item->outTime());
    adjustAttachedItems(out, item->inTime - out);
    const double c0 = simpleRound(item->inTime);
    const double c1 = simpleRound(item->outTime());
    mainLane.erase(mainLane.begin() + n);
    refillMainLaneInTime();
    adjustBGM();
    getRightBound();
    setInsetViewSize();
    AETimeLineLanesHelper::cleanLanes(*this);
    AETimeLineLanesHelper::setBGM(*this);
    mustDraw = forceDraw;
    if (forceDraw) idleFast();
    getCollectedItems();
    drawActiveCut();
    // A playhead after the removed clip keeps its number, so it now stands later in the material.
    const double p = getPlayHeadTime();
    if (c0 < p && p < c1) setPlayheadTime(c0);
    if (cleanupAtEnd) cleanupShortItems();
    setupLanes();
}

void AETimeLine::removeItemsInMainLane(int64_t first, int64_t last) {
    if (!virtualScroller || mainLane.empty()) return;
    first = std::max<int64_t>(first, 0);
    last = std::min(last, static_cast<int64_t>(mainLane.size()) - 1);
    if (first > last) return;
    keepViewport();
    const double in = simpleRound(mainLane[static_cast<size_t>(first)]->inTime);
    const double out = simpleRound(mainLane[static_cast<size_t>(last)]->outTime());
    // Where a playhead inside one of the clips goes: the start of that clip.
    const double p = getPlayHeadTime();
    std::optional<double> playhead;
    for (int64_t n = first; n <= last && !playhead; ++n) {
        const auto& item = mainLane[static_cast<size_t>(n)];
        const double c0 = simpleRound(item->inTime), c1 = simpleRound(item->outTime());
        if (c0 < p && p < c1) playhead = c0;
    }
    // Attached items in the removed stretch go, those after it move back by its length: the sum of
    // what each removal would do.
    adjustAttachedItems(out, in - out);
    mainLane.erase(mainLane.begin() + first, mainLane.begin() + last + 1);
    refillMainLaneInTime();
    adjustBGM();
    getRightBound();
    setInsetViewSize();
    AETimeLineLanesHelper::cleanLanes(*this);
    AETimeLineLanesHelper::setBGM(*this);
    mustDraw = true;
    idleFast();
    getCollectedItems();
    drawActiveCut();
    if (playhead) setPlayheadTime(*playhead);
    cleanupShortItems();
    setupLanes();
}

void AETimeLine::adjustAttachedItems(double startingFrom, double shiftBy) {
    const double d = simpleRound(shiftBy);
    if (d < 0) {
        // Items that start inside the removed stretch go with it; those already under way stay whole.
        for (auto k = attachedItems.size(); k-- > 0;) {
            const double t = attachedItems[k]->inTime;
            if (startingFrom + d <= t && t < startingFrom)
                attachedItems.erase(attachedItems.begin() + static_cast<long>(k));
        }
    }
    for (const auto& item : attachedItems) {
        if (item->inTime < startingFrom) continue;
        item->inTime += d;
        // Music moves whole: an end left behind would make it look empty to the next repair pass.
        if (item->bgmOutTime > 0) item->bgmOutTime += d;
    }
    AETimeLineLanesHelper::cleanLanes(*this);
    AETimeLineLanesHelper::setBGM(*this);
    setupLanes();
}

AETimeLine::Item AETimeLine::attachItem(const std::shared_ptr<AEAsset>& asset, int64_t lane, double inTime,
                                        const std::optional<AETimeRange>& range, bool isPartial,
                                        bool doUndoCallback) {
    callUndo(doUndoCallback);
    const double t = simpleRound(inTime);
    if (getMainLaneOutTime() <= t) return nullptr;
    auto item = AETimeLineItem::make(asset, std::nullopt, lane, t, range);
    item->kfView->keyframeDragDelegate = keyframeDragDelegate;
    attachedItems.push_back(item);
    // Music gets its end before it is placed, so that its lane is chosen for its real extent.
    if (item->isBGM() && !isPartial) adjustBGM(false);
    if (!isPartial) {
        AETimeLineLanesHelper::putInFirstClearLane(*this, item);
        performAdjustments();
    }
    if (asset->type == AEAssetType::bgm && asset->bgmSettings && asset->bgmSettings->autoduck == true) {
        // Flagged so that later changes of the timeline repeat the ducking.
        item->ducked = true;
        AEDucking::duck(item, *this);
    }
    return item;
}

void AETimeLine::removeAttachedItem(const Item& item) {
    std::erase(attachedItems, item);
    getCollectedItems();
    AETimeLineLanesHelper::cleanLanes(*this);
    AETimeLineLanesHelper::setBGM(*this);
    setupLanes();
    draw();
}

void AETimeLine::refillMainLaneInTime() {
    // The running sum adds the durations in the same order as summing from the start each time.
    double sum = 0;
    for (size_t n = 0; n < mainLane.size(); ++n) {
        mainLane[n]->inTime = n == 0 ? 0 : simpleRound(sum);
        sum += mainLane[n]->range.duration();
    }
}

void AETimeLine::adjustItems() {
    if (timelineEditor == AETimelineEditor::normal) {
        const auto tooShort = [](const Item& item) { return item->outTime() - item->inTime < 0.001; };
        std::erase_if(mainLane, tooShort);
        std::erase_if(attachedItems, tooShort);
    }
    adjustBGM();
    cleanupShortItems();
    setupLanes();
}

void AETimeLine::cleanupShortItems() {
    if (timelineEditor != AETimelineEditor::normal) return;
    for (auto n = static_cast<int64_t>(mainLane.size()); n-- > 0;) {
        if (n < static_cast<int64_t>(mainLane.size()) &&
            mainLane[static_cast<size_t>(n)]->range.duration() < 0.01)
            removeItemInMainLane(n, false, true, false);
    }
    std::erase_if(attachedItems, [](const Item& item) { return item->range.duration() < 0.01; });
}

void AETimeLine::performAdjustments() {
    AETimeLineLanesHelper::cleanLanes(*this);
    AETimeLineLanesHelper::setBGM(*this);
    adjustBGM();
    getRightBound();
    setupLanes();
}

void AETimeLine::adjustBGM(bool shifted) {
    for (const auto& item : collectedItems)
        item->updateGlobalKFs();
    if (shifted) {
        // Moved speech brings its dips along.
        for (const auto& item : collectedItems)
            if (item->ducked) AEDucking::duck(item, *this);
    }
    const double mainEnd = getMainLaneOutTime();
    const double timelineEnd = getTimelineOutTime();
    for (const auto& bgm : getAttachedSubset(AEAssetType::bgm)) {
        const auto jingle = getNextJingle(bgm->inTime);
        const auto next = getNextBGM(bgm->inTime);
        const double j = jingle ? jingle->inTime : timelineEnd;
        const double n = next ? next->inTime : timelineEnd;
        double end = std::min({j, n, mainEnd});
        // A split music item keeps its shortened end even when the material after it moves away.
        if (bgm->cutOnce) end = std::min({end, bgm->bgmOutTime, bgm->outTime()});
        bgm->bgmOutTime = end;
        bgm->setFadeOutKFs();
    }
}

void AETimeLine::doAutoBGM(const Item& /*item*/) {
    // The place where a jingle with a music id would start its music; jingles start none yet.
}

void AETimeLine::insertSilence(double duration, bool doUndoCallback) {
    callUndo(doUndoCallback);
    const int64_t n = getNearestCutIndex();
    if (n == -1) return;
    AEAsset::Args silence;
    silence.type = AEAssetType::silence;
    insertItemInMainLane(AEAsset::make(silence), n, AETimeRange(0, duration));
}
