#include "timeline/model/Undo.h"

#include "foundation/Log.h"
#include "project/model/AEEpisode.h"
#include "project/model/Globals.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineLanesHelper.h"

void Undo::addStatus(std::shared_ptr<AETimeLine> status) {
    queue.push_back(std::move(status));
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
    current->pause();
    current->stopTimers();
    snapshot->refillMainLaneInTime();
    AETimeLineLanesHelper::loadSetup();
    if (current->view) {
        snapshot->setView(current->view->viewportWidth, current->view->viewportHeight, current->deltaOrigin,
                          true, current->virtualScroller);
        snapshot->view->autoScroll = current->view->autoScroll;
    }
    snapshot->draw();
    snapshot->undoDoCallback = current->undoDoCallback;
    AETimeLineLanesHelper::timeline = snapshot;
    if (AEEpisodeSelected && AEEpisodeSelected->timeline == current) AEEpisodeSelected->timeline = snapshot;
    snapshot->getCollectedItems();
    snapshot->setupLanes();
    snapshot->hideEphemeralCallback = current->hideEphemeralCallback;
    return snapshot;
}
