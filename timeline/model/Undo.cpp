#include "timeline/model/Undo.h"

#include "foundation/Log.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineLanesHelper.h"

namespace {

// `next` becomes the timeline in use in place of `current`.
std::shared_ptr<AETimeLine> takeOver(const std::shared_ptr<AETimeLine>& current,
                                     const std::shared_ptr<AETimeLine>& next) {
    current->pause();
    current->stopTimers();
    next->refillMainLaneInTime();
    AETimeLineLanesHelper::loadSetup();
    if (current->view) {
        next->setView(current->view->viewportWidth, current->view->viewportHeight, current->deltaOrigin, true,
                      current->virtualScroller);
        next->view->autoScroll = current->view->autoScroll;
    }
    next->draw();
    next->undoDoCallback = current->undoDoCallback;
    next->drawDelegate = current->drawDelegate;
    next->markerInspectorPresenter = current->markerInspectorPresenter;
    next->markerListUpdater = current->markerListUpdater;
    next->getCollectedItems();
    next->setupLanes();
    next->hideEphemeralCallback = current->hideEphemeralCallback;
    return next;
}

} // namespace

void Undo::addStatus(std::shared_ptr<AETimeLine> status) {
    queue.push_back(std::move(status));
    redoQueue.clear();
    qxLog("addStatus: " + QString::number(queue.size()));
}

std::shared_ptr<AETimeLine> Undo::getPreviousStatus() {
    qxLog("getPreviousStatus: " + QString::number(queue.size()));
    if (queue.empty()) return nullptr;
    auto last = std::move(queue.back());
    queue.pop_back();
    return last;
}

std::shared_ptr<AETimeLine> undoTimeline(const std::shared_ptr<AETimeLine>& current, Undo& undoQueue) {
    auto snapshot = undoQueue.getPreviousStatus();
    if (!snapshot) {
        qxLog("Cannot undo");
        return current;
    }
    undoQueue.redoQueue.push_back(current);
    return takeOver(current, snapshot);
}

std::shared_ptr<AETimeLine> redoTimeline(const std::shared_ptr<AETimeLine>& current, Undo& undoQueue) {
    if (undoQueue.redoQueue.empty()) {
        qxLog("Cannot redo");
        return current;
    }
    auto next = std::move(undoQueue.redoQueue.back());
    undoQueue.redoQueue.pop_back();
    // Not addStatus: that would forget the rest of the redo side.
    undoQueue.queue.push_back(current);
    return takeOver(current, next);
}
