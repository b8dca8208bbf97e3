#pragma once
// Two-level progress of a long job: phases, each with one subphase at a time. The job's thread
// moves it forward; a looping timer shows it on the main thread through the sinks of ProgViews,
// which a window fills (any of them may be empty; a job given no Prog reports nothing).
// State is guarded by a lock, so any thread may call any member; sinks run on the main thread.

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

class QXTimer;

enum class ProgType : int { single = 0, double_ = 1 }; // one bar, or phase and subphase bars

// How a subphase measures itself: steps counted, a fraction set by the job, the size reached by a
// file being written, or by several files together.
enum class SubPhaseType : int { counter = 0, percentage = 1, fileSize = 2, multiFile = 3 };

// Where a window shows a Prog. Bars take fractions 0...1.
struct ProgViews {
    std::function<void(const QString&)> phaseLabel;
    std::function<void(double)> phaseBarIndicator; // the total
    std::function<void(const QString&)> subPhaseLabel;
    std::function<void(double)> subPhaseBarIndicator;
    std::function<void(const QString&)> phaseDataLabel;    // "Phase 3 of 4"
    std::function<void(const QString&)> subPhaseDataLabel; // "12 of 40", "50%", "1.2 MB of 4.0 MB"
};

struct ProgState {
    ProgType type = ProgType::single;
    double updateInterval = 0.25; // seconds between refreshes of the views
    int nPhases = 1;
    int currentPhase = 0;      // 1 during the first phase
    int64_t finalFileSize = 0; // bytes the target files held at the last refresh
    SubPhaseType subPhaseType = SubPhaseType::percentage;
    int subPhaseCounter = 0;
    int subNPhases = 0; // steps of a counter subphase
    int64_t expectedFileSize = 0;
    double subPhasePercentage = 0.0; // 0...1
    QString targetFilePath;
    QStringList targetFilePaths;
    QString phaseTitle;
    QString subPhaseTitle;

    // Finished phases plus the share of the current one, 0...1.
    double getTotalPercentage() const;
};

class Prog : public std::enable_shared_from_this<Prog> {
public:
    static std::shared_ptr<Prog> make(ProgType type, ProgViews views, double updateInterval, int nPhases);
    ~Prog();

    // Opens the next phase and clears the subphase.
    void newPhase(const QString& label);
    // For a counter subphase, expectedFileSize is the number of steps.
    void newSubPhase(const QString& label, SubPhaseType type, int64_t expectedFileSize = 0,
                     const QString& targetFilePath = {}, const QStringList& targetFilePaths = {});
    void subPhaseSetCounter(int counter);
    void subPhaseSetPercentage(double value);
    void subPhaseSetRatio(double partial, double total);
    void clearSub();

    // Refreshes the views on the timer "Prog.updateUI"; one Prog shows at a time.
    void start();
    void stop();
    // One refresh now; main thread.
    void updateUI();

    double getTotalPercentage() const;
    ProgState state() const;

private:
    Prog(ProgType type, ProgViews views, double updateInterval, int nPhases);
    void clearSubLocked();

    const ProgViews views_;
    mutable std::mutex mutex_;
    ProgState state_;
    std::shared_ptr<QXTimer> timer_;
};
