#include "cleaning/BrightwashBatch.h"

#include "cleaning/Brightwash.h"
#include "cleaning/BrightwashMC.h"
#include "dsp/SndFile.h"
#include "foundation/Execution.h"
#include "foundation/Log.h"

std::shared_ptr<BrightwashBatch> BrightwashBatch::make(const std::vector<BWBatchData>& batchData,
                                                       const std::vector<ProgViews>& views) {
    auto batch = std::shared_ptr<BrightwashBatch>(new BrightwashBatch());
    if (!batchData.empty()) batch->nPhases = Brightwash::getNphases(batchData.front().settings);
    for (size_t i = 0; i < batchData.size(); ++i) {
        const BWBatchData& entry = batchData[i];
        const SndFile probe(entry.filePath);
        const int channels = probe.isOpen() ? probe.channels() : 1;
        auto prog = Prog::make(ProgType::double_, i < views.size() ? views[i] : ProgViews{}, 0.25,
                               batch->nPhases * std::max(1, channels));
        batch->progList.push_back(prog);
        std::weak_ptr<BrightwashBatch> weak = batch;
        if (channels > 1) {
            batch->brightwasherList.push_back(nullptr);
            batch->mcList.push_back(BrightwashMC::make(
                entry.filePath, entry.settings,
                [weak, i](const QString&) {
                    if (auto b = weak.lock()) b->jobDone(i);
                },
                prog));
        } else {
            batch->mcList.push_back(nullptr);
            batch->brightwasherList.push_back(
                Brightwash::make(entry.filePath, entry.settings, prog, [weak, i](const QString&) {
                    if (auto b = weak.lock()) b->jobDone(i);
                }));
        }
    }
    batch->finished_.assign(batchData.size(), 0);
    batch->shown_.assign(batchData.size(), 0.0);
    return batch;
}

void BrightwashBatch::start(std::function<void()> callbackHandler) {
    callback = std::move(callbackHandler);
    qxLog("BrightwashBatch.start " + QString::number(count()) + " files");
    if (count() == 0) {
        if (callback) XMain::execute(callback, true);
        return;
    }
    for (size_t i = 0; i < count(); ++i) {
        if (auto& run = brightwasherList[i]) {
            Queue::execute([run] { run->start(); });
        } else {
            auto mc = mcList[i];
            Queue::execute([mc] { mc->start(); });
        }
    }
}

void BrightwashBatch::jobDone(size_t job) {
    {
        // A run on a missing file calls back twice, at its start and at its end: the first counts.
        const std::lock_guard lock(mutex_);
        if (finished_[job]) return;
        finished_[job] = 1;
    }
    end();
}

void BrightwashBatch::end() {
    int done = 0;
    {
        const std::lock_guard lock(mutex_);
        done = ++endN;
    }
    if (done != int(count())) return;
    for (const auto& prog : progList)
        prog->stop();
    if (callback) XMain::execute(callback, true);
}

double BrightwashBatch::progress(size_t job) const {
    const double now = progList[job]->getTotalPercentage();
    const std::lock_guard lock(mutex_);
    shown_[job] = finished_[job] ? 1.0 : std::max(shown_[job], now);
    return shown_[job];
}

double BrightwashBatch::getPercentage() const {
    if (count() == 0) return 1.0;
    double sum = 0.0;
    for (size_t i = 0; i < count(); ++i)
        sum += progress(i);
    return sum / double(count());
}

int BrightwashBatch::getCompleted() const {
    const std::lock_guard lock(mutex_);
    return endN;
}

bool BrightwashBatch::jobFinished(size_t job) const {
    const std::lock_guard lock(mutex_);
    return finished_[job] != 0;
}

QString BrightwashBatch::jobError(size_t job) const {
    if (!jobFinished(job)) return {};
    return brightwasherList[job] ? brightwasherList[job]->error() : mcList[job]->error();
}

QString BrightwashBatch::jobResultPath(size_t job) const {
    return brightwasherList[job] ? brightwasherList[job]->deliveredPath() : mcList[job]->dstPath;
}

void BrightwashBatch::cancel() {
    qxLog("BrightwashBatch.cancel");
    for (const auto& run : brightwasherList)
        if (run) run->cancel();
    for (const auto& mc : mcList)
        if (mc) mc->cancel();
}
