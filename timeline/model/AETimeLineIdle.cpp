// The timeline's timers: drawing when asked, the fast tick of displays and scroller, and the
// once-a-second housekeeping of lanes.
#include "foundation/Execution.h"
#include "foundation/QXTimer.h"
#include "foundation/Timecode.h"
#include "project/model/AEAsset.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AERuler.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/VirtualScroller.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <algorithm>

namespace {

// Timer closures hold the timeline weakly: a timeline that goes away takes its ticks with it.
std::function<void()> onTimeline(const std::weak_ptr<AETimeLine>& weak, void (AETimeLine::*routine)()) {
    return [weak, routine] {
        if (auto self = weak.lock()) ((*self).*routine)();
    };
}

} // namespace

void AETimeLine::startTimers() {
    std::weak_ptr<AETimeLine> weak = weak_from_this();
    commonIdleTimer = QXTimer::loop("AETimeLine.commonIdle", commonIdleInterval, false,
                                    onTimeline(weak, &AETimeLine::idle));
    if (timelineEditor == AETimelineEditor::normal)
        lowPriorityIdleTimer = QXTimer::loop("AETimeLine.lowPriorityIdle", lowPriorityIdleInterval, false,
                                             onTimeline(weak, &AETimeLine::lowPriorityidle));
    commonFastIdleTimer = QXTimer::loop("AETimeLine.commonFastIdle", commonFastIdleInterval, false,
                                        onTimeline(weak, &AETimeLine::idleFast));
}

void AETimeLine::stopTimers() {
    for (const auto& timer : {playIdleTimer, lowPriorityIdleTimer, commonIdleTimer, commonFastIdleTimer})
        if (timer) timer->stop();
}

void AETimeLine::idle() {
    if (idleR) return;
    idleR = true;
    if (mustDraw) {
        draw();
        drawPlayhead();
    }
    idleR = false;
}

void AETimeLine::idleFast() {
    if (idleFastR) return;
    idleFastR = true;
    updateTimeCodeViewer();
    if (virtualScroller) virtualScroller->idle();
    if (drag->dragging) draw();
    idleFastR = false;
}

void AETimeLine::lowPriorityidle() {
    if (timelineEditor != AETimelineEditor::normal) return;
    mustDraw = true;
    // The housekeeping is handed to a later turn of the main loop rather than another thread, so it
    // never meets an edit half way.
    std::weak_ptr<AETimeLine> weak = weak_from_this();
    XMain::asyncExecute([weak] {
        auto self = weak.lock();
        if (!self) return;
        AETimeLineLanesHelper::cleanLanes(*self);
        for (const auto& item : self->getCollectedItems())
            if (!item->asset->userBool) item->asset->userBool = true;
    });
}

void AETimeLine::draw() {
    if (drawing) return;
    drawing = true;
    mustDraw = false;
    QElapsedTimer clock;
    clock.start();
    if (drawDelegate) drawDelegate();
    if (view && view->ruler && virtualScroller)
        view->ruler->setRange(AETimeRange(virtualScroller->visibleRange.i, virtualScroller->visibleRange.o));
    drawActiveCut();
    drawing = false;
    drawTime = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    lastLength = currentViewRange.duration();
    lastCheck = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

void AETimeLine::forceDraw() {
    mustDraw = true;
    idleFast();
}

double AETimeLine::getPlayHeadTime() {
    if (playing) {
        const auto now = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
        currentPHTime = playStartedAtPos + (now - playStartedAt) * playSpeedRate / 1000.0;
    }
    return currentPHTime;
}

void AETimeLine::setPlayheadTime(double time, bool center) {
    currentPHTime = time;
    if (playing) {
        // A seek while playing restarts the clock from the new place.
        playStartedAt = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
        playStartedAtPos = time;
    }
    if (center) centerToPlayHead();
    drawPlayhead();
    updateTimeCodeViewer();
    mustDraw = true;
}

void AETimeLine::pause() {
    getPlayHeadTime();
    playing = false;
    if (playIdleTimer) playIdleTimer->stop();
    for (const auto& item : getCollectedItems())
        item->playing = false;
    setSpeedRate(1.0);
    allItemsPlayIdleR = false;
    if (virtualScroller) virtualScroller->magnificationAllowed = true;
}

void AETimeLine::setSpeedRate(double rate) {
    playSpeedRate = rate;
    for (const auto& item : getCollectedItems())
        item->playSpeedRate = rate;
}

void AETimeLine::hideEphemeral() {
    if (view && view->ephemeralPlayhead) view->ephemeralPlayhead->hidden = true;
    if (hideEphemeralCallback) hideEphemeralCallback();
}

void AETimeLine::showEphemeral() {
    if (view && view->ephemeralPlayhead) view->ephemeralPlayhead->hidden = false;
}

void AETimeLine::drawPlayhead() {
    if (!view || !view->playhead) return;
    AEPlayHead& head = *view->playhead;
    head.currentTime = currentPHTime;
    head.x = timeToX(currentPHTime) - head.originX;
    head.hidden = !playheadVisible();
}

void AETimeLine::updateTimeCodeViewer() {
    if (!view) return;
    view->mainTimecodeText = tc_getFloatTimecode(std::max(0.0, getPlayHeadTime()));
    view->durationText = tc_getFloatTimecode(getTimelineOutTime());
}
