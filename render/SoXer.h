#pragma once
// Turns a snapshot of a timeline into one sound file. Each item is trimmed, gained, preceded by the
// silence before it and shaped by its volume envelope; a lane's items follow one another from time 0;
// the lanes are summed as one `sox -m` of them; an .mp3 destination is encoded with its tags and
// chapters. The sound is that of one WAV per item, concatenated per lane and mixed, but it is made in
// one pass from the sources (LaneStream, TimelineMix) and piped into the encoder; only an item whose
// source cannot be streamed as it is (another rate, a compressed file, a missing one) still gets its
// own WAV from the sound tool, which the stream then reads.
//
// The timeline is duplicated at construction (on the main thread, like every edit), so the user may
// go on editing; what the jobs need of the assets is read there too. Tool failures are not errors
// here: a failed step shows as a missing file, a missing source as the "SHX ERROR" alert and an item
// absent from its lane (which then closes up).

#include "project/model/AEAssetType.h"
#include "render/LaneStream.h"
#include "render/QXMp3Tags.h"
#include "render/TempFU.h"
#include "render/TimelineMix.h"
#include "timeline/model/AETimeRange.h"

#include <QDateTime>
#include <QString>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class AEAsset;
class AEKeyframeList;
class AETimeLine;
class AETimeLineItem;
class QXTimer;

class SoXer : public std::enable_shared_from_this<SoXer> {
public:
    using PercentageCallback = std::function<void(double percent)>;

    // On the main thread. destFolder must exist; the temporary folder is made in it at once.
    static std::shared_ptr<SoXer> make(const QString& destPath, int destFrequency, int destNChannels,
                                       int destBitsPerSample, const std::shared_ptr<AETimeLine>& timeline,
                                       const QString& title = QString(), const QString& comment = QString(),
                                       const QString& picture = QString(),
                                       PercentageCallback percentageCallback = {});
    ~SoXer();

    const QString destPath;
    const int destFrequency;
    const int destNChannels;
    const int destBitsPerSample;
    const std::shared_ptr<AETimeLine> timeline;
    const PercentageCallback percentageCallback;
    int itemsToProduce = 0;
    std::atomic<int> itemsProduced{0};
    bool mustEncodeMP3 = false;
    std::atomic<bool> mp3EncodingStarted{false};
    QDateTime mp3EncodingStart;
    std::shared_ptr<QXTimer> barTimer;
    QString title;
    QString shownotes;
    QString picturePath;
    std::vector<QXMp3Chapter> chapters;
    QString destFolder;
    TempFU tempFU;

    // Seconds spent in each stage of the last perform, for the log and for measurements.
    struct StageTimes {
        double mainLane = 0;
        double lanes = 0;
        double mix = 0;
        double encode = 0;
    };
    StageTimes stageTimes;

    // Blocking; any thread but the main one when the encoder's progress is wanted. With `selection`
    // the main lane is replaced by the timeline's selection; other lanes render whole. False (and a
    // log line) when no result came out.
    bool perform(bool selection = false);
    // The mix as a stream, for a caller that measures or encodes it itself; null when the timeline
    // gives no sound. Blocking: items that need the sound tool are made first. The temporary folder
    // lives as long as this SoXer.
    std::unique_ptr<TimelineMix> openMix(bool selection = false);
    // perform on the background pool, then `callback` there with its result.
    void performAsync(bool selection, std::function<void(bool done)> callback);

    // One item's WAV at `path`, preceded by silenceDuration seconds of silence: the sound tool's way,
    // for a source the stream cannot read as it is.
    void timeLineItem2Cluster(const AETimeLineItem& item, const QString& path, double silenceDuration);
    // Repeats of a loopable music asset from inTime to bgmOutTime, faded out at the end.
    void loopableItemToCluster(const AETimeLineItem& item, const QString& path, double silenceDuration);
    // Encoder progress: 30 % plus the share of the expected time (five times real time), creeping
    // past 90 %.
    void updateBar();
    // The bar's value after `elapsed` seconds of encoding `outTime` seconds of sound.
    static double encodingPercentage(double elapsed, double outTime);

private:
    // What the jobs need of an asset, read on the constructing thread so the jobs never touch the
    // shared asset objects.
    struct Source {
        QString path;
        AEAssetType type = AEAssetType::speech;
        double duration = 0;
        double volumeGain = 0;
        bool loopable = false;
        double fadeOut = 0;
    };

    SoXer(const QString& destPath, int destFrequency, int destNChannels, int destBitsPerSample,
          const std::shared_ptr<AETimeLine>& timeline, PercentageCallback percentageCallback);
    void gatherSources();
    const Source& sourceOf(const AETimeLineItem& item) const;
    // A lane's pieces in order; attached lanes count each item's leading silence from the previous end.
    std::vector<LanePiece> planLane(const std::vector<std::shared_ptr<AETimeLineItem>>& items, bool attached);
    // The item read straight from its source; nothing when the sound tool must make it.
    std::optional<LanePiece> streamedPiece(const AETimeLineItem& item, double silenceDuration) const;
    // The sound tool's file of the item as a piece; nothing when it made none (a missing source).
    std::optional<LanePiece> renderedPiece(const AETimeLineItem& item, double silenceDuration);
    void reportStream(const TimelineMix& mix);
    void produced();
    void report(double percent) const;
    QString itemPath(const AETimeLineItem& item) const;
    std::vector<int64_t> lanesToRender() const;
    // soxUt_createCluster writes no leading silence up to this length.
    static constexpr double kShortestPadding = 0.01;
    // The leading silence a cluster really gets for a requested one: lane positions and envelope
    // shifts both count only that.
    static double writtenPadding(double silenceDuration);
    // Seconds of sound timeLineItem2Cluster writes for the item, leading silence apart.
    double clusterLength(const AETimeLineItem& item) const;
    // Asset time at which a music item that does not loop stops.
    double nonLoopableEnd(const AETimeLineItem& item) const;
    // Asset time at which the item's cluster ends, unless it loops.
    double clusterEnd(const AETimeLineItem& item) const;
    // The span a looping bed is cut from: seconds from its start in the asset, and the passes of the
    // asset that cover them.
    struct LoopSpan {
        double length = 0;
        int passes = 1;
    };
    LoopSpan loopSpan(const AETimeLineItem& item) const;
    bool loops(const AETimeLineItem& item) const;
    std::shared_ptr<AEKeyframeList> volumeKeyframes(const AETimeLineItem& item) const;

    std::map<const AEAsset*, Source> sources_;
    double timelineOutTime_ = 0;
};
