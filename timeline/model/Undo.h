#pragma once
// Undo keeps whole snapshots of the timeline, taken before each undoable change; redo keeps the
// timelines that undo replaced. A new snapshot (a new change) forgets the redo side. No depth limit,
// nothing persisted. Main thread.

#include <memory>
#include <vector>

class AETimeLine;

class Undo {
public:
    std::vector<std::shared_ptr<AETimeLine>> queue;
    std::vector<std::shared_ptr<AETimeLine>> redoQueue;

    void addStatus(std::shared_ptr<AETimeLine> status);
    // Takes the latest snapshot off the queue; nothing when it is empty.
    std::shared_ptr<AETimeLine> getPreviousStatus();
    bool canUndo() const { return !queue.empty(); }
    bool canRedo() const { return !redoQueue.empty(); }
};

// What undo does to the model: the latest snapshot takes over `current`'s scroller, view and
// callbacks, and `current` goes to the redo side. Gives the timeline now in use; whoever holds
// "the current timeline" (the window, the episode, the lanes helper) is told by the caller.
std::shared_ptr<AETimeLine> undoTimeline(const std::shared_ptr<AETimeLine>& current, Undo& undoQueue);
// The reverse: the timeline undo replaced comes back, and `current` is kept for undo again.
std::shared_ptr<AETimeLine> redoTimeline(const std::shared_ptr<AETimeLine>& current, Undo& undoQueue);
