#include "app/windows/TimelineViewController.h"

#include "app/core/AEPreferences.h"
#include "app/core/DroppedFiles.h"
#include "app/windows/AEMarkerListVC.h"
#include "app/windows/AssetListWidget.h"
#include "app/windows/EditPanels.h"
#include "app/windows/MarkerInspectorVC.h"
#include "app/windows/TimelineExport.h"
#include "app/windows/TimelineUhm.h"
#include "cleaning/Brightwash.h"
#include "cleaning/BrightwashAssets.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "foundation/Prog.h"
#include "foundation/QXTimer.h"
#include "foundation/Timecode.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "project/model/AssetDrop.h"
#include "project/model/Globals.h"
#include "project/panels/AEAssetIngestVC.h"
#include "project/panels/AEAssetVC.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/view/TimelineWidget.h"
#include "ui/LoadingWindow.h"
#include "ui/cleaning/BrightwashAssetAlertVC.h"
#include "ui/cleaning/BrightwashProgressWindow.h"
#include "ui/recording/RecorderEntryPoints.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QProgressBar>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace {

QToolButton* toolButton(const QString& text, const QString& tip, QWidget* parent,
                        std::function<void()> action) {
    auto* button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(tip);
    button->setObjectName(text);
    QObject::connect(button, &QToolButton::clicked, parent, [action] { action(); });
    return button;
}

QProgressBar* meter(const QString& name, QWidget* parent) {
    auto* bar = new QProgressBar(parent);
    bar->setObjectName(name);
    bar->setRange(0, 10);
    bar->setTextVisible(false);
    bar->setFixedSize(90, 7);
    return bar;
}

// Each channel's level × 10, whole part, at most 10: the steps of the meter images.
int meterStep(double level) {
    return std::clamp(static_cast<int>(level * 10.0), 0, 10);
}

} // namespace

TimelineViewController::TimelineViewController(QWidget* parent) : QWidget(parent) {
    setObjectName("TimelineViewController");
    setFocusPolicy(Qt::StrongFocus);
    buildLayout();
    commands_.afterAction = [this] { afterAction(); };
    commands_.timelineSwapped = [this] { attachView(); };
}

TimelineViewController::~TimelineViewController() {
    if (autoSaveTimer_) autoSaveTimer_->stop();
    if (idleTimer_) idleTimer_->stop();
    if (commands_.timeline) {
        commands_.timeline->pause();
        commands_.timeline->stopTimers();
        commands_.timeline->drawDelegate = nullptr;
        commands_.timeline->markerInspectorPresenter = nullptr;
        commands_.timeline->markerListUpdater = nullptr;
        commands_.timeline->undoDoCallback = nullptr;
    }
    if (auto* list = AEMarkerListVC::current()) list->close();
}

void TimelineViewController::buildLayout() {
    upperStack_ = new QWidget(this);
    auto* bar = new QHBoxLayout(upperStack_);
    bar->setContentsMargins(8, 6, 8, 6);
    playButton_ = toolButton("Play", "Play / pause (Space)", this, [this] { play_pressed(); });
    playButton_->setProperty("imageName", "pd_icon_play (0-00-00-00)");
    bar->addWidget(toolButton("|<", "Go to the beginning", this, [this] { goBegin_pressed(); }));
    bar->addWidget(playButton_);
    bar->addWidget(toolButton(">|", "Go to the end", this, [this] { goEnd_pressed(); }));
    playSpeed_ = new QComboBox(this);
    playSpeed_->setObjectName("playSpeed");
    for (double rate : {0.5, 0.75, 1.0, 1.25, 1.5, 2.0})
        playSpeed_->addItem(QString::number(rate) + "×", rate);
    playSpeed_->setCurrentIndex(2);
    connect(playSpeed_, &QComboBox::activated, this,
            [this](int i) { setSpeed(playSpeed_->itemData(i).toDouble()); });
    bar->addWidget(playSpeed_);
    bar->addSpacing(12);
    bar->addWidget(toolButton("Insert", "Insert the chosen asset at the nearest cut (I)", this,
                              [this] { commands_.performInsert(0); }));
    bar->addWidget(toolButton("At Playhead", "Cut at the playhead and insert there", this,
                              [this] { commands_.performInsertAtPlayhead(); }));
    bar->addWidget(
        toolButton("Append", "Append to the main lane (A)", this, [this] { commands_.performAppend(); }));
    bar->addWidget(toolButton("SFX", "Attach as an effect above the main lane", this,
                              [this] { commands_.performInsert(1); }));
    bar->addWidget(
        toolButton("BGM", "Attach as background music", this, [this] { commands_.performInsert(-1); }));
    bar->addSpacing(12);
    auto* modes = new QButtonGroup(this);
    for (const auto& [text, tag] : {std::pair{"Select", 0}, std::pair{"Blade", 1}, std::pair{"Drag", 2}}) {
        auto* mode =
            toolButton(text, QString("%1 mode").arg(text), this, [this, tag] { btnEditModePressed(tag); });
        mode->setCheckable(true);
        mode->setChecked(tag == 0);
        modes->addButton(mode, tag);
        bar->addWidget(mode);
    }
    bar->addSpacing(12);
    bar->addWidget(toolButton("Marker", "Add a marker at the playhead (M)", this,
                              [this] { commands_.addMarker(false); }));
    bar->addWidget(toolButton("+KF", "Add a volume keyframe at the playhead", this,
                              [this] { commands_.addVolumeKeyframe(); }));
    kfButton_ = toolButton("KFs", "Show volume keyframes", this, [this] { btnVolumeKFsPressed(); });
    kfButton_->setCheckable(true);
    kfButton_->setChecked(AEPreferences::displayVolumeKFs);
    bar->addWidget(kfButton_);
    if (!recButtonInEpisodeAssetsArea()) {
        bar->addSpacing(12);
        bar->addWidget(recordButton());
    }
    bar->addStretch();
    bar->addWidget(toolButton("−", "Zoom out", this, [this] { zoomOut_pressed(); }));
    bar->addWidget(toolButton("+", "Zoom in", this, [this] { zoomIn_pressed(); }));
    bar->addWidget(toolButton("All", "View all", this, [this] { zoomAll_pressed(); }));
    bar->addSpacing(12);
    auto* meters = new QVBoxLayout;
    vumeter_ = meter("vumeter", this);
    vumeter2_ = meter("vumeter2", this);
    meters->addWidget(vumeter_);
    meters->addWidget(vumeter2_);
    bar->addLayout(meters);
    totalDurationTC_ = new QLabel("00:00:00.000", this);
    totalDurationTC_->setObjectName("totalDurationTC");
    selectionDurationTC_ = new QLabel("00:00:00.000", this);
    selectionDurationTC_->setObjectName("selectionDurationTC");
    auto* durations = new QGridLayout;
    durations->setVerticalSpacing(0);
    durations->addWidget(new QLabel(tr("Total"), this), 0, 0);
    durations->addWidget(totalDurationTC_, 0, 1);
    durations->addWidget(new QLabel(tr("Selection"), this), 1, 0);
    durations->addWidget(selectionDurationTC_, 1, 1);
    bar->addLayout(durations);

    commonList_ = new AssetListWidget("commonAssetTableView", this);
    episodeList_ = new AssetListWidget("episodeAssetTableView", this);
    auto* lists = new QSplitter(Qt::Vertical, this);
    for (const auto& [list, title] :
         {std::pair{commonList_, "Common Assets"}, std::pair{episodeList_, "Episode Assets"}}) {
        auto* box = new QWidget(lists);
        auto* column = new QVBoxLayout(box);
        column->setContentsMargins(4, 4, 4, 4);
        auto* heading = new QHBoxLayout;
        heading->addWidget(new QLabel(tr(title), box), 1);
        if (list == episodeList_ && recButtonInEpisodeAssetsArea()) heading->addWidget(recordButton());
        column->addLayout(heading);
        column->addWidget(list);
        lists->addWidget(box);
    }
    lists->setMinimumWidth(220);
    connect(commonList_, &QListWidget::currentRowChanged, this, [this] { listSelectionChanged(true); });
    connect(episodeList_, &QListWidget::currentRowChanged, this, [this] { listSelectionChanged(false); });
    connect(commonList_, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
        commands_.insertAsset(commonList_->assetAt(commonList_->row(item)));
    });
    connect(episodeList_, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
        commands_.insertAsset(episodeList_->assetAt(episodeList_->row(item)));
    });
    connect(episodeList_, &AssetListWidget::filesDropped, this,
            [this](const QStringList& paths) { dragged(paths, std::nullopt, 0); });
    connect(commonList_, &AssetListWidget::filesDropped, this, &TimelineViewController::draggedCommon);
    for (auto* list : {commonList_, episodeList_}) {
        list->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(list, &QWidget::customContextMenuRequested, this, [this, list](QPoint pos) {
            const int row = list->indexAt(pos).row();
            if (row < 0) return;
            const bool common = list == commonList_;
            auto* menu = new QMenu(this);
            menu->setObjectName(common ? "commonAssetMenu" : "episodeAssetMenu");
            menu->setAttribute(Qt::WA_DeleteOnClose);
            menu->addAction(tr("Inspector…"), this, [this, common, row] { openAssetInspector(common, row); });
            menu->addAction(tr("Volume…"), this, [this, common, row] { openVolumeSlider(common, row); });
            if (!common) {
                menu->addAction(tr("Clean…"), this, [this, row] { cleanAsset(row); });
                menu->addAction(tr("Probable Uhm…"), this, [this, row] { probableUhm(row); });
            }
            menu->popup(list->viewport()->mapToGlobal(pos));
        });
    }

    timelineArea_ = new QWidget(this);
    timelineArea_->setObjectName("timelineArea");
    timelineArea_->setAcceptDrops(true);
    timelineArea_->installEventFilter(this);
    timelineView_ = new TimelineWidget(nullptr, timelineArea_);
    timelineView_->setObjectName("timelineView");
    timelineView_->setMouseTracking(true);
    timelineView_->installEventFilter(this);
    auto* areaLayout = new QVBoxLayout(timelineArea_);
    areaLayout->setContentsMargins(0, 0, 0, 0);
    areaLayout->addWidget(timelineView_);
    btnTLItemHamburger_ = new QToolButton(timelineArea_);
    btnTLItemHamburger_->setObjectName("btnTLItemHamburger");
    btnTLItemHamburger_->setText("≡");
    btnTLItemHamburger_->setAutoRaise(true);
    btnTLItemHamburger_->hide();
    mnuTLItemHamburger_ = new QMenu(this);
    mnuMute_ = mnuTLItemHamburger_->addAction("Mute", this, [this] {
        if (hoverItem_ && timeline()) timeline()->toggleMuteItem(hoverItem_);
        afterAction();
    });
    mnuSolo_ = mnuTLItemHamburger_->addAction("Solo", this, [this] {
        if (hoverItem_ && timeline()) timeline()->toggleSoloItem(hoverItem_);
        afterAction();
    });
    mnuTLItemHamburger_->addSeparator();
    mnuMuteLane_ = mnuTLItemHamburger_->addAction("Mute Lane", this, [this] {
        const auto tl = timeline();
        if (!hoverItem_ || !tl) return;
        const auto lane = tl->getLane(hoverItem_->lane);
        if (lane && lane->mute)
            tl->unMuteLane(hoverItem_->lane);
        else
            tl->muteLane(hoverItem_->lane);
        afterAction();
    });
    mnuSoloLane_ = mnuTLItemHamburger_->addAction("Solo Lane", this, [this] {
        const auto tl = timeline();
        if (!hoverItem_ || !tl) return;
        const auto lane = tl->getLane(hoverItem_->lane);
        if (lane && lane->solo)
            tl->unSoloLane(hoverItem_->lane);
        else
            tl->soloLane(hoverItem_->lane);
        afterAction();
    });
    connect(btnTLItemHamburger_, &QToolButton::clicked, this, [this] {
        titItemHamburgerSetupTitles();
        mnuTLItemHamburger_->popup(
            btnTLItemHamburger_->mapToGlobal(QPoint(0, btnTLItemHamburger_->height())));
    });

    auto* split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(lists);
    split->addWidget(timelineArea_);
    split->setStretchFactor(1, 1);
    split->setSizes({240, 900});

    percentageBar_ = new QProgressBar(this);
    percentageBar_->setObjectName("percentageBarHandler");
    percentageBar_->setRange(0, 1000);
    percentageBar_->setTextVisible(false);
    percentageBar_->setFixedHeight(4);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(upperStack_);
    layout->addWidget(percentageBar_);
    layout->addWidget(split, 1);
}

TimelineWidget* TimelineViewController::timelineWidget() const {
    return timelineView_;
}

void TimelineViewController::tlLoaded(const std::shared_ptr<AEEpisode>& episode) {
    qxLog("TimelineViewController.tlLoaded " + (episode ? episode->episodeId : QString()));
    AEPreferences::load();
    commands_.tlLoaded(episode, AEAssetListVCGlobal);
    installBrightwashHooks();
    refreshLists();
    attachView();
    timeline()->setViewportRangeAll();
    autoSaveTimer_ = QXTimer::loop("TimeLineViewController.autosave", kAutoSaveSeconds, false,
                                   [this] { commands_.autoSave(); });
    idleTimer_ = QXTimer::loop("TimeLineViewController.idle", kIdleSeconds, false, [this] { idle(); });
    afterAction();
}

void TimelineViewController::attachView() {
    const auto tl = timeline();
    if (!tl) return;
    qxLog("setupTimelineView");
    timelineView_->setTimeline(tl);
    tl->view->autoScroll = AEPreferences::timelineAutoScroll;
    tl->hideEphemeralCallback = [this] { timelineView_->update(); };
    tl->markerInspectorPresenter = [this](const std::shared_ptr<AEMarker>& marker) {
        auto* sheet = new MarkerInspectorVC(marker, timeline(), this);
        sheet->setWindowModality(Qt::WindowModal);
        sheet->open();
    };
    tl->markerListUpdater = [] {
        if (auto* list = AEMarkerListVC::current()) list->update();
    };
    tl->mustDraw = true;
}

void TimelineViewController::closeAll() {
    qxLog("TimelineViewController.closeAll");
    if (autoSaveTimer_) autoSaveTimer_->stop();
    if (idleTimer_) idleTimer_->stop();
    if (const auto tl = timeline()) {
        tl->pause();
        tl->stopTimers();
    }
    commands_.autoSave();
    if (auto* list = AEMarkerListVC::current()) list->close();
    if (commands_.episode) AEEpisodeSelected = commands_.episode;
    TimelineWindowStatus = AEWindowStatus::yetClosed;
    if (closed) closed();
}

void TimelineViewController::refreshLists() {
    commonList_->setAssets(commands_.commonAssets);
    episodeList_->setAssets(commands_.episodeAssets);
}

QToolButton* TimelineViewController::recordButton() {
    return toolButton("Record", "Record a new asset into this episode", this, [this] { openRecorder(); });
}

void TimelineViewController::openRecorder() {
    if (!episode() || !zendrelShow) return;
    const QPointer<TimelineViewController> self(this);
    openAssetRecorder(this, zendrelShow, episode(), [self](const std::shared_ptr<AEAsset>&) {
        if (!self || !self->episode()) return;
        self->episodeAssetsChanged(self->episode()->assets);
        saveShow();
    });
}

void TimelineViewController::cleanSelectedAsset() {
    if (commands_.selectedEpisodeAssetIndex < 0) {
        userInteraction()->alert("Clean", "Choose an asset of the episode's list first.");
        return;
    }
    cleanAsset(commands_.selectedEpisodeAssetIndex);
}

void TimelineViewController::cleanAsset(int row) {
    const auto asset = episodeList_->assetAt(row);
    if (!asset) return;
    // The controller works on the rows of the list as shown.
    AEEpisodeAssetListVCGlobal = commands_.episodeAssets;
    const auto at = std::find(AEEpisodeAssetListVCGlobal.begin(), AEEpisodeAssetListVCGlobal.end(), asset);
    const int globalRow = int(at - AEEpisodeAssetListVCGlobal.begin());
    auto* sheet = new BrightwashAssetAlertVC(
        asset, globalRow, [](int r, bool rm) { episodeBrightwash().assetInspectorVCBrightwash(r, rm); },
        this);
    sheet->setObjectName("brightwashAssetAlert");
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    sheet->open();
}

void TimelineViewController::installBrightwashHooks() {
    const QPointer<TimelineViewController> self(this);
    BrightwashAssets& controller = episodeBrightwash();
    controller.starting = [self](const std::shared_ptr<Brightwash>& run) {
        if (!self) return;
        auto prog = Prog::make(ProgType::double_, {}, 0.25, Brightwash::getNphases(run->settings));
        run->prog = prog;
        auto* window = new BrightwashProgressWindow(run, prog, self);
        window->setObjectName("brightwashProgress");
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->show();
        self->cleaningWindows_[run->resultPath()] = window;
    };
    controller.ended = [self](const QString& path) {
        if (!self) return;
        if (const auto window = self->cleaningWindows_.take(path)) window->close();
        self->episodeAssetsChanged(AEEpisodeAssetListVCGlobal);
        self->commands_.autoSave();
    };
}

void TimelineViewController::episodeAssetsChanged(std::vector<std::shared_ptr<AEAsset>> assets) {
    commands_.episodeAssets = assets;
    AEEpisodeAssetListVCGlobal = assets;
    AEEpisodeAssetListVCMustUpdate = false;
    // A clean's placeholder is only shown; the episode keeps real assets.
    if (episode()) {
        episode()->assets.clear();
        std::copy_if(assets.begin(), assets.end(), std::back_inserter(episode()->assets),
                     [](const auto& asset) { return !asset->temporary; });
    }
    refreshLists();
    afterAction();
}

void TimelineViewController::listSelectionChanged(bool common) {
    AssetListWidget* list = common ? commonList_ : episodeList_;
    AssetListWidget* other = common ? episodeList_ : commonList_;
    const int row = list->currentRow();
    if (row < 0) {
        (common ? commands_.selectedCommonAssetIndex : commands_.selectedEpisodeAssetIndex) = -1;
        return;
    }
    // One chosen asset at a time: choosing in one list forgets the other.
    {
        const QSignalBlocker block(other);
        other->setCurrentRow(-1);
        other->clearSelection();
    }
    commands_.selectedCommonAssetIndex = common ? row : -1;
    commands_.selectedEpisodeAssetIndex = common ? -1 : row;
}

void TimelineViewController::afterAction() {
    if (const auto tl = timeline()) tl->mustDraw = true;
    tlItemHamburgerIdle(std::nullopt);
    if (stats_) stats_->update(commands_.getStats());
    timelineView_->update();
}

void TimelineViewController::idle() {
    if (idleR_) return;
    idleR_ = true;
    if (const auto tl = timeline()) {
        const auto [left, right] = tl->getMeteringStereo();
        vumeter_->setValue(meterStep(left));
        vumeter2_->setValue(meterStep(right));
        const double out = tl->getTimelineOutTime();
        totalDurationTC_->setText(tc_getFloatTimecode(out));
        const QString icon = tl->playing ? "pd_icon_pause (0-00-00-00)" : "pd_icon_play (0-00-00-00)";
        if (playButton_->property("imageName").toString() != icon) {
            playButton_->setProperty("imageName", icon);
            playButton_->setText(tl->playing ? "Pause" : "Play");
        }
        percentageBar_->setValue(out > 0 ? int(std::clamp(tl->currentPHTime / out, 0.0, 1.0) * 1000) : 0);
        selectionDurationTC_->setText(tc_getFloatTimecode(tl->getSelectionDuration()));
        if (AEEpisodeAssetListVCMustUpdate) episodeAssetsChanged(AEEpisodeAssetListVCGlobal);
        if (tl->mustDraw || tl->playing) {
            tl->mustDraw = false;
            timelineView_->update();
        }
    }
    idleR_ = false;
}

void TimelineViewController::play_pressed() {
    if (const auto tl = timeline()) tl->playPause();
    idle();
}

void TimelineViewController::goBegin_pressed() {
    if (const auto tl = timeline()) tl->goToBegin();
    afterAction();
}

void TimelineViewController::goEnd_pressed() {
    if (const auto tl = timeline()) tl->goToEnd();
    afterAction();
}

void TimelineViewController::zoomIn_pressed() {
    const auto mode = static_cast<AEZoomTo>(prefs_getValueInt("AEPreferences.zoomTo", 0));
    if (const auto tl = timeline()) tl->zoomIn(mode);
    afterAction();
}

void TimelineViewController::zoomOut_pressed() {
    const auto mode = static_cast<AEZoomTo>(prefs_getValueInt("AEPreferences.zoomTo", 0));
    if (const auto tl = timeline()) tl->zoomOut(mode);
    afterAction();
}

void TimelineViewController::zoomAll_pressed() {
    if (const auto tl = timeline()) tl->setViewportRangeAll();
    afterAction();
}

void TimelineViewController::bladeAtPlayhead() {
    if (const auto tl = timeline()) tl->sliceMainLane(tl->currentPHTime);
    afterAction();
}

void TimelineViewController::deleteSelection() {
    if (const auto tl = timeline()) tl->deleteSelection();
    afterAction();
}

void TimelineViewController::setSpeed(double rate) {
    if (const auto tl = timeline()) tl->setSpeedRate(rate);
    const int index = playSpeed_->findData(rate);
    if (index >= 0) playSpeed_->setCurrentIndex(index);
}

void TimelineViewController::btnVolumeKFsPressed() {
    AEPreferences::displayVolumeKFs = !AEPreferences::displayVolumeKFs;
    AEPreferences::save();
    kfButton_->setChecked(AEPreferences::displayVolumeKFs);
    afterAction();
}

void TimelineViewController::btnEditModePressed(int tag) {
    if (const auto tl = timeline())
        tl->setEditingMode(tag == 1   ? AEEditorMode::blade
                           : tag == 2 ? AEEditorMode::drag
                                      : AEEditorMode::normal);
}

void TimelineViewController::setFullSizeTimeline(bool full) {
    upperStack_->setVisible(!full);
}

void TimelineViewController::showStats() {
    if (!stats_) stats_ = new TimeLineStatsVC(this);
    stats_->update(commands_.getStats());
    stats_->show();
    stats_->raise();
}

void TimelineViewController::showMarkerList() {
    AEMarkerListVC::show(
        [self = QPointer<TimelineViewController>(this)] { return self ? self->timeline() : nullptr; }, this);
}

void TimelineViewController::export_pressed() {
    TimelineExport::export_pressed(timeline(), episode(), this);
}

void TimelineViewController::selectionToAsset() {
    const auto tl = timeline();
    if (!tl || tl->getSelectionDuration() <= 0) {
        userInteraction()->alert("Selection to Asset", "Select a stretch of the timeline first.");
        return;
    }
    auto* panel = new AESelectionToAssetVC(
        "Selection",
        [self = QPointer<TimelineViewController>(this)](const QString& name, AEAssetType type,
                                                        AESelectionToAssetWhere where) {
            if (!self) return;
            selectionToAssetDone(name, type, where, self->timeline(), self->episode(),
                                 [self, where](const std::shared_ptr<AEAsset>& asset) {
                                     if (!self || !asset) return;
                                     if (where == AESelectionToAssetWhere::common)
                                         self->commands_.commonAssets = AEAssetListVCGlobal;
                                     else
                                         self->commands_.episodeAssets = AEEpisodeAssetListVCGlobal;
                                     self->refreshLists();
                                 });
        },
        this);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->open();
}

void TimelineViewController::probableUhm(int row) {
    const auto asset = episodeList_->assetAt(row);
    if (!asset) {
        userInteraction()->alert("Probable Uhm", "Choose an asset of the episode's list first.");
        return;
    }
    timelineUhm_openPanel(asset, this, [self = QPointer<TimelineViewController>(this)] {
        if (self) self->afterAction();
    });
}

void TimelineViewController::selectionToUhmFP() {
    timelineUhm_selectionToUhmFP(timeline());
}

void TimelineViewController::btnInsertSilencePressed() {
    auto* panel = new AEInsertSilenceVC([this](double seconds) { commands_.insertSilence(seconds); }, this);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->open();
}

void TimelineViewController::openVolumeSlider(bool common, int row) {
    const auto asset = (common ? commonList_ : episodeList_)->assetAt(row);
    if (!asset) return;
    auto* panel = new VolumeSliderVC(
        asset,
        [this] {
            if (const auto tl = timeline()) {
                tl->updateVolumeFromOutside();
                tl->mustDraw = true;
            }
        },
        this);
    panel->show();
}

void TimelineViewController::openAssetInspector(bool common, int row) {
    const auto asset = (common ? commonList_ : episodeList_)->assetAt(row);
    if (!asset) return;
    auto* panel = new AEAssetVC(asset, this);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    if (!common) {
        panel->onClean = [this, row] { cleanAsset(row); };
        panel->onUhmAnalysis = [this, row] { probableUhm(row); };
    }
    panel->assetInspectorVCDone = [this, common](const std::shared_ptr<AEAsset>& edited, const QString&,
                                                 AEAssetType) {
        AEAssetDB::saveAsset(edited);
        saveShow();
        AssetListWidget* list = common ? commonList_ : episodeList_;
        list->setAssets(common ? commands_.commonAssets : commands_.episodeAssets);
        if (const auto tl = timeline()) {
            tl->updateVolumeFromOutside();
            tl->mustDraw = true;
        }
    };
    panel->open();
}

std::shared_ptr<AEAsset> TimelineViewController::assetById(const QString& id) const {
    for (const auto* list : {&commands_.commonAssets, &commands_.episodeAssets})
        for (const auto& asset : *list)
            if (asset && asset->id == id) return asset;
    return nullptr;
}

void TimelineViewController::placeAssets(const std::vector<std::shared_ptr<AEAsset>>& assets,
                                         std::optional<double> at, int64_t lane) {
    const auto tl = timeline();
    if (!tl || assets.empty()) return;
    commands_.addStatus(); // the whole drop is one undo step
    double t = at.value_or(tl->getMainLaneOutTime());
    for (const auto& asset : assets) {
        if (lane != 0 || asset->type == AEAssetType::bgm) {
            tl->attachItem(asset, asset->type == AEAssetType::bgm ? -1 : lane, t, std::nullopt, false, false);
        } else {
            const int64_t n = at ? tl->getNearestCutIndex(t) : -1;
            if (n == -1)
                tl->appendItemInMainLane(asset, std::nullopt, false);
            else
                tl->insertItemInMainLane(asset, n, std::nullopt, false);
        }
        t += asset->duration;
    }
    afterAction();
}

void TimelineViewController::dragged(const QStringList& pathList, std::optional<double> dropTime,
                                     int64_t lane) {
    const DroppedFiles files = DroppedFiles::sort(pathList);
    if (!files.refused.isEmpty()) userInteraction()->alert("Cannot Add Files", files.refusedMessage());
    if (files.audio.isEmpty() || !episode()) return;
    const QPointer<TimelineViewController> self(this);
    const auto ingest = [self, dropTime, lane](const QStringList& paths, bool brightwash, bool normalize,
                                               bool dontAsk) {
        if (!self) return;
        auto loading = std::make_shared<std::shared_ptr<LoadingWindow>>();
        *loading = LoadingWindow::make(
            "Ingesting", "Ingesting file(s)", QString::number(paths.size()) + " file(s)",
            [self, paths, brightwash, normalize, dontAsk, dropTime, lane, loading] {
                // A file may have gone while the sheet was up.
                const DroppedFiles still = DroppedFiles::sort(paths);
                if (!still.refused.isEmpty())
                    userInteraction()->alert("Cannot Add Files", still.refusedMessage());
                if (self && !still.audio.isEmpty()) {
                    const auto made =
                        AEAssetIngestDone(self->episode(), still.audio, brightwash, normalize, dontAsk);
                    self->commands_.episodeAssets = self->episode()->assets;
                    self->refreshLists();
                    self->placeAssets(made, dropTime, lane);
                    self->commands_.autoSave();
                }
                if (*loading) (*loading)->dismiss();
                loading->reset();
            },
            "Zendrel_rolling_v2_");
    };
    if (prefs_getValueBool("AEIngest.DontAskAtDrag", false)) {
        ingest(files.audio, prefs_getValueBool("AEIngest.Brightwash", false),
               prefs_getValueBool("AEIngest.Normalize", true), true);
        return;
    }
    auto* sheet = new AEAssetIngestVC(files.audio, ingest, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    sheet->open();
}

void TimelineViewController::draggedCommon(const QStringList& pathList) {
    const DroppedFiles files = DroppedFiles::sort(pathList);
    if (!files.refused.isEmpty()) userInteraction()->alert("Cannot Add Files", files.refusedMessage());
    if (files.audio.isEmpty()) return;
    ingestCommonAssets(files.audio);
    commands_.commonAssets = AEAssetListVCGlobal;
    refreshLists();
}

QPointF TimelineViewController::toTimelinePos(QObject* from, QPointF pos) const {
    auto* widget = qobject_cast<QWidget*>(from);
    if (!widget || widget == timelineView_) return pos;
    return timelineView_->mapFrom(widget, pos.toPoint());
}

void TimelineViewController::restoreFromPreviewBase() {
    const auto tl = timeline();
    if (!tl || !previewBase_) return;
    const auto fresh = previewBase_->duplicate();
    tl->mainLane = fresh->mainLane;
    tl->attachedItems = fresh->attachedItems;
    tl->refillMainLaneInTime();
    tl->getCollectedItems();
    tl->setupLanes();
    tl->mustDraw = true;
}

void TimelineViewController::previewTimeline(const std::shared_ptr<AEAsset>& asset, QPointF pos,
                                             bool isPreview) {
    const auto tl = timeline();
    if (!tl || !asset) return;
    if (!previewBase_) previewBase_ = tl->getStatus();
    restoreFromPreviewBase();
    const AEMouseEvent at = modelEvent(pos);
    const double t = std::max(0.0, tl->mouseEventToTime(at));
    const int64_t lane = asset->type == AEAssetType::bgm ? -1 : tl->mouseEventToLane(at).value_or(0);
    if (!isPreview) {
        commands_.undoQueue.addStatus(previewBase_);
        previewBase_.reset();
    }
    if (lane != 0) {
        tl->attachItem(asset, lane, t, std::nullopt, false, false);
    } else {
        const int64_t n = tl->getNearestCutIndex(t);
        if (n == -1)
            tl->appendItemInMainLane(asset, std::nullopt, false);
        else
            tl->insertItemInMainLane(asset, n, std::nullopt, false);
    }
    if (isPreview)
        tl->mustDraw = true;
    else
        afterAction();
    timelineView_->update();
}

void TimelineViewController::copyTimelaneLanesBack() {
    restoreFromPreviewBase();
    previewBase_.reset();
    timelineView_->update();
}

bool TimelineViewController::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto* drag = static_cast<QDragMoveEvent*>(event);
        const QMimeData* mime = drag->mimeData();
        if (mime->hasFormat(AssetListWidget::kAssetMime)) {
            const auto asset = assetById(QString::fromUtf8(mime->data(AssetListWidget::kAssetMime)));
            if (!asset) return false;
            drag->acceptProposedAction();
            previewTimeline(asset, toTimelinePos(watched, drag->position()), true);
            return true;
        }
        if (mime->hasUrls()) {
            drag->acceptProposedAction();
            return true;
        }
        return false;
    }
    case QEvent::DragLeave:
        if (previewBase_) copyTimelaneLanesBack();
        return false;
    case QEvent::Drop: {
        auto* drop = static_cast<QDropEvent*>(event);
        const QMimeData* mime = drop->mimeData();
        const QPointF pos = toTimelinePos(watched, drop->position());
        if (mime->hasFormat(AssetListWidget::kAssetMime)) {
            const auto asset = assetById(QString::fromUtf8(mime->data(AssetListWidget::kAssetMime)));
            if (asset)
                previewTimeline(asset, pos, false);
            else
                copyTimelaneLanesBack();
            drop->acceptProposedAction();
            return true;
        }
        if (mime->hasUrls()) {
            drop->acceptProposedAction();
            const auto tl = timeline();
            const AEMouseEvent at = modelEvent(pos);
            const double t = tl ? std::max(0.0, tl->mouseEventToTime(at)) : 0.0;
            const int64_t lane = tl ? std::max<int64_t>(0, tl->mouseEventToLane(at).value_or(0)) : 0;
            // Raw entries too: a dropped folder or a vanished file is told, not silently skipped.
            QStringList paths;
            for (const QUrl& url : mime->urls())
                paths << (url.isLocalFile() ? url.toLocalFile() : url.toString());
            dragged(paths, t, lane);
            return true;
        }
        return false;
    }
    case QEvent::MouseMove:
        if (watched == timelineView_) tlItemHamburgerIdle(static_cast<QMouseEvent*>(event)->position());
        return false;
    case QEvent::Leave:
        if (watched == timelineView_ && !btnTLItemHamburger_->underMouse()) tlItemHamburgerIdle(std::nullopt);
        return false;
    default:
        return false;
    }
}

AEMouseEvent TimelineViewController::modelEvent(QPointF widgetPos) const {
    return AEMouseEvent{timelineView_->toModel(widgetPos), Qt::NoModifier};
}

void TimelineViewController::tlItemHamburgerIdle(std::optional<QPointF> pos) {
    const auto tl = timeline();
    const auto item = pos && tl ? tl->getItemAtMouseEvent(modelEvent(*pos)) : nullptr;
    if (!item || !tl) {
        btnTLItemHamburger_->hide();
        hoverItem_.reset();
        return;
    }
    const double end = item->isBGM() ? item->bgmOutTime : item->outTime();
    const double x0 = std::max(0.0, tl->timeToX(item->inTime));
    const double x1 = std::min(double(timelineView_->canvasRect().width()), tl->timeToX(end));
    const auto ys = tl->laneToYs(item->lane);
    if (x1 - x0 < kHamburgerMinWidth || !ys) {
        btnTLItemHamburger_->hide();
        hoverItem_.reset();
        return;
    }
    hoverItem_ = item;
    const QPoint corner = timelineView_->mapTo(
        timelineArea_, QPoint(int(x1) - btnTLItemHamburger_->width() - 2, int(ys->first) + 2));
    btnTLItemHamburger_->move(corner);
    btnTLItemHamburger_->show();
    btnTLItemHamburger_->raise();
}

void TimelineViewController::titItemHamburgerSetupTitles() {
    const auto tl = timeline();
    if (!hoverItem_ || !tl) return;
    mnuMute_->setText(AETimeLine::itemActive(hoverItem_) ? "Mute" : "Unmute");
    mnuSolo_->setText(hoverItem_->solo.value_or(false) ? "Unsolo" : "Solo");
    const auto lane = tl->getLane(hoverItem_->lane);
    mnuMuteLane_->setText(lane && lane->mute ? "Unmute Lane" : "Mute Lane");
    mnuSoloLane_->setText(lane && lane->solo ? "Unsolo Lane" : "Solo Lane");
}

void TimelineViewController::keyPressEvent(QKeyEvent* event) {
    qxLog("keyDown");
    const bool plain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    switch (event->key()) {
    case Qt::Key_I:
        if (plain) return commands_.performInsert();
        break;
    case Qt::Key_A:
    case Qt::Key_E:
        if (plain) return commands_.performAppend();
        break;
    case Qt::Key_Space:
        return play_pressed();
    case Qt::Key_Home:
        return goBegin_pressed();
    case Qt::Key_End:
        return goEnd_pressed();
    case Qt::Key_M:
        if (plain) return commands_.addMarker(false);
        break;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}
