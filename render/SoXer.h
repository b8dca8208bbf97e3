#pragma once
// Turns a snapshot of a timeline into one sound file. Every item becomes its own small WAV, already
// trimmed, gained, preceded by the silence before it and shaped by its volume envelope; each lane's
// items are concatenated into one file starting at time 0; the lanes are summed by one mix; an .mp3
// destination is then encoded with its tags and chapters.
//
// The timeline is duplicated at construction (on the main thread, like every edit), so the user may
// go on editing; what the jobs need of the assets is read there too. Tool failures are not errors
// here: a failed step shows as a missing file, a missing source as the "SHX ERROR" alert and an item
// absent from its lane (which then closes up).

#include "project/model/AEAssetType.h"
#include "render/QXMp3Tags.h"
#include "render/TempFU.h"
#include "timeline/model/AETimeRange.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
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
    // perform on the background pool, then `callback` there with its result.
    void performAsync(bool selection, std::function<void(bool done)> callback);

    // One item's WAV at `path`, preceded by silenceDuration seconds of silence.
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
    void mainLaneJob(bool selection, const QString& mainFile);
    void laneJob();
    void renderLane(int64_t lane);
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
    std::shared_ptr<AEKeyframeList> volumeKeyframes(const AETimeLineItem& item) const;

    std::map<const AEAsset*, Source> sources_;
    double timelineOutTime_ = 0;
    std::mutex listMutex_;
    QStringList laneFiles_;
};
