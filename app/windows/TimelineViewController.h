#pragma once
// The editing window of one episode: the timeline, the common and episode asset lists with their
// drop zones, transport, zoom and mode buttons, meters, durations and the progress bar. Actions go
// through TimelineCommands; this class wires widgets, keys, drops and the two timers (autosave
// every 30 s, idle every 0.02 s) to them. Main thread.

#include "app/core/TimelineCommands.h"
#include "timeline/model/AETimeLine.h"

#include <QHash>
#include <QPointF>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

class AEEpisode;
class AETimeLine;
class AETimeLineItem;
class AssetListWidget;
class QComboBox;
class QLabel;
class QMenu;
class QProgressBar;
class QToolButton;
class QXTimer;
class TimelineWidget;
class TimeLineStatsVC;

class TimelineViewController : public QWidget {
    Q_OBJECT
public:
    static constexpr double kAutoSaveSeconds = 30.0;
    static constexpr double kIdleSeconds = 0.02;
    // Items narrower than this on screen get no hover menu.
    static constexpr double kHamburgerMinWidth = 50.0;

    explicit TimelineViewController(QWidget* parent = nullptr);
    ~TimelineViewController() override;

    // The episode's timeline is loaded: lists filled, view attached, timers started.
    void tlLoaded(const std::shared_ptr<AEEpisode>& episode);
    // Autosaves, leaves the timeline in the episode and hands over to the list (`closed`).
    void closeAll();
    std::function<void()> closed;

    TimelineCommands& commands() { return commands_; }
    std::shared_ptr<AETimeLine> timeline() const { return commands_.timeline; }
    std::shared_ptr<AEEpisode> episode() const { return commands_.episode; }

    // Actions of the buttons and menus.
    void play_pressed();
    void goBegin_pressed();
    void goEnd_pressed();
    void zoomIn_pressed();
    void zoomOut_pressed();
    void zoomAll_pressed();
    void bladeAtPlayhead();
    void deleteSelection();
    void export_pressed();
    void selectionToAsset();
    // The selected stretch of the main lane into the show's hesitation database.
    void selectionToUhmFP();
    void btnInsertSilencePressed();
    void btnVolumeKFsPressed();
    void btnEditModePressed(int tag);
    void showStats();
    void showMarkerList();
    void setFullSizeTimeline(bool full);
    void setSpeed(double rate);

    // Files from the desktop: checked, then ingested (asking first unless told not to), then placed
    // at `dropTime` on `lane` (main lane: the cut nearest it; none: appended). Common: into the list.
    void dragged(const QStringList& pathList, std::optional<double> dropTime = std::nullopt,
                 int64_t lane = 0);
    void draggedCommon(const QStringList& pathList);
    // Live preview of a list asset dragged over the timeline at `pos` (timeline widget coordinates);
    // isPreview false places it for good.
    void previewTimeline(const std::shared_ptr<AEAsset>& asset, QPointF pos, bool isPreview);
    void copyTimelaneLanesBack();
    bool isReceivingDrag() const { return previewBase_ != nullptr; }

    // The hover button over the item at `pos` (timeline widget coordinates).
    void tlItemHamburgerIdle(std::optional<QPointF> pos);
    std::shared_ptr<AETimeLineItem> hoverItem() const { return hoverItem_; }
    QToolButton* hamburgerButton() const { return btnTLItemHamburger_; }
    QMenu* hamburgerMenu() const { return mnuTLItemHamburger_; }
    void titItemHamburgerSetupTitles();

    void idle();
    TimelineWidget* timelineWidget() const;
    AssetListWidget* commonAssetTableView() const { return commonList_; }
    AssetListWidget* episodeAssetTableView() const { return episodeList_; }
    QLabel* totalDurationTC() const { return totalDurationTC_; }
    QLabel* selectionDurationTC() const { return selectionDurationTC_; }
    QToolButton* playButton() const { return playButton_; }
    QProgressBar* vumeter(int n) const { return n == 0 ? vumeter_ : vumeter2_; }
    void refreshLists();
    // The recorder sheet over this window; each take lands in the episode's list.
    void openRecorder();
    // "Clean…" on the episode list's chosen asset (or `row`): the sheet, then the run with its
    // progress window; the list follows when the run lands.
    void cleanSelectedAsset();
    void cleanAsset(int row);
    // The "Probable Uhm" sheet on the episode list's asset at `row`; its markers show when it is done.
    void probableUhm(int row);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildLayout();
    void attachView();
    void afterAction();
    void restoreFromPreviewBase();
    QPointF toTimelinePos(QObject* from, QPointF pos) const;
    AEMouseEvent modelEvent(QPointF widgetPos) const;
    std::shared_ptr<AEAsset> assetById(const QString& id) const;
    void placeAssets(const std::vector<std::shared_ptr<AEAsset>>& assets, std::optional<double> at,
                     int64_t lane);
    void listSelectionChanged(bool common);
    void openVolumeSlider(bool common, int row);
    // The asset inspector for a row of the common (or the episode's) list; OK saves the asset and the show.
    void openAssetInspector(bool common, int row);
    QToolButton* recordButton();
    void installBrightwashHooks();
    // The episode's list as shown (a copy: callers pass the episode's own), everywhere it is kept.
    void episodeAssetsChanged(std::vector<std::shared_ptr<AEAsset>> assets);

    TimelineCommands commands_;
    std::shared_ptr<QXTimer> autoSaveTimer_;
    std::shared_ptr<QXTimer> idleTimer_;
    bool idleR_ = false;
    std::shared_ptr<AETimeLineItem> hoverItem_;
    std::shared_ptr<AETimeLine> previewBase_;

    QWidget* upperStack_ = nullptr;
    QWidget* timelineArea_ = nullptr;
    TimelineWidget* timelineView_ = nullptr;
    AssetListWidget* commonList_ = nullptr;
    AssetListWidget* episodeList_ = nullptr;
    QLabel* totalDurationTC_ = nullptr;
    QLabel* selectionDurationTC_ = nullptr;
    QComboBox* playSpeed_ = nullptr;
    QToolButton* playButton_ = nullptr;
    QToolButton* kfButton_ = nullptr;
    QProgressBar* vumeter_ = nullptr;
    QProgressBar* vumeter2_ = nullptr;
    QProgressBar* percentageBar_ = nullptr;
    QToolButton* btnTLItemHamburger_ = nullptr;
    QMenu* mnuTLItemHamburger_ = nullptr;
    QAction* mnuMute_ = nullptr;
    QAction* mnuMuteLane_ = nullptr;
    QAction* mnuSolo_ = nullptr;
    QAction* mnuSoloLane_ = nullptr;
    QPointer<TimeLineStatsVC> stats_;
    QHash<QString, QPointer<QWidget>> cleaningWindows_; // by the run's result path
};
