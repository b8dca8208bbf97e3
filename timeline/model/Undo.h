#pragma once
// Undo keeps whole snapshots of the timeline, taken before each undoable change. No depth limit,
// no redo, nothing persisted.

#include <memory>
#include <vector>

class AETimeLine;

class Undo {
public:
    std::vector<std::shared_ptr<AETimeLine>> queue;

    void addStatus(std::shared_ptr<AETimeLine> status);
    // Takes the latest snapshot off the queue; nothing when it is empty.
    std::shared_ptr<AETimeLine> getPreviousStatus();
};

// What the window's undo does to the model: the latest snapshot replaces `current`, taking over its
// scroller, callbacks and place as the selected episode's timeline. Gives the timeline now in use.
std::shared_ptr<AETimeLine> undoTimeline(const std::shared_ptr<AETimeLine>& current, Undo& undoQueue);
