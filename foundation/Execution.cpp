#include "foundation/Execution.h"

#include "foundation/QXTimer.h"

#include <QCoreApplication>
#include <QEvent>
#include <QRunnable>
#include <QThread>
#include <QThreadPool>
#include <algorithm>
#include <thread>
#include <utility>

#if defined(__SANITIZE_THREAD__)
extern "C" void __tsan_acquire(void* addr);
extern "C" void __tsan_release(void* addr);
#endif

namespace {

// The pool and the main thread's queue hand work over inside Qt, whose locks ThreadSanitizer cannot
// see (Qt is not built with it). Each hand-over is an object built whole before it is announced and
// received before it runs, so what the sender wrote is not reported as racing with what the receiver
// reads. Other builds announce nothing.
void announce([[maybe_unused]] void* handOver) {
#if defined(__SANITIZE_THREAD__)
    __tsan_release(handOver);
#endif
}

void receive([[maybe_unused]] void* handOver) {
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(handOver);
#endif
}

class PoolWork : public QRunnable {
public:
    explicit PoolWork(std::function<void()> closure) : closure_(std::move(closure)) { announce(this); }
    void run() override {
        receive(this);
        closure_();
    }

private:
    std::function<void()> closure_;
};

class MainCall : public QEvent {
public:
    explicit MainCall(std::function<void()> closure) : QEvent(type()), closure(std::move(closure)) {
        announce(this);
    }
    static QEvent::Type type() {
        static const auto registered = static_cast<QEvent::Type>(QEvent::registerEventType());
        return registered;
    }
    std::function<void()> closure;
};

// Receives the calls on the main thread, in the order they were posted.
class MainCaller : public QObject {
public:
    bool event(QEvent* event) override {
        if (event->type() != MainCall::type()) return QObject::event(event);
        receive(event);
        static_cast<MainCall*>(event)->closure();
        return true;
    }
};

MainCaller& mainCaller() {
    // Made by whichever thread asks first, then given to the main thread for good.
    static MainCaller* caller = [] {
        auto* made = new MainCaller;
        made->moveToThread(QCoreApplication::instance()->thread());
        return made;
    }();
    return *caller;
}

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
    pool().start(new PoolWork(std::move(closure)), fast ? 1 : 0);
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
    if (!QCoreApplication::instance()) return;
    QCoreApplication::postEvent(&mainCaller(), new MainCall(std::move(closure)));
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
