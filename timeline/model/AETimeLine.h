#pragma once
// The multi-lane edit model of one episode: a gapless main lane that ripples, attached items at
// absolute times on numbered lanes, the range selection, markers, the view's time window and the
// playhead. Every mutation runs on the main thread and ends by restoring the model's invariants.
// The operations are spread over several files by concern (placing, cutting, selection, markers,
// viewport, idle); this header is their one declaration.

#include "foundation/KeyedArchive.h"
#include "project/model/AEAssetType.h"
#include "project/model/AEMarker.h"
#include "timeline/model/AEMouseEvent.h"
#include "timeline/model/AETimeLineView.h"
#include "timeline/model/AETimeRange.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AEAsset;
class AEDrag;
class AEKeyframe;
class AEKeyframeDrag;
class AELane;
class DragAreaView;
class AETimeLineItem;
class QXTimer;
class VirtualScroller;

enum class AETimelineEditor { normal, asset };
// What a press on the lanes does.
enum class AEEditorMode { normal = 0, blade = 1, drag = 2, multiCut = 3 };
// How the marker inspector was closed ("remove" is its delete button).
enum class AEMarkerVCDoneAction { ok, cancel, remove, deleteSelection };

// Told where to mark the two ends of the cut the pointer is near; x −1000 takes the marks away.
class AETriangleDelegate {
public:
    virtual ~AETriangleDelegate() = default;
    virtual void showTriangles(double x, double yBottom, double yTop) = 0;
};

class AETimeLine : public KeyedObject, public std::enable_shared_from_this<AETimeLine> {
public:
    using Item = std::shared_ptr<AETimeLineItem>;
    using Items = std::vector<Item>;

    static std::shared_ptr<AETimeLine> make(const QString& id, Items mainLane = {}, Items attachedItems = {});
    ~AETimeLine() override;
    // Every timeline constructed in this process that is still alive.
    static std::vector<std::shared_ptr<AETimeLine>> tlList();

    static constexpr const char* kClassName = "AETimeLine";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AETimeLine> decode(KeyedUnarchiver& coder);
    static QString persistPath(const QString& path, const QString& customId);
    bool save(const QString& path) const;
    static std::shared_ptr<AETimeLine> load(const QString& path);
    // What breaks the model's invariants (gapless main lane on lane 0, attached items on their own
    // lanes without overlaps and with a length, music ending after it starts, no item listed twice);
    // nothing when they hold. The decoder refuses a file that still breaks them after its repairs.
    std::optional<QString> invariantFault() const;

    // Document.
    QString id;
    QString SIGLA;
    Items mainLane;
    Items attachedItems;
    Items collectedItems;
    Items clipboardLane;
    AETimelineEditor timelineEditor = AETimelineEditor::normal;

    // View (no widgets: the window reads and fills these).
    std::shared_ptr<AETimeLineView> view;
    QPointF deltaOrigin;
    std::shared_ptr<VirtualScroller> virtualScroller;
    AETimeRange currentViewRange{0, 30.0};
    std::vector<std::shared_ptr<AELane>> lanes;
    bool mustDraw = false;
    bool mustBeFast = false;
    bool drawing = false;
    double drawTime = 0;
    double lastLength = 0;
    double lastCheck = 0;
    // Paints the timeline; set by the window.
    std::function<void()> drawDelegate;

    // Transport.
    double currentPHTime = 0;
    bool playing = false;
    double playSpeedRate = 1.0;
    double playStartedAt = 0;
    double playStartedAtPos = 0;

    static constexpr double playIdleInterval = 0.02;
    static constexpr double lowPriorityIdleInterval = 1.0;
    static constexpr double commonIdleInterval = 0.1;
    static constexpr double commonFastIdleInterval = 0.02;
    static constexpr double dragIdleInterval = 0.03;
    std::shared_ptr<QXTimer> playIdleTimer;
    std::shared_ptr<QXTimer> lowPriorityIdleTimer;
    std::shared_ptr<QXTimer> commonIdleTimer;
    std::shared_ptr<QXTimer> commonFastIdleTimer;
    // Set by the tick that hands the item pass on, cleared when the pass is done.
    bool allItemsPlayIdleR = false;
    bool playingIdleR = false;
    bool idleFastR = false;
    bool idleR = false;

    // Editing.
    std::function<void()> undoDoCallback;
    std::shared_ptr<AEDrag> drag;
    Items soloItems;
    std::function<void()> hideEphemeralCallback;
    AEKeyframeDrag* keyframeDragDelegate = nullptr; // not owned
    AETriangleDelegate* triangleDelegate = nullptr; // not owned
    Item draggingAttachedItem;
    // The volume envelopes are drawn and take the mouse; the window keeps it in step with the preference.
    bool showVolumeKFs = true;
    // Where the attached-item drag last was, in lane space.
    QPointF draggingAttachedLocation;
    AEEditorMode editorMode = AEEditorMode::normal;
    std::shared_ptr<DragAreaView> dragAreaView;
    // Names the pointer's look: "blade", "leftDrag", "rightDrag", "drag", or empty for the arrow.
    std::function<void(const QString&)> cursorCallback;
    // The range rectangle dragIdle marks, in lane space; none while no range shows.
    std::optional<QRectF> dragRangeRect;
    std::shared_ptr<AEKeyframe> draggingVolumeKF;
    Item draggingVolumeItem;

    // Markers.
    bool markeriInspectorOpen = false;
    // Opens the marker inspector sheet; set by the window.
    std::function<void(const std::shared_ptr<AEMarker>&)> markerInspectorPresenter;
    // Refreshes the marker list window when it is open; set by the window.
    std::function<void()> markerListUpdater;

    // Queries.
    double getMainLaneItemOutTime(int64_t n) const;
    double getMainLaneItemInTime(int64_t n) const;
    double getMainLaneOutTime() const;
    double getTimelineOutTime() const;
    int64_t getAssetInMainLane(double t) const;
    Item getItemAtTime(double t) const;
    Item getAttachedItem(double t, int64_t lane) const;
    Items getLaneItemSubset(int64_t lane) const;
    Items getMainLaneSubset(AEAssetType type) const;
    Items getAttachedSubset(AEAssetType type) const;
    Items getBGMs() const;
    Item getNextJingle(double t) const;
    Item getNextBGM(double t) const;
    Items getAssetInRange(const AETimeRange& range) const;
    const Items& getCollectedItems();
    double getSelectionDuration() const;
    std::shared_ptr<AETimeLine> duplicate() const;
    // A duplicate that shares nothing the window holds (its own selection and lanes, no scroller, view
    // or hooks), so that it may be edited off the main thread. Made on the main thread.
    std::shared_ptr<AETimeLine> detachedDuplicate() const;
    // One undo snapshot, taken with the idle timers held.
    std::shared_ptr<AETimeLine> getStatus();

    // Mute and solo.
    void muteItem(const Item& item);
    void unMuteItem(const Item& item);
    void toggleMuteItem(const Item& item);
    static bool itemActive(const Item& item);
    void soloItem(const Item& item);
    void unSoloItem(const Item& item);
    void toggleSoloItem(const Item& item);
    void muteLane(int64_t n);
    void unMuteLane(int64_t n);
    void soloLane(int64_t n);
    void unSoloLane(int64_t n);
    bool itemCanBePlayed(const Item& item) const;

    // Placing and removing.
    Item insertItemInMainLane(const std::shared_ptr<AEAsset>& asset, int64_t atIndex,
                              const std::optional<AETimeRange>& range = std::nullopt,
                              bool doUndoCallback = true);
    Item appendItemInMainLane(const std::shared_ptr<AEAsset>& asset,
                              const std::optional<AETimeRange>& range = std::nullopt,
                              bool doUndoCallback = true, bool fromSlice = false);
    void removeItemInMainLane(int64_t assetN, bool doUndoCallback = true, bool forceDraw = true,
                              bool cleanupAtEnd = true);
    // Clips first...last with ripple, as removing each from the last down would, with one repair of
    // the timeline after all of them. No undo snapshot.
    void removeItemsInMainLane(int64_t first, int64_t last);
    Item attachItem(const std::shared_ptr<AEAsset>& asset, int64_t lane, double inTime,
                    const std::optional<AETimeRange>& range = std::nullopt, bool isPartial = false,
                    bool doUndoCallback = true);
    void removeAttachedItem(const Item& item);
    void refillMainLaneInTime();
    void adjustAttachedItems(double startingFrom, double shiftBy);
    void adjustItems();
    void cleanupShortItems();
    void performAdjustments();
    void adjustBGM(bool shifted = true);
    void doAutoBGM(const Item& item);
    void insertSilence(double duration, bool doUndoCallback = true);

    // Cutting.
    void sliceMainLane(double at, bool doUndoCallback = true);
    void splitAttachedItem(const Item& item, double at, bool doUndoCallback = true,
                           bool dontPerformAdjustments = false);
    void blade(const AEMouseEvent& event, bool doUndoCallback = true, bool superBlade = false);
    void joinMainLane(int64_t index);
    int64_t getNearestCutIndex(std::optional<double> t = std::nullopt) const;
    double getNearestCutTime() const;
    double getNearestSnapTime(double at);
    double getPreviousCutTime() const;
    double getNextCutTime() const;
    void goToPreviousCut();
    void goToNextCut();
    void goToBegin();
    void goToEnd();
    void drawActiveCut(std::optional<double> time = std::nullopt);
    void hideActiveCut();

    // Selection, clipboard.
    int64_t selectItemInMainLane(double t);
    void selectAttachedItem(double t, int64_t lane);
    void toggleActivateSelectedItem();
    void removeSelectedItem();
    void deleteSelection();
    bool deleteAttachedSelection(const std::optional<AETimeRange>& overrideDragRange = std::nullopt,
                                 bool doUndoCallback = true);
    void deactivateSelection();
    void copySelection();
    void paste(double at);
    void cut();
    void newVolumeKeyframe(std::optional<double> t, int64_t lane, bool doUndoCallback = true);
    // A dip of the envelope's own shape (duckPrefs) over the selected range of the item under it,
    // when the range lies in one item. Its points are not flagged, so automatic ducking keeps them.
    void autoDuckSelection(bool doUndoCallback = true);

    // Markers.
    std::vector<std::shared_ptr<AEMarker>> getMarkerList() const;
    std::shared_ptr<AEMarker> getMarkerAtTime(double t) const;
    std::shared_ptr<AEMarker> getNextMarker(std::optional<double> t = std::nullopt);
    std::shared_ptr<AEMarker> getPreviousMarker(std::optional<double> t = std::nullopt);
    void addMarkerToCurrentSelectedMainLaneItem(bool openViewController, AEMarkerType type);
    void deleteMarker(const std::shared_ptr<AEMarker>& marker);
    void inspectMarker(const std::shared_ptr<AEMarker>& marker);
    void markerVCDone(const std::shared_ptr<AEMarker>& marker, AEMarkerVCDoneAction action);
    void markerInspectorOk(const std::shared_ptr<AEMarker>& marker);
    void markerInspectorDelete(const std::shared_ptr<AEMarker>& marker);
    void updateMarkerListWindow();

    // Mouse and keys (locations in the view's own coordinates, y upwards).
    // Lanes are laid out from this far above the bottom of the view.
    static constexpr double kLanesTop = 72.0;
    QPointF toLaneSpace(const AEMouseEvent& event) const;
    void mouseMoved(const AEMouseEvent& event);
    void mouseExited();
    void mouseDown(const AEMouseEvent& event);
    void mouseDrag(const AEMouseEvent& event);
    void mouseUp(const AEMouseEvent& event);
    bool kfMouseDown(const AEMouseEvent& event);
    Item getItemAtMouseEvent(const AEMouseEvent& event) const;
    void dragIdle();
    void setEditingMode(AEEditorMode mode);
    void setEditModeNormal() { setEditingMode(AEEditorMode::normal); }
    void setEditModeBlade() { setEditingMode(AEEditorMode::blade); }
    void setEditModeDrag() { setEditingMode(AEEditorMode::drag); }
    void setEditModeMultiCut() { setEditingMode(AEEditorMode::multiCut); }
    // Whether the key was taken; others go back to the window.
    bool handleKeydown(int key);
    void checkClicOnMarkers(const AEMouseEvent& event);
    // The visible part of an item in lane space; a range in asset time narrows it.
    QRectF getItemRect(const Item& item, const std::optional<AETimeRange>& assetRange = std::nullopt);
    static QRectF getMarkerRect(const QRectF& viewRect, double x, AEMarkerType type);

    // Viewport and coordinates.
    void setView(double viewportWidth, double viewportHeight, QPointF deltaOrigin, bool fromUndo = false,
                 std::shared_ptr<VirtualScroller> scroller = nullptr);
    double timeToX(double t) const;
    double xToTime(double x, bool pure = false, bool round = true) const;
    std::optional<std::pair<double, double>> laneToYs(int64_t n) const;
    std::shared_ptr<AELane> getLane(int64_t n) const;
    std::optional<int64_t> yToLaneN(double y) const;
    double mouseEventToTime(const AEMouseEvent& event) const;
    std::optional<int64_t> mouseEventToLane(const AEMouseEvent& event) const;
    void addLane(int64_t n, double y, double height);
    void setupLanes();
    void setViewportRange(double i, double o);
    void setViewportRangeAll();
    void centerToPlayHead();
    bool playheadVisible() const;
    void performMagnify(double newDuration, bool centerToPlayhead, bool fromZoom = true);
    void zoomIn(AEZoomTo phMode);
    void zoomOut(AEZoomTo phMode);
    void magnify(double amount, bool toPlayhead);
    void shiftViewPort(double delta);
    void shiftLeft(std::optional<double> amount = std::nullopt);
    void shiftRight(std::optional<double> amount = std::nullopt);
    double getRightBound();
    void setInsetViewSize();
    void updateViewAfterSomething();

    // Transport. The clock is the engine's: the wall clock, or the frames rendered offline.
    double getPlayHeadTime();
    void setPlayheadTime(double time, bool center = false);
    void play(std::optional<double> at = std::nullopt);
    // Always leaves the rate at 1.0.
    void pause();
    void playPause();
    // A rate that is not above 0 is refused.
    void setSpeedRate(double rate);
    void startPlayIdle();
    void playingIdle();
    void allItemsPlayIdle();
    void updateVolumeFromOutside();
    // Sums of the playing items' levels (linear), also handed to the view.
    double getMetering();
    std::pair<double, double> getMeteringStereo();

    // Playhead and overlays.
    void hideEphemeral();
    void showEphemeral();
    void drawPlayhead();
    void updateTimeCodeViewer();

    // Idle routines and drawing.
    void startTimers();
    void stopTimers();
    void idle();
    void idleFast();
    void lowPriorityidle();
    void draw();
    void forceDraw();

private:
    AETimeLine() = default;
    void callUndo(bool doUndoCallback) const;
    // The edge handles of an item at least 40 pixels wide, for the next drags.
    void addDragHandles(const Item& item);
    // Keeps the scroller where it is during a change of the lanes.
    void keepViewport();
    void pauseItems();
    Item newMainLaneItem(const std::shared_ptr<AEAsset>& asset,
                         const std::optional<AETimeRange>& range) const;
    void clearSelection();
    void deleteOrDeactivate(bool deactivate);
};
