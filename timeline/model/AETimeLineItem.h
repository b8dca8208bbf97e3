#pragma once
// One clip on the timeline: a stretch of an asset placed at a timeline time on a lane. Lane 0 is
// the gapless main lane; other lanes hold attached items at absolute times. The item maps its two
// time axes: asset time = timeline time − inTime + range.i.

#include "dsp/QXOnOffList.h"
#include "foundation/KeyedArchive.h"
#include "project/model/AEMarker.h"
#include "timeline/model/AETimeRange.h"

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class AEAsset;
class AEKeyframeList;
enum class DragAction;
class AEKeyframeView;
class AEKeyframeViewSetup;
class AETimeLine;
class RPlayer;

enum class AETimeLineDraggingType { none, leftBorder, rightBorder, whole };

class AETimeLineItem : public KeyedObject, public std::enable_shared_from_this<AETimeLineItem> {
public:
    // No id: a new one. No range: the whole asset. No player: one on the asset's file, when it has one.
    static std::shared_ptr<AETimeLineItem> make(const std::shared_ptr<AEAsset>& asset,
                                                const std::optional<QString>& id, int64_t lane, double inTime,
                                                const std::optional<AETimeRange>& range = std::nullopt,
                                                const std::shared_ptr<RPlayer>& player = nullptr);

    static constexpr const char* kClassName = "AETimeLineItem";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AETimeLineItem> decode(KeyedUnarchiver& coder);

    // Images and colour shared by every item's envelope editor; filled once at start-up.
    static std::shared_ptr<AEKeyframeViewSetup> kfSetup;
    static void startup();

    std::shared_ptr<AEAsset> asset;
    int64_t lane = 0;
    double inTime = 0;
    double bgmOutTime = 0;
    AETimeRange range;
    QString id;
    bool selected = false;
    std::optional<bool> active = true;
    std::optional<bool> solo = false;
    std::shared_ptr<RPlayer> player;
    double currentVolume = 0;
    bool playing = false;
    double playSpeedRate = 1.0;
    std::vector<std::shared_ptr<AEMarker>> markers;
    double stopAt = 0;
    bool cutOnce = false;
    AETimeLineDraggingType dragging = AETimeLineDraggingType::none;
    std::shared_ptr<AEKeyframeList> volumeKFs;
    std::shared_ptr<AEKeyframeList> fadeOutKFS;
    std::shared_ptr<AEKeyframeList> globalKFS;
    std::shared_ptr<AEKeyframeView> kfView;
    bool ducked = false;
    // The latest ducking job started for this item; older ones are dropped. Main thread, not archived.
    uint64_t duckSerial = 0;
    std::optional<QRectF> plotDstRect;
    std::optional<QImage> plotImage;
    bool modified = false;
    bool playingIdleR = false;
    // The player ended by itself inside the item: not started again until the playhead leaves it.
    bool playedOut = false;

    bool isBGM() const;
    double outTime() const;
    double getLocalTime(double t) const;
    double getGlobalTime(double assetTime) const;
    double globalTimeToAssetTime(double t) const { return t - inTime + range.i; }
    double assetTimeToGlobalTime(double a) const { return a - range.i + inTime; }
    AETimeRange getRangeInTimeline() const;
    // Same asset, id and player; copies of range, markers and envelope. Fade-out, cutOnce and
    // ducked are not carried: the next repair pass remakes the fade-out.
    std::shared_ptr<AETimeLineItem> duplicate() const;
    void updateGlobalKFs();
    // A player on the asset's file, when it has one. Main thread: finding the file may repair the
    // asset's copy.
    void makePlayer();
    // Playing, from the transport's tick on the main thread: the player starts when the playhead is
    // inside the item, at the matching asset time; it stops past the end or when the item may not
    // sound; its level follows the envelope at each tick.
    void playingIdle(double time, const AETimeLine& timeline);
    void play(double at, const AETimeLine& timeline, std::optional<double> rate = std::nullopt);
    void pause();
    // The envelope's value at `time` plus the asset's gain, given to the player when it changed.
    void adjustVolume(double time, bool isAssetTime, bool force, const AETimeLine& timeline);

    // Shows and applies a new envelope.
    void setVolumeKFs(std::shared_ptr<AEKeyframeList> list);
    // A copy of the source's envelope, in a copy of its editor.
    void takeEnvelopeOf(const AETimeLineItem& source);

    std::shared_ptr<AEMarker> addMarker(std::optional<double> localTime, std::optional<double> globalTime,
                                        const QString& notes, AEMarkerType type);
    // Markers of the item and of its asset that lie in the played range, as copies in timeline time.
    std::vector<std::shared_ptr<AEMarker>> getVisibleMarkers() const;
    void deleteMarker(const AEMarker& marker);

    // The speech of the asset's analysis inside the item's range, placed at the item's time on the
    // timeline; nothing while the asset has no analysis.
    std::optional<QXOnOffList> getOnOffClusters() const;

    // Edge handles: the step is in asset seconds; the range stays within the asset. The main lane
    // closes up behind, attached items stay where they are.
    void dragIn(DragAction action, QPointF delta);
    void dragOut(DragAction action, QPointF delta);

    // The automatic fade at the end of background music, in asset time.
    void setFadeOutKFs();
    void removeFadeOutKFs();

private:
    AETimeLineItem() = default;
    void initialise(const std::shared_ptr<AEAsset>& asset, int64_t lane, double inTime,
                    const std::optional<AETimeRange>& range);
    // A new envelope editor over volumeKFs.
    void attachKeyframeView();
    void bindKeyframeView();
};
