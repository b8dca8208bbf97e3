#include "app/windows/AppDelegate.h"

#include "app/core/AEPreferences.h"
#include "app/core/RemoveComponentsCommand.h"
#include "app/core/WorkFolderPrefs.h"
#include "app/windows/AppWindow.h"
#include "app/windows/AssetListWidget.h"
#include "app/windows/CommonAssetsWindow.h"
#include "app/windows/SettingsPanels.h"
#include "app/windows/TimelineViewController.h"
#include "app/windows/WorkingFolderVC.h"
#include "app/windows/ZendrelSplashVC.h"
#include "cleaning/BrightwashAssets.h"
#include "foundation/Log.h"
#include "project/model/AECache.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/AssetDrop.h"
#include "project/model/Globals.h"
#include "project/panels/AEEpisodeVC.h"
#include "project/panels/AEShowVC.h"
#include "project/panels/MainViewController.h"
#include "render/Mp3.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "ui/cleaning/BatchCleanWindow.h"
#include "ui/cleaning/Brightwash_prefsVC.h"
#include "ui/ducking/DuckingCommands.h"
#include "ui/recording/RecorderEntryPoints.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QHeaderView>
#include <QMenuBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {
const QSize kSplashSize(520, 400);
const QSize kMainSize(1000, 700);
const QSize kTimelineSize(1280, 780);
} // namespace

AppDelegate::AppDelegate() = default;

AppDelegate::~AppDelegate() {
    if (main_ && mainVC == main_.data()) mainVC = nullptr;
}

void AppDelegate::applicationDidFinishLaunching() {
    window_ = std::make_unique<AppWindow>();
    installIngestBrightwash();
    // Closing the editing window goes back to the list; closing the list quits.
    window_->closeGuard = [this] {
        if (!timelineVC_) return false;
        timelineVC_->closeAll();
        return true;
    };
    Mp3::loadSettings();
    AEPreferences::load();
    buildMenu();
    splash_ = new ZendrelSplashVC([this](const std::shared_ptr<AEShow>& show) { showLoaded(show); });
    window_->switchTo(splash_, kSplashSize, true);
    window_->show();
}

void AppDelegate::openBundleWhenReady(const QString& path) {
    if (main_)
        main_->importEpisodeBehindWindow(path);
    else
        pendingBundle_ = path;
}

QAction* AppDelegate::action(const QString& name) const {
    return window_ ? window_->findChild<QAction*>(name) : nullptr;
}

QAction* AppDelegate::add(QMenu* menu, const QString& name, const QString& text, const QKeySequence& keys,
                          std::function<void()> action) {
    QAction* item = menu->addAction(text);
    item->setObjectName(name);
    if (!keys.isEmpty()) item->setShortcut(keys);
    connect(item, &QAction::triggered, this, [action] { action(); });
    return item;
}

QAction* AppDelegate::addTimeline(QMenu* menu, const QString& name, const QString& text,
                                  const QKeySequence& keys,
                                  std::function<void(TimelineViewController&)> action) {
    return add(menu, name, text, keys, [this, action] {
        if (timelineVC_ && timelineVC_->timeline()) action(*timelineVC_);
    });
}

void AppDelegate::buildMenu() {
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    buildMarkersMenu();
    buildHelpMenu();
}

void AppDelegate::buildFileMenu() {
    QMenu* file = window_->menuBar()->addMenu(tr("&File"));
    add(file, "menu_WorkingFolder", tr("Working Folder..."), {}, [this] { menu_WorkingFolder(); });
    add(file, "saveAction", tr("&Save"), QKeySequence::Save, [this] { saveAction(); });
    add(file, "menu_importEpisode", tr("Import Episode..."), QKeySequence("Ctrl+Shift+I"), [this] {
        if (main_ && !timelineVC_) main_->importEpisode();
    });
    add(file, "menu_showMetadata", tr("Show..."), {}, [this] {
        if (!zendrelShow) return;
        AEShowVC panel(zendrelShow, window_.get());
        panel.exec();
    });
    add(file, "menu_episodeMetadata", tr("Episode..."), QKeySequence("Ctrl+I"), [this] {
        if (!AEEpisodeSelected || !timelineVC_) return;
        auto* panel = new AEEpisodeVC(AEEpisodeSelected, window_.get());
        panel->setAttribute(Qt::WA_DeleteOnClose);
        panel->episodeVCDone = [this](const std::shared_ptr<AEEpisode>& episode) {
            saveShow();
            window_->setWindowTitle(episode->episodeId + " – " + episode->title);
        };
        panel->open();
    });
    addTimeline(file, "mennu_exportTimeline", tr("&Export..."), QKeySequence("Ctrl+E"),
                [](TimelineViewController& vc) { vc.export_pressed(); });
    addTimeline(file, "menu_closeEpisode", tr("&Close Episode"), QKeySequence::Close,
                [](TimelineViewController& vc) { vc.closeAll(); });
    file->addSeparator();
    add(file, "menu_batchClean", tr("Batch Clean…"), {}, [this] {
        auto* window = new BatchCleanWindow(window_.get());
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->show();
    });
    add(file, "menu_cleaningSettings", tr("Cleaning Settings…"), {},
        [this] { Brightwash_prefsVC::displayPrefsPanel(window_.get()); });
    add(file, "menu_recorderSettings", tr("Recorder Settings…"), {}, [this] {
        if (zendrelShow) menu_recorderSettings(window_.get(), zendrelShow, [] { saveShow(); });
    });
    addTimeline(file, "menu_recordAsset", tr("Record…"), QKeySequence("Ctrl+R"),
                [](TimelineViewController& vc) { vc.openRecorder(); });
    add(file, "menu_commonAssets", tr("Common Assets"), {}, [this] { commonAssetWindowToggler(); });
    add(file, "menu_clearCache", tr("Clear Waveform Cache"), {}, [] { AECache::clearCache(); });
    add(file, "mnuRemoveExternalcomponents", tr("Remove External Components"), {},
        [] { mnuRemoveExternalcomponents(); });
    file->addSeparator();
    QAction* quit = add(file, "menu_quit", tr("&Quit"), QKeySequence::Quit, [] { QApplication::quit(); });
    // Quitting saves nothing of its own: the timers and the timeline's close have done it.
    quit->setMenuRole(QAction::QuitRole);
}

void AppDelegate::buildEditMenu() {
    QMenu* edit = window_->menuBar()->addMenu(tr("&Edit"));
    addTimeline(edit, "menu_undo", tr("&Undo"), QKeySequence("Ctrl+Z"),
                [](TimelineViewController& vc) { vc.commands().undo(); });
    addTimeline(edit, "menu_redo", tr("&Redo"), QKeySequence("Ctrl+Shift+Z"),
                [](TimelineViewController& vc) { vc.commands().redo(); });
    edit->addSeparator();
    addTimeline(edit, "menu_cut", tr("Cu&t"), QKeySequence::Cut,
                [](TimelineViewController& vc) { vc.commands().cut(); });
    addTimeline(edit, "menu_copy", tr("&Copy"), QKeySequence::Copy,
                [](TimelineViewController& vc) { vc.commands().copy(); });
    addTimeline(edit, "menu_paste", tr("&Paste"), QKeySequence::Paste,
                [](TimelineViewController& vc) { vc.commands().paste(); });
    addTimeline(edit, "menu_delete", tr("&Delete"), QKeySequence::Delete,
                [](TimelineViewController& vc) { vc.deleteSelection(); });
    addTimeline(edit, "menu_blade", tr("Cut at Playhead"), QKeySequence("Ctrl+B"),
                [](TimelineViewController& vc) { vc.bladeAtPlayhead(); });
    addTimeline(edit, "mnuToggleActivateItemSelected", tr("Activate / Deactivate Item"),
                QKeySequence("Ctrl+K"), [](TimelineViewController& vc) {
                    vc.timeline()->toggleActivateSelectedItem();
                    vc.timeline()->mustDraw = true;
                });
    addTimeline(edit, "mnuDeactivateSelectionSelected", tr("Deactivate Selection"), {},
                [](TimelineViewController& vc) {
                    vc.timeline()->deactivateSelection();
                    vc.timeline()->mustDraw = true;
                });
    edit->addSeparator();
    addTimeline(edit, "menu_InsertSilence", tr("Insert Silence..."), {},
                [](TimelineViewController& vc) { vc.btnInsertSilencePressed(); });
    addTimeline(edit, "menu_convertSelectionToAsset", tr("Selection to Asset..."), {},
                [](TimelineViewController& vc) { vc.selectionToAsset(); });
    addTimeline(edit, "menu_selectionToUhmDB", tr("Selection to Uhm DB"), {},
                [](TimelineViewController& vc) { vc.selectionToUhmFP(); });
    addTimeline(edit, "menu_cleanAsset", tr("Clean…"), {},
                [](TimelineViewController& vc) { vc.cleanSelectedAsset(); });
    addTimeline(edit, "menu_probableUhm", tr("Probable Uhm…"), {},
                [](TimelineViewController& vc) { vc.probableUhm(vc.commands().selectedEpisodeAssetIndex); });
    addTimeline(edit, "menu_newVolumeKeyframe", tr("Add Volume Keyframe"), QKeySequence("Ctrl+Shift+K"),
                [](TimelineViewController& vc) { vc.commands().addVolumeKeyframe(); });
    auto* ducking = new DuckingCommands(
        [this] { return timelineVC_ ? timelineVC_->timeline() : std::shared_ptr<AETimeLine>(); },
        window_.get());
    ducking->autoDuckSelectionAction->setObjectName("mnuAutoDuckSelection");
    ducking->automaticDuckingSettingsAction->setObjectName("menu_automaticDuckingSettings");
    edit->addAction(ducking->autoDuckSelectionAction);
    edit->addAction(ducking->automaticDuckingSettingsAction);
    QMenu* common = edit->addMenu(tr("Insert Common Asset"));
    for (int n = 1; n <= 9; ++n)
        addTimeline(common, QString("insertIntoCommonAsset%1").arg(n), tr("Common Asset %1").arg(n),
                    QKeySequence(QString("Alt+%1").arg(n)), [n](TimelineViewController& vc) {
                        const auto& list = vc.commands().commonAssets;
                        if (n - 1 < int(list.size())) vc.commands().insertAsset(list[size_t(n - 1)]);
                    });
    edit->addSeparator();
    QAction* prefs = add(edit, "menu_preferences", tr("Preferences..."), QKeySequence("Ctrl+,"), [this] {
        BasePrefsVC panel(window_.get());
        panel.exec();
        if (timelineVC_ && timelineVC_->timeline()) timelineVC_->timeline()->setupLanes();
    });
    prefs->setMenuRole(QAction::PreferencesRole);
    add(edit, "menu_mp3EncodingSettings", tr("MP3 Encoding..."), {}, [this] {
        Mp3EncodingSettingsVC panel(window_.get());
        panel.exec();
    });
}

void AppDelegate::buildViewMenu() {
    QMenu* view = window_->menuBar()->addMenu(tr("&View"));
    addTimeline(view, "menu_zoomIn", tr("Zoom &In"), QKeySequence("Ctrl+="),
                [](TimelineViewController& vc) { vc.zoomIn_pressed(); });
    addTimeline(view, "menu_zoomOut", tr("Zoom &Out"), QKeySequence("Ctrl+-"),
                [](TimelineViewController& vc) { vc.zoomOut_pressed(); });
    addTimeline(view, "menu_viewAll", tr("View &All"), QKeySequence("Ctrl+0"),
                [](TimelineViewController& vc) { vc.zoomAll_pressed(); });
    view->addSeparator();
    QAction* autoscroll = add(view, "menu_timelineAutoscroll", tr("Follow Playhead"), {}, [this] {
        AEPreferences::timelineAutoScroll = !AEPreferences::timelineAutoScroll;
        AEPreferences::save();
        action("menu_timelineAutoscroll")->setChecked(AEPreferences::timelineAutoScroll);
        if (timelineVC_ && timelineVC_->timeline() && timelineVC_->timeline()->view)
            timelineVC_->timeline()->view->autoScroll = AEPreferences::timelineAutoScroll;
    });
    autoscroll->setCheckable(true);
    autoscroll->setChecked(AEPreferences::timelineAutoScroll);
    QAction* kfs =
        addTimeline(view, "mnuDisplayVolumeKFsPressed", tr("Show Volume Keyframes"), {},
                    [this](TimelineViewController& vc) {
                        vc.btnVolumeKFsPressed();
                        action("mnuDisplayVolumeKFsPressed")->setChecked(AEPreferences::displayVolumeKFs);
                    });
    kfs->setCheckable(true);
    kfs->setChecked(AEPreferences::displayVolumeKFs);
    QMenu* lanes = view->addMenu(tr("Lanes"));
    auto* group = new QActionGroup(lanes);
    for (const auto& [name, text, setup] :
         {std::tuple{"mnuMainLanePrioritaryViewSelected", tr("Main Lane First"),
                     AETimeLineLanesViewSetup::normal},
          std::tuple{"mnuMainLaneAndBMGViewSelected", tr("Main Lane and Music"),
                     AETimeLineLanesViewSetup::bgm},
          std::tuple{"mnuAllLanesEqualsSelected", tr("All Lanes Equal"),
                     AETimeLineLanesViewSetup::allEquals}}) {
        QAction* item = add(lanes, name, text, {}, [this, setup] {
            AETimeLineLanesHelper::setSetup(setup);
            if (timelineVC_ && timelineVC_->timeline()) {
                timelineVC_->timeline()->setupLanes();
                timelineVC_->timeline()->mustDraw = true;
            }
        });
        item->setCheckable(true);
        item->setChecked(AETimeLineLanesHelper::lanesViewSetup == setup);
        group->addAction(item);
    }
    QAction* full =
        addTimeline(view, "mnuFullSizeTimelineSelected", tr("Full Size Timeline"),
                    QKeySequence("Ctrl+Shift+F"), [this](TimelineViewController& vc) {
                        vc.setFullSizeTimeline(action("mnuFullSizeTimelineSelected")->isChecked());
                    });
    full->setCheckable(true);
    addTimeline(view, "menu_statistics", tr("Statistics"), {},
                [](TimelineViewController& vc) { vc.showStats(); });
}

void AppDelegate::buildMarkersMenu() {
    QMenu* markers = window_->menuBar()->addMenu(tr("&Markers"));
    addTimeline(markers, "menu_addMarker", tr("Add Marker"), QKeySequence("Ctrl+M"),
                [](TimelineViewController& vc) { vc.commands().addMarker(false); });
    addTimeline(markers, "menu_addMarkerAndEditTitle", tr("Add Marker and Edit Title..."),
                QKeySequence("Ctrl+Shift+M"),
                [](TimelineViewController& vc) { vc.commands().addMarker(true); });
    addTimeline(markers, "menu_addChapterMarker", tr("Add Chapter..."), QKeySequence("Ctrl+Alt+M"),
                [](TimelineViewController& vc) { vc.commands().addMarker(true, AEMarkerType::chapter); });
    markers->addSeparator();
    addTimeline(markers, "menuGetPreviousMarker", tr("Previous Marker"), QKeySequence("Ctrl+["),
                [](TimelineViewController& vc) { vc.commands().goToMarker(false); });
    addTimeline(markers, "menuGetNextMarker", tr("Next Marker"), QKeySequence("Ctrl+]"),
                [](TimelineViewController& vc) { vc.commands().goToMarker(true); });
    markers->addSeparator();
    addTimeline(markers, "menu_showMarkersWindow", tr("Marker List"), QKeySequence("Ctrl+Shift+L"),
                [](TimelineViewController& vc) { vc.showMarkerList(); });
}

void AppDelegate::buildHelpMenu() {
    QMenu* help = window_->menuBar()->addMenu(tr("&Help"));
    add(help, "menu_keyboard", tr("Keyboard Shortcuts"), QKeySequence("F1"), [this] { showKeyboardTable(); });
    QAction* about = add(help, "menu_aboutZendrel", tr("About Zendrel"), {}, [this] {
        AboutPanel panel(window_.get());
        panel.exec();
    });
    about->setMenuRole(QAction::AboutRole);
}

void AppDelegate::showKeyboardTable() {
    auto* table = new QTableWidget(window_.get());
    table->setWindowFlag(Qt::Window);
    table->setAttribute(Qt::WA_DeleteOnClose);
    table->setObjectName("keyboardTable");
    table->setWindowTitle(tr("Keyboard Shortcuts"));
    table->setColumnCount(2);
    table->setHorizontalHeaderLabels({tr("Command"), tr("Keys")});
    table->verticalHeader()->hide();
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    QList<std::pair<QString, QString>> rows = {{tr("Play / Pause"), "Space"},
                                               {tr("Insert chosen asset"), "I"},
                                               {tr("Append chosen asset"), "A, E"},
                                               {tr("Add marker"), "M"},
                                               {tr("Go to beginning / end"), "Home, End"}};
    for (QAction* item : window_->findChildren<QAction*>())
        if (!item->shortcut().isEmpty())
            rows.append({item->text().remove('&'), item->shortcut().toString(QKeySequence::NativeText)});
    table->setRowCount(int(rows.size()));
    for (int r = 0; r < int(rows.size()); ++r) {
        table->setItem(r, 0, new QTableWidgetItem(rows[r].first));
        table->setItem(r, 1, new QTableWidgetItem(rows[r].second));
    }
    table->resize(420, 520);
    table->show();
}

void AppDelegate::commonAssetWindowToggler() {
    if (commonAssetW_) {
        commonAssetW_->close();
        return;
    }
    auto* assetsWindow = new CommonAssetsWindow(window_.get());
    assetsWindow->setAttribute(Qt::WA_DeleteOnClose);
    assetsWindow->filesDropped = [this](const QStringList& paths) {
        if (timelineVC_)
            timelineVC_->draggedCommon(paths);
        else
            ingestCommonAssets(paths);
    };
    assetsWindow->show();
    commonAssetW_ = assetsWindow;
}

void AppDelegate::showLoaded(const std::shared_ptr<AEShow>&) {
    auto* main = new MainViewController;
    main_ = main;
    mainVC = main;
    main->timelineOpener = [this](const std::shared_ptr<AEEpisode>& episode) { openTimeline(episode); };
    window_->switchTo(main, kMainSize, false);
    if (splash_) window_->discard(splash_);
    connect(main, &MainViewController::assetListsChanged, this, [this] {
        if (auto* list = qobject_cast<AssetListWidget*>(commonAssetW_.data()))
            list->setAssets(AEAssetListVCGlobal);
    });
    if (!pendingBundle_.isEmpty()) main->importEpisodeBehindWindow(pendingBundle_);
    pendingBundle_.clear();
}

void AppDelegate::openTimeline(const std::shared_ptr<AEEpisode>& episode) {
    auto* vc = new TimelineViewController;
    timelineVC_ = vc;
    vc->closed = [this] { timelineClosed(); };
    window_->switchTo(vc, kTimelineSize, false);
    window_->setWindowTitle(episode->episodeId + " – " + episode->title);
    TimelineWindowStatus = AEWindowStatus::open;
    episode->loadTimelineAsync([vc = QPointer<TimelineViewController>(vc), episode] {
        if (vc) vc->tlLoaded(episode);
    });
}

void AppDelegate::timelineClosed() {
    if (!main_) return;
    window_->switchTo(main_, kMainSize, false);
    main_->startTimer();
    if (timelineVC_) window_->discard(timelineVC_);
    timelineVC_ = nullptr;
}

MainViewController* AppDelegate::mainViewController() const {
    return main_;
}

void AppDelegate::menu_WorkingFolder() {
    if (!mainVC) {
        qxLog("menu_WorkingFolder: the show is still loading");
        return;
    }
    if (timelineVC_) {
        qxLog("menu_WorkingFolder: close the episode first");
        return;
    }
    saveShow();
    const QString current = AEIngest::getWorkFolder();
    mainVC->stopTimer();
    WorkingFolderVC panel(weak_from_this(), current, QString("Please Choose Zendrel Working Folder"),
                          window_.get());
    panel.setWindowModality(Qt::WindowModal);
    panel.exec();
    // Without the timer the change would never reach the list.
    if (mainVC) mainVC->startTimer();
}

void AppDelegate::saveAction() {
    if (timelineVC_ && timelineVC_->timeline())
        timelineVC_->commands().autoSave();
    else
        saveShow();
}

void AppDelegate::workingFolderChange(const QString& to) {
    workFolder_changeTo(to);
}

void AppDelegate::workingFolderMove(const QString&) {}
