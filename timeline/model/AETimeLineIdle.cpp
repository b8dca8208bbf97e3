// The timeline's timers: drawing when asked, the fast tick of displays and scroller, the
// once-a-second housekeeping of lanes, and the transport's tick while playing.
#include "foundation/Execution.h"
#include "foundation/QXTimer.h"
#include "project/model/AEAsset.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AERuler.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/DragAreaView.h"
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

// One name has one running timer, so an asset's own editor ticks under names of its own: starting
// its timers must not stop the episode's.
QString timerName(const AETimeLine& tl, const QString& base) {
    return tl.timelineEditor == AETimelineEditor::normal ? base : base + "." + tl.id;
}

} // namespace

void AETimeLine::startTimers() {
    std::weak_ptr<AETimeLine> weak = weak_from_this();
    commonIdleTimer = QXTimer::loop(timerName(*this, "AETimeLine.commonIdle"), commonIdleInterval, false,
                                    onTimeline(weak, &AETimeLine::idle));
    if (timelineEditor == AETimelineEditor::normal)
        lowPriorityIdleTimer =
            QXTimer::loop(timerName(*this, "AETimeLine.lowPriorityIdle"), lowPriorityIdleInterval, false,
                          onTimeline(weak, &AETimeLine::lowPriorityidle));
    commonFastIdleTimer = QXTimer::loop(timerName(*this, "AETimeLine.commonFastIdle"), commonFastIdleInterval,
                                        false, onTimeline(weak, &AETimeLine::idleFast));
}

void AETimeLine::startPlayIdle() {
    std::weak_ptr<AETimeLine> weak = weak_from_this();
    // Triggered at once as well, so the first clips start without waiting for the tick.
    playIdleTimer = QXTimer::loop(timerName(*this, "AETimeLine.playingIdle"), playIdleInterval, true,
                                  onTimeline(weak, &AETimeLine::playingIdle));
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
    // Each item adds its handles again, at its new place.
    dragAreaView->dragAreas.clear();
    for (const auto& item : getCollectedItems())
        addDragHandles(item);
    if (view && view->ruler && virtualScroller)
        view->ruler->setRange(AETimeRange(virtualScroller->visibleRange.i, virtualScroller->visibleRange.o));
    if (drawDelegate) drawDelegate();
    drawActiveCut();
    dragIdle();
    drawing = false;
    drawTime = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    lastLength = currentViewRange.duration();
    lastCheck = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

void AETimeLine::forceDraw() {
    mustDraw = true;
    idleFast();
}
