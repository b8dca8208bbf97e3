#pragma once
// Named timers on the main event loop. Every running timer sits in the class-wide timerList, which
// keeps it alive without an owner; stop() (or the single shot of fireOnce) takes it out. One name
// has at most one running timer: starting another under the same name stops the first.
// Any thread may start or stop a timer; the platform timer itself is created, fired and destroyed
// on the main thread only, so ticks always run there. After stop() returns no new tick begins.
// Needs the application object.

#include <QPointer>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QTimer;

class QXTimer : public std::enable_shared_from_this<QXTimer> {
public:
    const QString id;
    const QString name;
    const bool looping;
    const double interval; // seconds
    // Seconds of allowed lateness. Unset, or under 5% of the interval, asks for a precise timer;
    // otherwise a coarse one, which lets the system batch wake-ups.
    const std::optional<double> tolerance;

    // doLoop chooses between loop and fireOnce; an empty name becomes "fireOnce.<id>".
    static std::shared_ptr<QXTimer> make(const QString& name, bool doLoop, double interval,
                                         std::optional<double> tolerance, bool triggerImmediately,
                                         std::function<void()> closure);
    static std::shared_ptr<QXTimer> make(const QString& name, bool doLoop, double interval,
                                         bool triggerImmediately, std::function<void()> closure);

    // With triggerImmediately the closure also runs once at once, on the calling thread.
    static std::shared_ptr<QXTimer> loop(const QString& name, double interval,
                                         std::optional<double> tolerance, bool triggerImmediately,
                                         std::function<void()> closure);
    static std::shared_ptr<QXTimer> loop(const QString& name, double interval, bool triggerImmediately,
                                         std::function<void()> closure);
    // Unnamed, so single shots never replace each other.
    static std::shared_ptr<QXTimer> fireOnce(double interval, bool triggerImmediately,
                                             std::function<void()> closure);

    void stop();
    bool isRunning() const { return running_; }

    static void stopByName(const QString& name);
    static QStringList getTimerNameList();
    // One log line: how many run, and their names.
    static void printReport();
    // Timers made since start-up.
    static int timerCount();

private:
    QXTimer(const QString& name, bool looping, double interval, std::optional<double> tolerance,
            std::function<void()> closure);
    void begin(bool triggerImmediately);
    // Caller holds the list lock. Marks the matching timers stopped and hands them back.
    static std::vector<std::shared_ptr<QXTimer>> takeOut(const std::function<bool(const QXTimer&)>& matches);
    void createPlatformTimer(); // main thread
    void releasePlatformTimer();
    void tick(); // main thread

    std::function<void()> closure_;
    std::atomic<bool> running_{false};
    QPointer<QTimer> timer_; // main thread only
};
