// Mouse and keys on the timeline: hover, click, range drag, the drags of item edges, attached items
// and keyframes, and the editing modes. Events come in the view's coordinates with y upwards; the
// lanes, handles and envelopes are laid out kLanesTop higher up (lane space).
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/DragAreaView.h"
#include "timeline/model/VirtualScroller.h"

#include <algorithm>

namespace {
constexpr double kHandlesMinWidth = 40.0;
constexpr double kHandleWidth = 12.0;
constexpr double kMinimalRange = 0.01;
constexpr double kKeySpeedStep = 0.25;
const QPointF kLaneOffset(0, AETimeLine::kLanesTop);
} // namespace

QPointF AETimeLine::toLaneSpace(const AEMouseEvent& event) const {
    return event.locationInWindow - kLaneOffset;
}

void AETimeLine::setEditingMode(AEEditorMode mode) {
    qxLog("setEditingMode (" + QString::number(static_cast<int>(mode)) + ")");
    editorMode = mode;
    if (cursorCallback) {
        switch (mode) {
        case AEEditorMode::normal:
            cursorCallback(QString());
            break;
        case AEEditorMode::drag:
            cursorCallback("drag");
            break;
        case AEEditorMode::blade:
        case AEEditorMode::multiCut:
            cursorCallback("blade");
            break;
        }
    }
    mustDraw = true;
}

AETimeLine::Item AETimeLine::getItemAtMouseEvent(const AEMouseEvent& event) const {
    const auto lane = mouseEventToLane(event);
    if (!lane) return nullptr;
    const double t = mouseEventToTime(event);
    return *lane == 0 ? getItemAtTime(t) : getAttachedItem(t, *lane);
}

void AETimeLine::mouseMoved(const AEMouseEvent& event) {
    const QPointF at = toLaneSpace(event);
    const auto handle = dragAreaView->mouseOver(at);
    if (cursorCallback) {
        if (handle && handle->tag == -1)
            cursorCallback("leftDrag");
        else if (handle && handle->tag == 1)
            cursorCallback("rightDrag");
        else if (editorMode == AEEditorMode::normal)
            cursorCallback(QString());
    }
    if (!playing && view && view->ephemeralPlayhead) {
        AEPlayHead& hover = *view->ephemeralPlayhead;
        hover.currentTime = getNearestSnapTime(mouseEventToTime(event));
        hover.x = timeToX(hover.currentTime) - hover.originX;
        hover.hidden = false;
        drawActiveCut();
        updateTimeCodeViewer();
    } else if (playing) {
        hideEphemeral();
    }
    if (showVolumeKFs) {
        for (const auto& item : getCollectedItems()) {
            if (!item->kfView || !item->kfView->screenRect || !item->kfView->keyframes) continue;
            const auto& points = item->kfView->keyframes->keyframes;
            const bool wasMarked =
                std::any_of(points.begin(), points.end(), [](const auto& k) { return k->selected; });
            if (item->kfView->selectedKeyframe(at.x(), at.y()) || wasMarked) mustDraw = true;
        }
    }
    idle();
}

void AETimeLine::mouseExited() {
    hideEphemeral();
}

bool AETimeLine::kfMouseDown(const AEMouseEvent& event) {
    draggingVolumeKF = nullptr;
    draggingVolumeItem = nullptr;
    if (!showVolumeKFs) return false;
    for (const auto& item : getCollectedItems()) {
        if (!item->kfView || !item->kfView->screenRect) continue;
        if (item->kfView->mouseDown(event, kLaneOffset)) {
            draggingVolumeKF = item->kfView->selectedKF;
            draggingVolumeItem = item;
            mustDraw = true;
            return true;
        }
    }
    return false;
}

void AETimeLine::mouseDown(const AEMouseEvent& event) {
    const double t = mouseEventToTime(event);
    const auto lane = mouseEventToLane(event);
    if (event.modifiers.testFlag(Qt::ControlModifier) && lane) {
        callUndo(true);
        newVolumeKeyframe(t, *lane, false);
        // The envelope editors learn the new point's place from the next draw.
        forceDraw();
    }
    if (kfMouseDown(event)) {
        callUndo(true);
        return;
    }
    if (dragAreaView->mouseOver(toLaneSpace(event))) {
        // One snapshot for the whole trim.
        callUndo(true);
        dragAreaView->mouseDown(toLaneSpace(event));
        drag->dragging = false;
        drag->active = false;
        return;
    }
    const double s = getNearestSnapTime(t);
    if (lane && *lane != 0) {
        auto item = getAttachedItem(t, *lane);
        if (item && (event.modifiers.testFlag(Qt::ShiftModifier) || editorMode == AEEditorMode::drag)) {
            callUndo(true);
            draggingAttachedItem = item;
            draggingAttachedLocation = toLaneSpace(event);
        } else {
            drag->startDrag(s, *lane, item);
        }
    } else if (lane) {
        drag->startDrag(s, 0);
    }
    // Only movement turns the range on: a plain press selects nothing yet.
    drag->active = false;
}

void AETimeLine::mouseDrag(const AEMouseEvent& event) {
    if (draggingVolumeKF && draggingVolumeItem) {
        callUndo(true);
        draggingVolumeItem->kfView->mouseDrag(event, kLaneOffset);
        mustDraw = true;
        return;
    }
    if (dragAreaView->mouseMoved(toLaneSpace(event))) {
        // The main lane closes up while the edge moves.
        refillMainLaneInTime();
        getRightBound();
        setInsetViewSize();
        getCollectedItems();
        mustDraw = true;
        return;
    }
    if (draggingAttachedItem) {
        const QPointF at = toLaneSpace(event);
        const double dx = at.x() - draggingAttachedLocation.x();
        draggingAttachedLocation = at;
        AETimeLineItem& item = *draggingAttachedItem;
        const double newIn = std::clamp(xToTime(timeToX(item.inTime) + dx), 0.0, getMainLaneOutTime());
        const double change = newIn - item.inTime;
        item.inTime = newIn;
        // Music carries its end along.
        if (item.isBGM()) item.bgmOutTime += change;
        if (timelineEditor == AETimelineEditor::normal) {
            AETimeLineLanesHelper::putInFirstClearLane(*this, draggingAttachedItem, true);
            AETimeLineLanesHelper::cleanLanes(*this);
            adjustBGM();
        }
        mustDraw = true;
        return;
    }
    const double s = getNearestSnapTime(mouseEventToTime(event));
    if (virtualScroller) {
        if (s < virtualScroller->visibleRange.i)
            shiftLeft(1.0);
        else if (s > virtualScroller->visibleRange.o)
            shiftRight(1.0);
    }
    if (drag->dragging) drag->continueDrag(s);
    hideActiveCut();
}

void AETimeLine::mouseUp(const AEMouseEvent& event) {
    if (draggingVolumeKF && draggingVolumeItem) {
        draggingVolumeItem->kfView->mouseUp();
        if (timelineEditor == AETimelineEditor::normal) {
            AETimeLineLanesHelper::cleanLanes(*this);
            adjustBGM();
        }
        draggingVolumeKF = nullptr;
        draggingVolumeItem = nullptr;
    }
    qxLog("Mouseup");
    const auto lane = mouseEventToLane(event);
    draggingAttachedItem = nullptr;
    const double s = getNearestSnapTime(mouseEventToTime(event));
    setPlayheadTime(s);
    if (!drag->active) {
        if (lane == 0)
            selectItemInMainLane(s);
        else if (lane)
            selectAttachedItem(s, *lane);
        checkClicOnMarkers(event);
    }
    drag->stopDrag(s);
    if (dragAreaView->mouseUp(toLaneSpace(event))) {
        refillMainLaneInTime();
        getRightBound();
        setInsetViewSize();
        getCollectedItems();
        drag->active = false;
        drag->dragging = false;
    }
    mustDraw = true;
}

void AETimeLine::dragIdle() {
    dragRangeRect.reset();
    if (!drag->active) return;
    AETimeRange r = drag->getRange();
    if (drag->lane == 0) {
        r.o = std::min(r.o, getMainLaneOutTime());
    } else {
        if (!drag->timelineItem) {
            drag->active = false;
            return;
        }
        const AETimeRange span = drag->timelineItem->getRangeInTimeline();
        r = AETimeRange(std::max(r.i, span.i), std::min(r.o, span.o));
    }
    if (!(r.duration() > kMinimalRange)) {
        drag->active = false;
        return;
    }
    const auto ys = laneToYs(drag->lane);
    if (!ys) {
        AETimeLineLanesHelper::cleanLanes(*this);
        return;
    }
    dragRangeRect = QRectF(QPointF(timeToX(r.i), ys->first), QPointF(timeToX(r.o), ys->second));
}

bool AETimeLine::handleKeydown(int key) {
    qxLog("keyDown " + QString::number(key));
    switch (key) {
    case Qt::Key_Space:
        playPause();
        return true;
    case Qt::Key_Left:
        shiftLeft();
        return true;
    case Qt::Key_Right:
        shiftRight();
        return true;
    case Qt::Key_Up:
        goToPreviousCut();
        return true;
    case Qt::Key_Down:
        goToNextCut();
        return true;
    case Qt::Key_J:
        setSpeedRate(playSpeedRate - kKeySpeedStep);
        return true;
    case Qt::Key_L:
        setSpeedRate(playSpeedRate + kKeySpeedStep);
        return true;
    default:
        return false;
    }
}

QRectF AETimeLine::getMarkerRect(const QRectF& viewRect, double x, AEMarkerType type) {
    // A flag hanging from the item's top edge (lane space: the top is the larger y).
    const double w = type == AEMarkerType::chapter ? 12.0 : 10.0;
    const double h = 16.0;
    return QRectF(x - w / 2.0, viewRect.bottom() - h, w, h);
}

void AETimeLine::checkClicOnMarkers(const AEMouseEvent& event) {
    if (markeriInspectorOpen) return;
    const QPointF at = toLaneSpace(event);
    for (const auto& item : getCollectedItems()) {
        const QRectF viewRect = getItemRect(item);
        if (viewRect.isEmpty()) continue;
        for (const auto* list : {&item->markers, &item->asset->markers}) {
            for (const auto& marker : *list) {
                if (!marker->clicOnIt(item->range.i, item->range.o)) continue;
                const double x = timeToX(marker->inTime + item->inTime - item->range.i);
                const QRectF r = getMarkerRect(viewRect, x, marker->type);
                if (at.x() >= r.left() && at.x() <= r.right() && at.y() >= r.top() && at.y() <= r.bottom()) {
                    inspectMarker(marker);
                    return;
                }
            }
        }
    }
}

QRectF AETimeLine::getItemRect(const Item& item, const std::optional<AETimeRange>& assetRange) {
    const VSRange visible =
        virtualScroller ? virtualScroller->visibleRange : VSRange{currentViewRange.i, currentViewRange.o};
    const double end = item->isBGM() ? std::min(item->outTime(), item->bgmOutTime) : item->outTime();
    double from = std::max(item->inTime, visible.i);
    double to = std::min(end, visible.o);
    if (assetRange) {
        from = std::max(from, item->assetTimeToGlobalTime(assetRange->i));
        to = std::min(to, item->assetTimeToGlobalTime(assetRange->o));
    }
    auto ys = laneToYs(item->lane);
    if (!ys) {
        // A lane not laid out yet: lay the lanes out rather than fail.
        AETimeLineLanesHelper::cleanLanes(*this);
        ys = laneToYs(item->lane);
        if (!ys) {
            AETimeLineLanesHelper::setBGM(*this);
            ys = laneToYs(item->lane);
        }
        if (!ys) return {};
    }
    const double left = timeToX(from);
    const double right = timeToX(to);
    if (!(right > left)) return {};
    return QRectF(left, ys->first, right - left, ys->second - ys->first);
}

void AETimeLine::addDragHandles(const Item& item) {
    const double end = item->isBGM() ? std::min(item->outTime(), item->bgmOutTime) : item->outTime();
    const double x0 = timeToX(item->inTime);
    const double x1 = timeToX(end);
    if (x1 - x0 < kHandlesMinWidth) return;
    const auto ys = laneToYs(item->lane);
    if (!ys) return;
    const double handle = std::min(x1 - x0, kHandleWidth);
    const double perPixel = xToTime(1.0, true, false);
    const double assetEnd = item->asset ? item->asset->duration : item->range.o;
    std::weak_ptr<AETimeLineItem> weak = item;
    const auto make = [&](double x, int64_t tag, double minX, double maxX, auto routine) {
        auto area = std::make_shared<DragAreaItem>();
        area->rect = QRectF(x, ys->first, handle, ys->second - ys->first);
        area->tag = tag;
        area->pixelX2ValueK = perPixel;
        area->minX = minX;
        area->maxX = maxX;
        area->callback = [weak, routine](DragAction action, QPointF delta) {
            if (auto it = weak.lock()) ((*it).*routine)(action, delta);
        };
        dragAreaView->dragAreas.push_back(std::move(area));
    };
    const double length = item->range.duration();
    make(x0, -1, -item->range.i, length - kMinimalRange, &AETimeLineItem::dragIn);
    make(x1 - handle, 1, -(length - kMinimalRange), assetEnd - item->range.o, &AETimeLineItem::dragOut);
}
