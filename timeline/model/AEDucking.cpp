#include "timeline/model/AEDucking.h"

#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDucking.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <algorithm>
#include <atomic>

namespace {

std::atomic<int> inFlight{0};
uint64_t lastSerial = 0; // main thread

bool enabled(const AEDuckingSettings& what, AEAssetType type) {
    switch (type) {
    case AEAssetType::speech:
        return what.duckToSpeech;
    case AEAssetType::effect:
        return what.duckToSFX;
    case AEAssetType::jingle:
        return what.duckToJingles;
    case AEAssetType::ad:
        return what.duckToAdv;
    default:
        return false;
    }
}

int typeOrder(AEAssetType type) {
    const AEAssetType order[] = {AEAssetType::speech, AEAssetType::effect, AEAssetType::jingle,
                                 AEAssetType::ad};
    return static_cast<int>(std::find(std::begin(order), std::end(order), type) - std::begin(order));
}

std::vector<AEDuckingJob::Point> pointsOf(const AEKeyframeList& list) {
    std::vector<AEDuckingJob::Point> points;
    points.reserve(list.keyframes.size());
    for (const auto& kf : list.keyframes)
        points.push_back({kf->time, kf->value, kf->flag0, kf->flag1});
    return points;
}

// The earlier job's points go with their gain twins: the gain list, which playback reads, would
// otherwise keep every dip of every job and grow with each re-duck of a long bed.
void removeDuckingPoints(AEKeyframeList& kfs) {
    std::vector<float> times;
    for (const auto& kf : kfs.keyframes)
        if (kf->flag1) times.push_back(static_cast<float>(kf->time));
    if (times.empty()) return;
    kfs.removeByFlag(1);
    std::erase_if(kfs.keyframesPerc, [&](const auto& twin) {
        return std::binary_search(times.begin(), times.end(), twin->time);
    });
    kfs.sortKFs();
}

// The hand-made points of the item's envelope that the job did not see, or that an earlier job
// already carried over.
std::vector<AEDuckingJob::Point> madeDuring(const AEDuckingJob& job, const AEKeyframeList& now) {
    std::vector<AEDuckingJob::Point> made;
    const auto& before = job.inputs.envelope;
    for (const auto& point : pointsOf(now)) {
        if (point.flag1) continue;
        const bool carried = std::any_of(job.madeDuringJob.begin(), job.madeDuringJob.end(),
                                         [&](const auto& p) { return p.time == point.time; });
        if (carried || std::find(before.begin(), before.end(), point) == before.end()) made.push_back(point);
    }
    return made;
}

void duckOverAnalysedAsset(const QString& assetId);

void start(const std::shared_ptr<AETimeLineItem>& item, AETimeLine& timeline,
           std::vector<AEDuckingJob::Point> madeDuringJob) {
    if (!AEAssetDucking::analysedObserver) AEAssetDucking::analysedObserver = duckOverAnalysedAsset;
    auto job = std::make_shared<AEDuckingJob>(AEDucking::snapshot(item, timeline));
    job->madeDuringJob = std::move(madeDuringJob);
    ++inFlight;
    XMain::queue([job] { AEDucking::compute(*job); },
                 [job] {
                     --inFlight;
                     AEDucking::apply(*job);
                 });
}

// A new analysis lets the music over that asset dip without waiting for the next edit.
void duckOverAnalysedAsset(const QString& assetId) {
    for (const auto& timeline : AETimeLine::tlList()) {
        const bool uses =
            std::any_of(timeline->mainLane.begin(), timeline->mainLane.end(),
                        [&](const auto& item) { return item->asset && item->asset->id == assetId; });
        if (!uses) continue;
        for (const auto& item : timeline->attachedItems)
            if (item->ducked) AEDucking::duck(item, *timeline);
    }
}

} // namespace

int AEDucking::jobsInFlight() {
    return inFlight.load();
}

QXOnOffList AEDucking::clustersInTimeline(const QXOnOffList& analysis, double inTime,
                                          const AETimeRange& range) {
    QXOnOffList list = analysis.getListByRange(range.i, range.o);
    list.offset = inTime - range.i;
    return list;
}

AEDuckingJob::Inputs AEDucking::inputsOf(const AETimeLineItem& item, AETimeLine& timeline,
                                         const AEDuckingSettings& what) {
    AEDuckingJob::Inputs inputs;
    inputs.inTime = item.inTime;
    inputs.outTime = item.outTime();
    inputs.rangeI = item.range.i;
    inputs.rangeO = item.range.o;
    inputs.envelope = pointsOf(*item.volumeKFs);
    for (const auto& under : timeline.getAssetInRange(item.getRangeInTimeline())) {
        if (!under->asset || !enabled(what, under->asset->type)) continue;
        const auto& analysis = under->asset->assetDucking;
        inputs.speech.push_back({under.get(), under->asset->type, under->inTime, under->range.i,
                                 under->range.o, analysis ? analysis->duckingClusters() : nullptr});
    }
    std::stable_sort(inputs.speech.begin(), inputs.speech.end(),
                     [](const auto& a, const auto& b) { return typeOrder(a.type) < typeOrder(b.type); });
    return inputs;
}

AEDuckingJob AEDucking::snapshot(const std::shared_ptr<AETimeLineItem>& item, AETimeLine& timeline) {
    AEDuckingJob job;
    job.timeline = timeline.weak_from_this();
    job.item = item;
    if (XMain::isMain()) {
        job.serial = ++lastSerial;
        item->duckSerial = job.serial;
    }
    job.inputs = inputsOf(*item, timeline, job.what);
    job.volumeKFs = item->volumeKFs->duplicate();
    return job;
}

QXOnOffList AEDucking::speechSpans(const AEDuckingJob& job) {
    QXOnOffList spans;
    for (const auto& speech : job.inputs.speech)
        if (speech.analysis)
            spans =
                QXOnOffList::combine(spans, clustersInTimeline(*speech.analysis, speech.inTime,
                                                               AETimeRange(speech.rangeI, speech.rangeO)));
    const double a = job.how.attackPreRoll;
    const double d = job.how.releaseWindow - job.how.releasePreRoll;
    // A pause shorter than the level needs to come back and go down again is no pause.
    spans.filterPauses(a + d);
    spans.clustersToEvents();
    return spans;
}

void AEDucking::compute(AEDuckingJob& job) {
    const QXOnOffList spans = speechSpans(job);
    // One line a job, not one a speech item: a long episode would flood the log.
    qxLog("AEDucking.duck itemOnOff: " + QString::number(job.inputs.speech.size()) + " items, " +
          QString::number(spans.clusters.size()) + " stretches");
    const auto& how = job.how;
    const double a = how.attackPreRoll;
    const double b = how.attackWindow - how.attackPreRoll;
    const double c = how.releasePreRoll;
    const double d = how.releaseWindow - how.releasePreRoll;
    const double decrease = how.decrease;
    const double inTime = job.inputs.inTime;
    const double outTime = job.inputs.outTime;
    const auto asset = [&](double t) { return t - inTime + job.inputs.rangeI; };

    AEKeyframeList& kfs = *job.volumeKFs;
    removeDuckingPoints(kfs);
    if (job.what.deleteKF) kfs.deleteKeyframesInTimeRange(AETimeRange(asset(inTime), asset(outTime)));
    bool inDip = false;
    for (const auto& event : spans.events) {
        const double e = event.time;
        const double v1 = kfs.getValue(asset(e - a));
        const double v2 = kfs.getValue(asset(e + b));
        const double v3 = kfs.getValue(asset(e - c));
        const double v4 = kfs.getValue(asset(e + d));
        if (event.type == QXOnOffType::on) {
            if (e - a >= inTime) kfs.setKeyframe(asset(e - a), v1, false, true);
            if (e + b >= inTime) kfs.setKeyframe(asset(e + b), v2 + decrease, false, true);
            inDip = true;
        } else {
            if (outTime >= e - c) kfs.setKeyframe(asset(e - c), inDip ? v3 : v3 + decrease, false, true);
            if (outTime >= e + d) kfs.setKeyframe(asset(e + d), inDip ? v4 - decrease : v4, false, true);
            inDip = false;
        }
    }
    if (job.what.deleteKF)
        for (const auto& p : job.madeDuringJob)
            kfs.setKeyframe(p.time, p.value, p.flag0, p.flag1);
}

void AEDucking::apply(const AEDuckingJob& job) {
    const auto timeline = job.timeline.lock();
    const auto item = job.item.lock();
    if (!timeline || !item || item->duckSerial != job.serial) return;
    const auto& attached = timeline->attachedItems;
    if (std::find(attached.begin(), attached.end(), item) == attached.end()) return;
    if (inputsOf(*item, *timeline, job.what) != job.inputs) {
        start(item, *timeline, madeDuring(job, *item->volumeKFs));
        return;
    }
    item->volumeKFs->keyframes = job.volumeKFs->keyframes;
    item->volumeKFs->keyframesPerc = job.volumeKFs->keyframesPerc;
    if (item->fadeOutKFS) item->fadeOutKFS = std::make_shared<AEKeyframeList>(0);
    timeline->adjustBGM(false);
    timeline->mustDraw = true;
}

void AEDucking::duck(const std::shared_ptr<AETimeLineItem>& item, AETimeLine& timeline) {
    if (!XMain::isMain()) {
        AEDuckingJob job = snapshot(item, timeline);
        compute(job);
        item->volumeKFs->keyframes = job.volumeKFs->keyframes;
        item->volumeKFs->keyframesPerc = job.volumeKFs->keyframesPerc;
        timeline.adjustBGM(false);
        return;
    }
    start(item, timeline, {});
}
