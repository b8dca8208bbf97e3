#pragma once
// Several files through the cleaning chain side by side, one pool thread each, each with its own Prog.
// A file with more than one channel goes through BrightwashMC (its channels cleaned apart), the others
// through Brightwash. A file that fails does so alone, with its reason in jobError().
//
// Built and started on one thread; the jobs end on theirs, and the last one to end posts the callback
// to the main thread. getPercentage, getCompleted, jobError and cancel may be called from any thread.

#include "cleaning/BrightwashSetting.h"
#include "foundation/Prog.h"

#include <QString>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class Brightwash;
class BrightwashMC;

struct BWBatchData {
    QString filePath;
    BrightwashSetting settings;
};

class BrightwashBatch : public std::enable_shared_from_this<BrightwashBatch> {
public:
    // views[i], when there, shows job i (the Progs are refreshed by their own timers only when the
    // caller starts them; a window may as well poll progress(i)).
    static std::shared_ptr<BrightwashBatch> make(const std::vector<BWBatchData>& batchData,
                                                 const std::vector<ProgViews>& views = {});

    std::vector<std::shared_ptr<Brightwash>> brightwasherList; // null where the file is multichannel
    std::vector<std::shared_ptr<BrightwashMC>> mcList;         // null where it is not
    int nPhases = 2;
    int endN = 0;
    std::vector<std::shared_ptr<Prog>> progList;
    std::function<void()> callback;

    void start(std::function<void()> callback = {});
    // Mean over the jobs, 0...1.
    double getPercentage() const;
    int getCompleted() const;
    size_t count() const { return progList.size(); }
    // Job `job`'s bar, 0...1. It never steps back, although a phase's estimate may.
    double progress(size_t job) const;
    // Empty while running and after success; the reason once job `i` has failed.
    QString jobError(size_t job) const;
    // Where job `i` leaves its result.
    QString jobResultPath(size_t job) const;
    bool jobFinished(size_t job) const;
    void end();
    // Stops every job: tool processes in flight are killed, temporary files go.
    void cancel();

private:
    BrightwashBatch() = default;
    void jobDone(size_t job);

    mutable std::mutex mutex_; // guards endN, finished_ and shown_
    std::vector<char> finished_;
    mutable std::vector<double> shown_;
};
