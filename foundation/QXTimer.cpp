#include "foundation/QXTimer.h"

#include "foundation/Execution.h"
#include "foundation/Log.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QTimer>
#include <QUuid>
#include <algorithm>
#include <cmath>
#include <mutex>
#include <vector>

namespace {
std::mutex listMutex;
// Never destroyed: records held by other statics stop their timers while the process exits.
std::vector<std::shared_ptr<QXTimer>>& timerList = *new std::vector<std::shared_ptr<QXTimer>>();
std::atomic<int> madeCount{0};

QString newTimerId() {
    return QString::fromLatin1(
        QCryptographicHash::hash(QUuid::createUuid().toByteArray(), QCryptographicHash::Md5).toHex());
}

// Posted work keeps its order, so a start posted before a stop is handled before it.
void onMain(std::function<void()> work) {
    XMain::execute(std::move(work), true);
}

Qt::TimerType timerTypeFor(double interval, std::optional<double> tolerance) {
    return tolerance && *tolerance >= 0.05 * interval ? Qt::CoarseTimer : Qt::PreciseTimer;
}

int milliseconds(double seconds) {
    return static_cast<int>(
        std::clamp(std::llround(seconds * 1000.0), 0LL, static_cast<long long>(INT32_MAX)));
}
} // namespace

QXTimer::QXTimer(const QString& name, bool looping, double interval, std::optional<double> tolerance,
                 std::function<void()> closure)
    : id(newTimerId()), name(name.isEmpty() ? "fireOnce." + id : name), looping(looping), interval(interval),
      tolerance(tolerance), closure_(std::move(closure)) {
    ++madeCount;
}

std::shared_ptr<QXTimer> QXTimer::make(const QString& name, bool doLoop, double interval,
                                       std::optional<double> tolerance, bool triggerImmediately,
                                       std::function<void()> closure) {
    std::shared_ptr<QXTimer> timer(new QXTimer(name, doLoop, interval, tolerance, std::move(closure)));
    timer->begin(triggerImmediately);
    return timer;
}

std::shared_ptr<QXTimer> QXTimer::make(const QString& name, bool doLoop, double interval,
                                       bool triggerImmediately, std::function<void()> closure) {
    return make(name, doLoop, interval, std::nullopt, triggerImmediately, std::move(closure));
}

std::shared_ptr<QXTimer> QXTimer::loop(const QString& name, double interval, std::optional<double> tolerance,
                                       bool triggerImmediately, std::function<void()> closure) {
    return make(name, true, interval, tolerance, triggerImmediately, std::move(closure));
}

std::shared_ptr<QXTimer> QXTimer::loop(const QString& name, double interval, bool triggerImmediately,
                                       std::function<void()> closure) {
    return make(name, true, interval, std::nullopt, triggerImmediately, std::move(closure));
}

std::shared_ptr<QXTimer> QXTimer::fireOnce(double interval, bool triggerImmediately,
                                           std::function<void()> closure) {
    return make(QString(), false, interval, std::nullopt, triggerImmediately, std::move(closure));
}

std::vector<std::shared_ptr<QXTimer>> QXTimer::takeOut(const std::function<bool(const QXTimer&)>& matches) {
    std::vector<std::shared_ptr<QXTimer>> taken;
    std::erase_if(timerList, [&](const std::shared_ptr<QXTimer>& timer) {
        if (!matches(*timer)) return false;
        timer->running_ = false;
        taken.push_back(timer);
        return true;
    });
    return taken;
}

void QXTimer::begin(bool triggerImmediately) {
    std::vector<std::shared_ptr<QXTimer>> replaced;
    {
        std::lock_guard lock(listMutex);
        replaced = takeOut([this](const QXTimer& t) { return t.name == name; });
        running_ = true;
        timerList.push_back(shared_from_this());
    }
    for (const auto& timer : replaced)
        timer->releasePlatformTimer();
    onMain([self = shared_from_this()] { self->createPlatformTimer(); });
    printReport();
    if (triggerImmediately && closure_) closure_();
}

void QXTimer::createPlatformTimer() {
    if (!running_) return;
    // Parented to the application so that whatever is left at exit is freed with it.
    timer_ = new QTimer(QCoreApplication::instance());
    timer_->setSingleShot(!looping);
    timer_->setTimerType(timerTypeFor(interval, tolerance));
    timer_->setInterval(milliseconds(interval));
    QObject::connect(timer_, &QTimer::timeout, timer_, [weak = weak_from_this()] {
        if (auto self = weak.lock()) self->tick();
    });
    timer_->start();
}

void QXTimer::releasePlatformTimer() {
    onMain([self = shared_from_this()] {
        if (!self->timer_) return;
        self->timer_->stop();
        // Possibly inside this timer's own timeout: let the loop delete it.
        self->timer_->deleteLater();
        self->timer_ = nullptr;
    });
}

void QXTimer::tick() {
    if (!running_) return;
    if (!looping) stop();
    if (closure_) closure_();
}

void QXTimer::stop() {
    const auto self = shared_from_this(); // the list may hold the last other reference
    {
        std::lock_guard lock(listMutex);
        takeOut([this](const QXTimer& t) { return &t == this; });
    }
    releasePlatformTimer();
}

void QXTimer::stopByName(const QString& name) {
    std::vector<std::shared_ptr<QXTimer>> named;
    {
        std::lock_guard lock(listMutex);
        named = takeOut([&name](const QXTimer& t) { return t.name == name; });
    }
    for (const auto& timer : named)
        timer->releasePlatformTimer();
}

QStringList QXTimer::getTimerNameList() {
    std::lock_guard lock(listMutex);
    QStringList names;
    for (const auto& timer : timerList)
        names << timer->name;
    return names;
}

void QXTimer::printReport() {
    const QStringList names = getTimerNameList();
    qxLog("QXTimer report: " + QString::number(names.size()) + " running: " + names.join(", "));
}

int QXTimer::timerCount() {
    return madeCount;
}
