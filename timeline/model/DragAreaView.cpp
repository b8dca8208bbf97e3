#include "timeline/model/DragAreaView.h"

#include <algorithm>

std::shared_ptr<DragAreaItem> DragAreaView::mouseOver(QPointF location) const {
    if (!active) return nullptr;
    for (const auto& area : dragAreas)
        if (area->rect.contains(location)) return area;
    return nullptr;
}

bool DragAreaView::mouseDown(QPointF location) {
    activeDrag = mouseOver(location);
    if (!activeDrag) return false;
    origin = location;
    status = DragAction::started;
    activeDrag->status = DragAction::started;
    previousPoint = origin;
    totalDrag = QPointF(0, 0);
    if (activeDrag->callback) activeDrag->callback(DragAction::started, origin);
    return true;
}

bool DragAreaView::mouseMoved(QPointF location) {
    if (!activeDrag || status == DragAction::null) return false;
    step(location, DragAction::continued);
    return true;
}

bool DragAreaView::mouseUp(QPointF location) {
    if (!activeDrag || status == DragAction::null) return false;
    step(location, DragAction::ended);
    status = DragAction::null;
    activeDrag->status = DragAction::null;
    activeDrag = nullptr;
    return true;
}

void DragAreaView::step(QPointF location, DragAction action) {
    const DragAreaItem& area = *activeDrag;
    const QPointF pixels = location - previousPoint;
    const QPointF wanted(pixels.x() * area.pixelX2ValueK, pixels.y() * area.pixelY2ValueK);
    // The step is what keeps the running total inside the limits, so an overshoot is not carried.
    const QPointF total(std::clamp(totalDrag.x() + wanted.x(), area.minX, std::max(area.minX, area.maxX)),
                        std::clamp(totalDrag.y() + wanted.y(), area.minY, std::max(area.minY, area.maxY)));
    const QPointF delta = total - totalDrag;
    totalDrag = total;
    status = action;
    activeDrag->status = action;
    if (area.callback) area.callback(action, delta);
    previousPoint = location;
}
