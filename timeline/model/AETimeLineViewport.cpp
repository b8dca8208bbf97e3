// The window of time the view shows, and the conversions between seconds, pixels and lanes.
#include "foundation/Log.h"
#include "foundation/StrUt.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AERuler.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/SimpleRound.h"
#include "timeline/model/VirtualScroller.h"

#include <algorithm>

namespace {

// The ruler and the bar above the lanes.
constexpr double kLanesTop = 72.0;

QString num(double v) {
    return strUt_doublePrint(v);
}

} // namespace

void AETimeLine::setView(double viewportWidth, double viewportHeight, QPointF origin, bool fromUndo,
                         std::shared_ptr<VirtualScroller> scroller) {
    qxLog("setView");
    stopTimers();
    view = std::make_shared<AETimeLineView>();
    view->viewportWidth = viewportWidth;
    view->viewportHeight = viewportHeight;
    view->playhead = AEPlayHead{};
    view->ephemeralPlayhead = AEPlayHead{};
    view->nearestCut = AEPlayHead{};
    view->ruler = std::make_shared<AERuler>();
    view->ruler->width = viewportWidth;
    deltaOrigin = origin;
    getRightBound();
    if (fromUndo && scroller)
        virtualScroller = std::move(scroller);
    else
        virtualScroller = std::make_shared<VirtualScroller>(id, VSRange{0, view->viewRightBound});
    // A scroller handed over from an earlier snapshot reports to the timeline now shown.
    std::weak_ptr<AETimeLine> weak = weak_from_this();
    virtualScroller->valueChangedCallback = [weak] {
        if (auto self = weak.lock()) self->updateViewAfterSomething();
    };
    view->vScroller = virtualScroller;
    startTimers();
}

double AETimeLine::timeToX(double t) const {
    const VSRange visible =
        virtualScroller ? virtualScroller->visibleRange : VSRange{currentViewRange.i, currentViewRange.o};
    const double width = view && view->viewportWidth > 0 ? view->viewportWidth : 1.0;
    const double k = visible.length() / width;
    return k == 0 ? 0 : (simpleRound(t) - visible.i) / k;
}

double AETimeLine::xToTime(double x, bool pure, bool round) const {
    const VSRange visible =
        virtualScroller ? virtualScroller->visibleRange : VSRange{currentViewRange.i, currentViewRange.o};
    const double width = view && view->viewportWidth > 0 ? view->viewportWidth : 1.0;
    double t = x * visible.length() / width;
    if (!pure) t += visible.i;
    return round ? simpleRound(t) : t;
}

std::optional<std::pair<double, double>> AETimeLine::laneToYs(int64_t n) const {
    const auto lane = getLane(n);
    if (!lane) return std::nullopt;
    return std::make_pair(lane->y, lane->y + lane->height);
}

std::shared_ptr<AELane> AETimeLine::getLane(int64_t n) const {
    for (const auto& lane : lanes)
        if (lane->n == n) return lane;
    return nullptr;
}

std::optional<int64_t> AETimeLine::yToLaneN(double y) const {
    const double inLanes = y - kLanesTop;
    for (const auto& lane : lanes)
        if (lane->y < inLanes && inLanes < lane->y + lane->height) return lane->n;
    return std::nullopt;
}

double AETimeLine::mouseEventToTime(const AEMouseEvent& event) const {
    return xToTime(event.locationInWindow.x());
}

std::optional<int64_t> AETimeLine::mouseEventToLane(const AEMouseEvent& event) const {
    return yToLaneN(event.locationInWindow.y());
}

void AETimeLine::addLane(int64_t n, double y, double height) {
    if (auto lane = getLane(n)) {
        lane->y = y;
        lane->height = height;
        return;
    }
    lanes.push_back(std::make_shared<AELane>(n, y, height));
}

void AETimeLine::setupLanes() {
    AETimeLineLanesHelper::setBGM(*this);
}

void AETimeLine::setViewportRange(double i, double o) {
    qxLog("setViewportRange (" + num(i) + ", " + num(o) + ")");
    if (virtualScroller) virtualScroller->setVisibleRange(i, o);
    mustDraw = true;
    hideActiveCut();
}

void AETimeLine::setViewportRangeAll() {
    const double bound = getRightBound();
    setViewportRange(0, bound);
    hideEphemeral();
    hideActiveCut();
    mustDraw = true;
}

void AETimeLine::centerToPlayHead() {
    qxLog("centerToPlayHead");
    if (!virtualScroller) return;
    const double length = virtualScroller->visibleRange.length();
    setViewportRange(currentPHTime - length / 2, currentPHTime + length / 2);
}

bool AETimeLine::playheadVisible() const {
    return currentViewRange.i <= currentPHTime && currentPHTime <= currentViewRange.o;
}

void AETimeLine::performMagnify(double newDuration, bool centerToPlayhead, bool fromZoom) {
    qxLog("performMagnify (" + num(newDuration) + ", " + (centerToPlayhead ? "true" : "false") + ", " +
          (fromZoom ? "true" : "false") + ")");
    const double minimum = view ? view->viewPortMinDuration : 1.0;
    const double d = std::max(newDuration, minimum);
    const double c = centerToPlayhead ? currentPHTime : currentViewRange.center();
    setViewportRange(c - d / 2, c + d / 2);
    hideEphemeral();
    hideActiveCut();
    mustDraw = true;
}

void AETimeLine::zoomIn(AEZoomTo phMode) {
    if (!virtualScroller) return;
    const bool toPlayhead =
        phMode == AEZoomTo::playhead || (phMode == AEZoomTo::playheadIfVisible && playheadVisible());
    performMagnify(virtualScroller->visibleRange.length() * 0.5, toPlayhead);
    hideEphemeral();
    hideActiveCut();
    mustDraw = true;
}

void AETimeLine::zoomOut(AEZoomTo phMode) {
    if (!virtualScroller) return;
    const bool toPlayhead =
        phMode == AEZoomTo::playhead || (phMode == AEZoomTo::playheadIfVisible && playheadVisible());
    performMagnify(virtualScroller->visibleRange.length() / 0.5, toPlayhead);
    hideEphemeral();
    hideActiveCut();
    mustDraw = true;
}

void AETimeLine::magnify(double amount, bool toPlayhead) {
    if (amount == 0 || !virtualScroller || !virtualScroller->magnificationAllowed) return;
    const double length = virtualScroller->visibleRange.length() * (1 - amount);
    if (toPlayhead || playing)
        virtualScroller->magnify(length, currentPHTime);
    else
        virtualScroller->magnify(length);
    hideEphemeral();
    hideActiveCut();
    setViewportRange(virtualScroller->visibleRange.i, virtualScroller->visibleRange.o);
}

void AETimeLine::shiftViewPort(double delta) {
    qxLog("shiftViewPort (" + num(delta) + ")");
    if (virtualScroller) virtualScroller->shiftVisibleRange(delta);
    hideEphemeral();
    hideActiveCut();
}

void AETimeLine::shiftLeft(std::optional<double> amount) {
    if (!virtualScroller) return;
    shiftViewPort(-virtualScroller->visibleRange.length() * 0.2 * amount.value_or(1.0));
}

void AETimeLine::shiftRight(std::optional<double> amount) {
    if (!virtualScroller) return;
    shiftViewPort(virtualScroller->visibleRange.length() * 0.2 * amount.value_or(1.0));
}

double AETimeLine::getRightBound() {
    const double end = getTimelineOutTime();
    const double halfVisible = virtualScroller ? virtualScroller->visibleRange.length() / 2 : 5.0;
    const double room = std::min({end * 0.05, 30.0, halfVisible});
    double bound = mainLane.empty() ? 10.0 : std::max(end + room, 1.0);
    bound = std::max(bound, 10.0);
    if (view) view->viewRightBound = bound;
    return bound;
}

void AETimeLine::setInsetViewSize() {
    qxLog("setInsetViewSize");
    const double bound = getRightBound();
    if (virtualScroller) virtualScroller->setTotalRange(0, bound);
}

void AETimeLine::updateViewAfterSomething() {
    if (virtualScroller)
        currentViewRange = AETimeRange(virtualScroller->visibleRange.i, virtualScroller->visibleRange.o);
    if (!playingIdleR) {
        hideActiveCut();
        hideEphemeral();
    }
    mustDraw = true;
}
