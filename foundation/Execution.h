#pragma once
// Background work and the joins that wait for it. Work runs on one process-wide pool, wide like
// the platform queues it stands in for: callers join on pool threads, so a pool only as wide as
// the cores could starve itself. Joins are busy waits (yielding the CPU) meant for short waits.
//
// A join on the main thread blocks the event loop until the work is done. Work that, meanwhile,
// calls XMain::execute without async waits for the main thread, which waits for it: a deadlock.
// Callers avoid that pairing; nothing here detects it.

#include <QString>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QXTimer;

namespace Queue {
// Runs the closure on the background pool; `fast` work is taken ahead of the rest.
void execute(std::function<void()> closure, bool fast = false);
} // namespace Queue

namespace Parallelize {
// `a` on the pool, `b` on the calling thread; returns when both are done.
void execute(std::function<void()> a, std::function<void()> b);
} // namespace Parallelize

namespace Serialize {
// Runs the closure on the pool and waits for it.
void execute(std::function<void()> closure);
} // namespace Serialize

// One piece of work to wait for. Any thread may call any member.
class Fork {
public:
    std::atomic<bool> started{false};
    std::atomic<bool> done{false};

    void start();
    void end();
    // Returns at once when never started; otherwise waits for end(), then forgets the start.
    void join();
    // Like join, but gives up after `seconds` of wall clock; true when end() came first.
    bool timeoutJoin(double seconds);
};

// Any number of pieces of work to wait for. Any thread may call any member.
class MultiFork {
public:
    std::atomic<int> activeThreads{0};

    void startThread();
    void end();
    void join();
};

// A gate: waitForRelease passes while released, which it is at first. Any thread.
class Hold {
public:
    enum class Status { held, released };
    std::atomic<Status> status{Status::released};

    void hold();
    void release();
    void waitForRelease();
};

namespace XMain {
bool isMain();
// On the main thread the closure runs at once. From another thread it is posted to the main
// thread and, unless async, the call returns after it has run. Needs a running event loop.
void execute(std::function<void()> closure, bool async = false);
// Always posted, even from the main thread: runs at a later turn of the event loop.
void asyncExecute(std::function<void()> closure);
// On the main thread after `seconds`; stop the timer to call it off.
std::shared_ptr<QXTimer> executeOnceIn(double seconds, std::function<void()> closure);
// `work` on the pool, then `completion` on the main thread; the caller does not wait.
void queue(std::function<void()> work, std::function<void()> completion);
} // namespace XMain

namespace TimeOut {
// Runs `work` on the pool and waits at most `seconds`. When time runs out first, `onTimeout` runs
// on the calling thread and the result is false; the work is not interrupted and ends on its own.
bool execute(double seconds, std::function<void()> work, std::function<void()> onTimeout);
// A watchdog: unless cancel(id) comes within `seconds`, `onTimeout` runs on the main thread.
// Arming an id again restarts its watch. Any thread.
void execute(const QString& id, double seconds, std::function<void()> onTimeout);
void cancel(const QString& id);
} // namespace TimeOut

// Accumulates the length of timed slices; one thread at a time.
class QXStopwatch {
public:
    std::optional<std::chrono::steady_clock::time_point> currentSliceStartTime;
    double elapsedTime = 0.0; // seconds of the closed slices

    void start();
    void pause();
    // Seconds of the running slice; 0 when paused.
    double currentSlice() const;
    double getDuration() const { return elapsedTime; }
};
