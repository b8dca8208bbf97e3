#pragma once
// Ducking of background music under speech: flagged envelope points (flag1) that dip a music item
// wherever the main-lane items under it speak.
//
// Threads: the model is the main thread's. duck() copies what the job reads (the item's place and
// envelope, the speech items under it with their published analyses, both setting sets) into a
// job, computes the new envelope on the background pool, and applies it on the main thread through
// XMain. Each duck() of an item supersedes the earlier ones (the item's duckSerial): a finished job
// that is not the latest is dropped; one whose item has left its timeline is dropped; one whose
// inputs changed meanwhile (an edit of the envelope, the item moved, speech under it changed) is
// started again from the current state, so no edit made during a job is overwritten. Called off the
// main thread (a detached copy edited by a worker), the job runs inline on the caller's thread.

#include "dsp/QXOnOffList.h"
#include "project/model/AEAssetType.h"
#include "project/model/DuckingSettings.h"
#include "timeline/model/AETimeRange.h"

#include <cstdint>
#include <memory>
#include <vector>

class AEKeyframe;
class AEKeyframeFloat;
class AEKeyframeList;
class AETimeLine;
class AETimeLineItem;

// What one job reads, copied on the main thread.
struct AEDuckingJob {
    struct Speech {
        const AETimeLineItem* item = nullptr; // identity only, never dereferenced off the main thread
        AEAssetType type = AEAssetType::speech;
        double inTime = 0;
        double rangeI = 0, rangeO = 0; // the item's range in asset time
        std::shared_ptr<const QXOnOffList> analysis;
        bool operator==(const Speech&) const = default;
    };
    struct Point {
        double time = 0, value = 0;
        bool flag0 = false, flag1 = false;
        bool operator==(const Point&) const = default;
    };
    // Everything whose change makes the job's result stale.
    struct Inputs {
        double inTime = 0;
        double outTime = 0;
        double rangeI = 0, rangeO = 0;
        std::vector<Point> envelope;
        std::vector<Speech> speech;
        bool operator==(const Inputs&) const = default;
    };

    std::weak_ptr<AETimeLine> timeline;
    std::weak_ptr<AETimeLineItem> item;
    uint64_t serial = 0;
    Inputs inputs;
    std::shared_ptr<AEKeyframeList> volumeKFs; // a duplicate, the job's own
    // Points set by hand while an earlier job of the item ran: they came after its dips, so they are
    // set again after this job's, and deleteKF does not take them.
    std::vector<Point> madeDuringJob;
    AEDuckingSettings what;
    QXDuckingSettings how;
};

class AEDucking {
public:
    // Starts the job and returns at once; the points come with a later turn of the event loop.
    static void duck(const std::shared_ptr<AETimeLineItem>& item, AETimeLine& timeline);

    // The three stages of duck(), for callers that need them apart (and the bench).
    // Main thread.
    static AEDuckingJob snapshot(const std::shared_ptr<AETimeLineItem>& item, AETimeLine& timeline);
    // Any thread: the union of the chosen speech, in timeline time, with short pauses closed.
    static QXOnOffList speechSpans(const AEDuckingJob& job);
    // Any thread: the job's envelope with the new dips (steps: old ducking points out, hand-made
    // points in the item's span out when asked, points around each speech event).
    static void compute(AEDuckingJob& job);
    // Main thread: puts the result in place, or drops or restarts a stale job (see above).
    static void apply(const AEDuckingJob& job);

    // An asset's analysis cut to an item's range and placed at its time on the timeline.
    static QXOnOffList clustersInTimeline(const QXOnOffList& analysis, double inTime,
                                          const AETimeRange& range);
    // Jobs started and not yet applied or dropped.
    static int jobsInFlight();

private:
    static AEDuckingJob::Inputs inputsOf(const AETimeLineItem& item, AETimeLine& timeline,
                                         const AEDuckingSettings& what);
};
