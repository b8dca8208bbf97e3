#include "timeline/model/AEKeyframeView.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double kNeighbourGap = 0.001;

QRectF plotRect(const AEKeyframeView& view) {
    return view.screenRect ? view.screenRect->normalized() : QRectF();
}

// Both mappings invertible; otherwise there is nothing on screen to hit.
bool hasGeometry(const AEKeyframeView& view) {
    const QRectF r = plotRect(view);
    return r.width() > 0 && r.height() > 0 && view.timeRange.duration() != 0 && view.deltaValue() != 0;
}

bool held(AEKeyModifier key, Qt::KeyboardModifiers modifiers) {
    switch (key) {
    case AEKeyModifier::none:
        return false;
    case AEKeyModifier::control:
        return modifiers.testFlag(Qt::ControlModifier);
    case AEKeyModifier::option:
        return modifiers.testFlag(Qt::AltModifier);
    case AEKeyModifier::shift:
        return modifiers.testFlag(Qt::ShiftModifier);
    case AEKeyModifier::command:
        return modifiers.testFlag(Qt::MetaModifier);
    }
    return false;
}

// The dragged point's index: its pos when that still names it; code that edits the list directly
// leaves pos stale.
std::optional<size_t> indexOf(const std::vector<std::shared_ptr<AEKeyframe>>& points,
                              const std::shared_ptr<AEKeyframe>& point) {
    if (point->pos && *point->pos >= 0 && static_cast<size_t>(*point->pos) < points.size() &&
        points[static_cast<size_t>(*point->pos)] == point)
        return static_cast<size_t>(*point->pos);
    const auto found = std::find(points.begin(), points.end(), point);
    if (found == points.end()) return std::nullopt;
    return static_cast<size_t>(found - points.begin());
}
} // namespace

QSizeF AEKeyframeViewSetup::kfImageHalfSize() const {
    return kfImage ? QSizeF(kfImage->size()) / 2.0 : QSizeF(0, 0);
}

double AEKeyframeView::time2Loc(double t) const {
    const QRectF r = plotRect(*this);
    const double duration = timeRange.duration();
    if (duration == 0) return r.x();
    return (t - timeRange.i) * (r.width() / duration) + r.x();
}

double AEKeyframeView::loc2Time(double x) const {
    const QRectF r = plotRect(*this);
    if (r.width() == 0) return timeRange.i;
    return timeRange.i + (x - r.x()) * timeRange.duration() / r.width();
}

double AEKeyframeView::deltaValue() const {
    return maxValue.value_or(0) - minValue.value_or(0);
}

double AEKeyframeView::value2Loc(double v) const {
    const QRectF r = plotRect(*this);
    const double delta = deltaValue();
    if (delta == 0) return r.y();
    return (v - minValue.value_or(0)) / delta * r.height() + r.y();
}

double AEKeyframeView::loc2Value(double y) const {
    const QRectF r = plotRect(*this);
    if (r.height() == 0) return minValue.value_or(0);
    return (y - r.y()) / r.height() * deltaValue() + minValue.value_or(0);
}

std::shared_ptr<AEKeyframe> AEKeyframeView::selectedKeyframe(double x, double y) {
    if (!keyframes) return nullptr;
    for (const auto& k : keyframes->keyframes)
        k->selected = false;
    if (!hasGeometry(*this)) return nullptr;
    const QSizeF half = setup ? setup->kfImageHalfSize() : QSizeF(0, 0);
    auto nearest = keyframes->getNearestKeyframe(loc2Time(x));
    if (!nearest || std::fabs(x - time2Loc(nearest->time)) > 2.0 * half.width() ||
        std::fabs(y - value2Loc(nearest->value)) > 2.0 * half.height())
        return nullptr;
    nearest->selected = true;
    return nearest;
}

bool AEKeyframeView::mouseDown(const AEMouseEvent& e, QPointF deltaLoc) {
    deselect();
    if (!keyframes || keyframes->keyframes.empty()) return false;
    const QPointF loc = e.locationInWindow - deltaLoc;
    auto hit = selectedKeyframe(loc.x(), loc.y());
    if (!hit) return false;
    selectedEvent = e;
    startLocation = loc;
    lastLocation = loc;
    selectedKF = hit;
    selected = hit;
    hit->selected = true;
    if (keyframeDragDelegate) keyframeDragDelegate->volumeKFDragStart(loc, hit->value);
    return true;
}

void AEKeyframeView::mouseDrag(const AEMouseEvent& e, QPointF deltaLoc) {
    if (!selectedKF) return;
    const QPointF loc = e.locationInWindow - deltaLoc;
    double v = loc2Value(loc.y());
    const double module = keyFrameGridModule;
    // Truncation, not rounding: below zero the steps lean towards 0 dB.
    if (module > 0 && held(keyFrameGridKeyModifier, e.modifiers))
        v = std::trunc((v + module / 2.0) / module) * module;
    boundDraggingKF(loc2Time(loc.x()), v);
    lastLocation = loc;
    if (keyframeDragDelegate) keyframeDragDelegate->volumeKFDrag(loc, selectedKF->value);
    if (keyframeListModifiedCallback) keyframeListModifiedCallback();
}

void AEKeyframeView::mouseUp() {
    if (selectedKF && keyframeDragDelegate) keyframeDragDelegate->volumeKFDragStop();
    selectedKF = nullptr;
}

void AEKeyframeView::boundDraggingKF(double t, double v) {
    if (!selectedKF) return;
    if (minValue) v = std::max(v, *minValue);
    if (maxValue) v = std::min(v, *maxValue);
    selectedKF->value = v;
    if (keyframes) {
        const auto& points = keyframes->keyframes;
        if (const auto p = indexOf(points, selectedKF)) {
            if (*p > 0) t = std::max(t, points[*p - 1]->time + kNeighbourGap);
            if (*p + 1 < points.size()) t = std::min(t, points[*p + 1]->time - kNeighbourGap);
        }
    }
    selectedKF->time = t;
}

void AEKeyframeView::deselect() {
    if (keyframes)
        for (const auto& k : keyframes->keyframes)
            k->selected = false;
    selectedKF = nullptr;
}

void AEKeyframeView::deleteSelectedKFs() {
    if (!keyframes) return;
    std::erase_if(keyframes->keyframes, [](const auto& k) { return k->selected; });
    keyframes->sortKFs();
    if (keyframeListModifiedCallback) keyframeListModifiedCallback();
}

std::shared_ptr<AEKeyframeView> AEKeyframeView::duplicate() const {
    auto copy = std::make_shared<AEKeyframeView>();
    copy->setup = setup;
    copy->screenRect = screenRect;
    copy->timeRange = timeRange;
    copy->minValue = minValue;
    copy->maxValue = maxValue;
    copy->keyframes = keyframes;
    copy->keyFrameGridModule = keyFrameGridModule;
    copy->keyFrameGridKeyModifier = keyFrameGridKeyModifier;
    copy->keyframeDragDelegate = keyframeDragDelegate;
    copy->keyframeListModifiedCallback = keyframeListModifiedCallback;
    return copy;
}
