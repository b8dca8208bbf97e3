#include "timeline/model/AEDrag.h"

#include "foundation/Log.h"

#include <algorithm>

void AEDrag::startDrag(double t, int64_t onLane, std::shared_ptr<AETimeLineItem> item) {
    qxLog("startDrag");
    active = true;
    dragging = true;
    startDragTime = t;
    lane = onLane;
    timelineItem = std::move(item);
}

void AEDrag::continueDrag(double t) {
    qxLog("continueDrag");
    dragging = true;
    active = true;
    currentDragTime = t;
    updateRange();
}

void AEDrag::stopDrag(double t) {
    qxLog("stopDrag");
    currentDragTime = t;
    dragging = false;
}

void AEDrag::setRange(const AETimeRange& newRange, int64_t onLane) {
    range = AETimeRange(std::max(0.0, newRange.i), newRange.o);
    active = true;
    dragging = false;
    lane = onLane;
}

void AEDrag::updateRange() {
    range = currentDragTime > startDragTime ? AETimeRange(startDragTime, currentDragTime)
                                            : AETimeRange(currentDragTime, startDragTime);
}
