#include "foundation/Execution.h"

#include "foundation/QXTimer.h"

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>
#include <algorithm>
#include <thread>
#include <utility>

namespace {
struct WidePool : QThreadPool {
    WidePool() { setMaxThreadCount(std::max(64, QThread::idealThreadCount())); }
};

QThreadPool& pool() {
    static WidePool instance;
    return instance;
}

// A started fork, and the work wrapped to end it.
std::pair<std::shared_ptr<Fork>, std::function<void()>> forked(std::function<void()> work) {
    auto fork = std::make_shared<Fork>();
    fork->start();
    return {fork, [fork, work = std::move(work)] {
                work();
                fork->end();
            }};
}

template <typename Condition> void spinUntil(Condition condition) {
    while (!condition())
        std::this_thread::yield();
}

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

QString watchdogName(const QString& id) {
    return "TimeOut." + id;
}
} // namespace

void Queue::execute(std::function<void()> closure, bool fast) {
    pool().start(std::move(closure), fast ? 1 : 0);
}

void Parallelize::execute(std::function<void()> a, std::function<void()> b) {
    auto [fork, task] = forked(std::move(a));
    Queue::execute(std::move(task));
    b();
    fork->join();
}

void Serialize::execute(std::function<void()> closure) {
    auto [fork, task] = forked(std::move(closure));
    Queue::execute(std::move(task));
    fork->join();
}

void Fork::start() {
    done = false;
    started = true;
}

void Fork::end() {
    done = true;
}

void Fork::join() {
    if (!started) return;
    spinUntil([this] { return done.load(); });
    started = false;
}

bool Fork::timeoutJoin(double seconds) {
    if (!started) return true;
    const auto begin = std::chrono::steady_clock::now();
    spinUntil([&] { return done.load() || secondsSince(begin) > seconds; });
    started = false;
    return done;
}

void MultiFork::startThread() {
    ++activeThreads;
}

void MultiFork::end() {
    --activeThreads;
}

void MultiFork::join() {
    spinUntil([this] { return activeThreads.load() <= 0; });
}

void Hold::hold() {
    status = Status::held;
}

void Hold::release() {
    status = Status::released;
}

void Hold::waitForRelease() {
    spinUntil([this] { return status.load() == Status::released; });
}

bool XMain::isMain() {
    const auto* app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

void XMain::execute(std::function<void()> closure, bool async) {
    if (isMain()) {
        closure();
        return;
    }
    if (async) {
        asyncExecute(std::move(closure));
        return;
    }
    auto [fork, task] = forked(std::move(closure));
    asyncExecute(std::move(task));
    fork->join();
}

void XMain::asyncExecute(std::function<void()> closure) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(closure), Qt::QueuedConnection);
}

std::shared_ptr<QXTimer> XMain::executeOnceIn(double seconds, std::function<void()> closure) {
    return QXTimer::fireOnce(seconds, false, std::move(closure));
}

void XMain::queue(std::function<void()> work, std::function<void()> completion) {
    Queue::execute([work = std::move(work), completion = std::move(completion)]() mutable {
        work();
        asyncExecute(std::move(completion));
    });
}

bool TimeOut::execute(double seconds, std::function<void()> work, std::function<void()> onTimeout) {
    auto [fork, task] = forked(std::move(work));
    Queue::execute(std::move(task));
    if (fork->timeoutJoin(seconds)) return true;
    onTimeout();
    return false;
}

void TimeOut::execute(const QString& id, double seconds, std::function<void()> onTimeout) {
    QXTimer::make(watchdogName(id), false, seconds, false, std::move(onTimeout));
}

void TimeOut::cancel(const QString& id) {
    QXTimer::stopByName(watchdogName(id));
}

void QXStopwatch::start() {
    currentSliceStartTime = std::chrono::steady_clock::now();
}

void QXStopwatch::pause() {
    elapsedTime += currentSlice();
    currentSliceStartTime.reset();
}

double QXStopwatch::currentSlice() const {
    return currentSliceStartTime ? secondsSince(*currentSliceStartTime) : 0.0;
}
