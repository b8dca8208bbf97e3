#include "foundation/Prog.h"

#include "foundation/QXTimer.h"
#include "foundation/StrUt.h"

#include <QFileInfo>
#include <algorithm>

namespace {
QString megabytes(int64_t bytes) {
    return strUt_doubleToString(static_cast<double>(bytes) / 1e6, 1) + " MB";
}

QString percentText(double fraction) {
    return QString::number(static_cast<int>(fraction * 100.0)) + "%";
}

QString subPhaseData(const ProgState& s) {
    switch (s.subPhaseType) {
    case SubPhaseType::counter:
        return QString::number(s.subPhaseCounter) + " of " + QString::number(s.subNPhases);
    case SubPhaseType::percentage:
        return percentText(s.subPhasePercentage);
    case SubPhaseType::fileSize:
    case SubPhaseType::multiFile:
        return megabytes(s.finalFileSize) + " of " + megabytes(s.expectedFileSize);
    }
    return {};
}

int64_t sizeOnDisk(const ProgState& s) {
    if (s.subPhaseType == SubPhaseType::fileSize) return QFileInfo(s.targetFilePath).size();
    int64_t total = 0;
    for (const QString& path : s.targetFilePaths)
        total += QFileInfo(path).size();
    return total;
}

template <typename Value> void show(const std::function<void(Value)>& sink, const auto& value) {
    if (sink) sink(value);
}
} // namespace

double ProgState::getTotalPercentage() const {
    if (nPhases <= 0) return 0.0;
    const double total = (currentPhase - 1.0) / nPhases + subPhasePercentage / nPhases;
    return std::clamp(total, 0.0, 1.0);
}

Prog::Prog(ProgType type, ProgViews views, double updateInterval, int nPhases) : views_(std::move(views)) {
    state_.type = type;
    state_.updateInterval = updateInterval;
    state_.nPhases = nPhases;
}

std::shared_ptr<Prog> Prog::make(ProgType type, ProgViews views, double updateInterval, int nPhases) {
    return std::shared_ptr<Prog>(new Prog(type, std::move(views), updateInterval, nPhases));
}

Prog::~Prog() {
    stop();
}

void Prog::newPhase(const QString& label) {
    std::lock_guard lock(mutex_);
    clearSubLocked();
    ++state_.currentPhase;
    state_.phaseTitle = label;
}

void Prog::newSubPhase(const QString& label, SubPhaseType type, int64_t expectedFileSize,
                       const QString& targetFilePath, const QStringList& targetFilePaths) {
    std::lock_guard lock(mutex_);
    clearSubLocked();
    state_.subPhaseTitle = label;
    state_.subPhaseType = type;
    state_.expectedFileSize = expectedFileSize;
    state_.subNPhases = type == SubPhaseType::counter ? static_cast<int>(expectedFileSize) : 0;
    state_.targetFilePath = targetFilePath;
    state_.targetFilePaths = targetFilePaths;
}

void Prog::subPhaseSetCounter(int counter) {
    std::lock_guard lock(mutex_);
    state_.subPhaseCounter = counter;
    if (state_.subNPhases > 0)
        state_.subPhasePercentage = std::clamp(static_cast<double>(counter) / state_.subNPhases, 0.0, 1.0);
}

void Prog::subPhaseSetPercentage(double value) {
    std::lock_guard lock(mutex_);
    state_.subPhasePercentage = std::clamp(value, 0.0, 1.0);
}

void Prog::subPhaseSetRatio(double partial, double total) {
    subPhaseSetPercentage(total > 0 ? partial / total : 0.0);
}

void Prog::clearSub() {
    std::lock_guard lock(mutex_);
    clearSubLocked();
}

void Prog::clearSubLocked() {
    const ProgState blank;
    state_.finalFileSize = blank.finalFileSize;
    state_.subPhaseType = blank.subPhaseType;
    state_.subPhaseCounter = blank.subPhaseCounter;
    state_.subNPhases = blank.subNPhases;
    state_.expectedFileSize = blank.expectedFileSize;
    state_.subPhasePercentage = blank.subPhasePercentage;
    state_.targetFilePath = blank.targetFilePath;
    state_.targetFilePaths = blank.targetFilePaths;
    state_.subPhaseTitle = blank.subPhaseTitle;
}

void Prog::start() {
    const double interval = state().updateInterval;
    auto timer = QXTimer::loop("Prog.updateUI", interval, false, [weak = weak_from_this()] {
        if (auto prog = weak.lock()) prog->updateUI();
    });
    std::lock_guard lock(mutex_);
    timer_ = std::move(timer);
}

void Prog::stop() {
    std::shared_ptr<QXTimer> timer;
    {
        std::lock_guard lock(mutex_);
        timer = std::move(timer_);
    }
    if (timer) timer->stop();
}

void Prog::updateUI() {
    ProgState s = state();
    if (s.subPhaseType == SubPhaseType::fileSize || s.subPhaseType == SubPhaseType::multiFile) {
        const int64_t size = sizeOnDisk(s); // outside the lock: the job keeps going meanwhile
        std::lock_guard lock(mutex_);
        const bool sameTargets =
            state_.targetFilePath == s.targetFilePath && state_.targetFilePaths == s.targetFilePaths;
        if (sameTargets && state_.subPhaseType == s.subPhaseType) {
            state_.finalFileSize = size;
            if (state_.expectedFileSize > 0)
                state_.subPhasePercentage = std::clamp(
                    static_cast<double>(size) / static_cast<double>(state_.expectedFileSize), 0.0, 1.0);
        }
        s = state_;
    }
    show(views_.phaseLabel, s.phaseTitle);
    show(views_.phaseBarIndicator, s.getTotalPercentage());
    show(views_.phaseDataLabel,
         "Phase " + QString::number(s.currentPhase) + " of " + QString::number(s.nPhases));
    if (s.type == ProgType::single) return;
    show(views_.subPhaseLabel, s.subPhaseTitle);
    show(views_.subPhaseBarIndicator, s.subPhasePercentage);
    show(views_.subPhaseDataLabel, subPhaseData(s));
}

double Prog::getTotalPercentage() const {
    return state().getTotalPercentage();
}

ProgState Prog::state() const {
    std::lock_guard lock(mutex_);
    return state_;
}
