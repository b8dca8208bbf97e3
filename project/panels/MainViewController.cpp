#include "project/panels/MainViewController.h"

#include "foundation/Execution.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/panels/AEEpisodeCell.h"
#include "project/panels/AEEpisodeVC.h"
#include "project/panels/EpisodeListModel.h"
#include "project/panels/NewEpisodeViewController.h"
#include "ui/IHImages.h"
#include "ui/LoadingWindow.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace {
const QString kSortImage = "miniIcon_sort (0-00-00-00)";
const QString kSortAscImage = "miniIcon_sort-asc (0-00-00-00)";
const QString kSortDescImage = "miniIcon_sort-disc (0-00-00-00)";

QToolButton* makeSortButton(const QString& text, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setText(text);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setAutoRaise(true);
    button->setIconSize({14, 14});
    button->setToolTip(QObject::tr("Sort by %1 date; again to reverse").arg(text.toLower()));
    return button;
}

void setImage(QToolButton* button, const QString& name) {
    button->setIcon(ih_icon(name));
    button->setProperty("imageName", name);
}
} // namespace

MainViewController::MainViewController(QWidget* parent)
    : QWidget(parent), newEpisode_(new QPushButton(tr("New Episode"), this)),
      sortByCreated_(makeSortButton(tr("Created"), this)),
      sortByModified_(makeSortButton(tr("Modified"), this)),
      sortByPublished_(makeSortButton(tr("Published"), this)), pages_(new QStackedWidget(this)),
      list_(new QListView(this)), model_(new EpisodeListModel(this)), cell_(new AEEpisodeCell(this)) {
    setObjectName("MainViewController");
    newEpisode_->setDefault(true);
    newEpisode_->setMinimumHeight(30);

    auto* bar = new QHBoxLayout;
    bar->setContentsMargins(14, 10, 14, 10);
    bar->addWidget(newEpisode_);
    bar->addStretch();
    auto* sortLabel = new QLabel(tr("Sort by"), this);
    sortLabel->setForegroundRole(QPalette::PlaceholderText);
    bar->addWidget(sortLabel);
    bar->addWidget(sortByCreated_);
    bar->addWidget(sortByModified_);
    bar->addWidget(sortByPublished_);

    list_->setModel(model_);
    list_->setItemDelegate(cell_);
    list_->setUniformItemSizes(true);
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list_->setMouseTracking(true);
    list_->setFrameShape(QFrame::NoFrame);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto* empty = new QLabel(tr("No episodes yet.\nCreate the first one with New Episode."), this);
    empty->setAlignment(Qt::AlignCenter);
    empty->setForegroundRole(QPalette::PlaceholderText);
    pages_->addWidget(list_);
    pages_->addWidget(empty);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(bar);
    layout->addWidget(pages_, 1);

    connect(newEpisode_, &QPushButton::clicked, this, &MainViewController::btn_newEpisode_pressed);
    connect(sortByCreated_, &QToolButton::clicked, this, &MainViewController::sortByCreated_pushed);
    connect(sortByModified_, &QToolButton::clicked, this, &MainViewController::sortByModified_pushed);
    connect(sortByPublished_, &QToolButton::clicked, this, &MainViewController::sortByPublished_pushed);
    connect(cell_, &AEEpisodeCell::removePressed, this, &MainViewController::removeButton_pressed);
    connect(cell_, &AEEpisodeCell::infoPressed, this, &MainViewController::infoButton_pressed);
    // One click opens (the row's own buttons take their clicks first); Enter too.
    connect(list_, &QListView::clicked, this, [this](const QModelIndex& index) { clicOnTable(index.row()); });
    connect(list_, &QListView::activated, this,
            [this](const QModelIndex& index) { clicOnTable(index.row()); });

    if (zendrelShow) AEAssetListVCGlobal = zendrelShow->commonAssets;
    applySort();
    autoSaveTimer_ =
        QXTimer::loop("MainViewController.autoSave", kAutoSaveSeconds, false, [this] { autoSave(); });
}

MainViewController::~MainViewController() {
    stopTimer();
    if (autoSaveTimer_) autoSaveTimer_->stop();
    if (mainVC == this) mainVC = nullptr;
}

void MainViewController::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    window()->setWindowTitle(tr("Show Episodes"));
    update();
    startTimer();
}

QToolButton* MainViewController::sortButton(sortEpisodesBy by) const {
    switch (by) {
    case sortEpisodesBy::created:
        return sortByCreated_;
    case sortEpisodesBy::modified:
        return sortByModified_;
    case sortEpisodesBy::published:
        break;
    }
    return sortByPublished_;
}

void MainViewController::startTimer() {
    idleTimer_ = QXTimer::loop("MainViewController", kTimerPeriodSeconds, false, [this] { timerUpdate(); });
}

void MainViewController::stopTimer() {
    if (idleTimer_) idleTimer_->stop();
}

bool MainViewController::timerRunning() const {
    return idleTimer_ && idleTimer_->isRunning();
}

void MainViewController::timerUpdate() {
    if (!zendrelShow) return;
    if (AEAssetListVCDone) {
        zendrelShow->commonAssets = AEAssetListVCGlobal;
        mustUpdate = true;
        AEAssetListVCDone = false;
    }
    if (mustUpdate) {
        update();
        mustUpdate = false;
        saveShow();
    }
    if (TimelineWindowStatus == AEWindowStatus::yetClosed && AEEpisodeSelectedId) {
        // The timeline worked on its own copy of the record: put it back in place of the stale one.
        if (AEEpisodeSelected) {
            auto& episodes = zendrelShow->episodes;
            const auto found = std::find_if(episodes.begin(), episodes.end(), [](const auto& e) {
                return e && e->id == AEEpisodeSelected->id;
            });
            if (found != episodes.end()) *found = AEEpisodeSelected;
            saveShow();
        }
        AEEpisodeSelectedId.reset();
        AEEpisodeSelected.reset();
        TimelineWindowStatus = AEWindowStatus::closed;
        update();
    }
}

void MainViewController::autoSave() {
    saveShow(true);
}

void MainViewController::update() {
    if (zendrelShow) zendrelShow->sortEpisodes();
    XMain::execute(
        [self = QPointer<MainViewController>(this)] {
            if (self) self->reloadTable();
        },
        true);
}

void MainViewController::reloadTable() {
    const auto selected = model_->episodeAt(list_->currentIndex().row());
    const int scroll = list_->verticalScrollBar()->value();
    model_->reload(zendrelShow, QDateTime::currentDateTime());
    if (selected) {
        const int row = model_->rowOf(selected->id);
        if (row >= 0) list_->setCurrentIndex(model_->index(row));
    }
    list_->verticalScrollBar()->setValue(scroll);
    pages_->setCurrentIndex(model_->rowCount() > 0 ? 0 : 1);
    refreshSortImages();

    QStringList ids;
    for (int row = 0; row < model_->rowCount(); ++row)
        ids << model_->episodeAt(row)->episodeId;
    qxLog("MainViewController.update: " + QString::number(ids.size()) + " episodes: " + ids.join(", "));
}

void MainViewController::refreshSortImages() {
    for (auto* button : {sortByCreated_, sortByModified_, sortByPublished_})
        setImage(button, kSortImage);
    if (zendrelShow)
        setImage(sortButton(zendrelShow->sort.by),
                 zendrelShow->sort.ascending ? kSortAscImage : kSortDescImage);
}

void MainViewController::applySort() {
    refreshSortImages();
    update(); // sorts
}

void MainViewController::sortPushed(sortEpisodesBy by) {
    if (!zendrelShow) return;
    // Every push reverses, even on another column: the buttons are one shared toggle.
    zendrelShow->sort.by = by;
    zendrelShow->sort.ascending = !zendrelShow->sort.ascending;
    applySort();
}

void MainViewController::sortByCreated_pushed() {
    sortPushed(sortEpisodesBy::created);
}
void MainViewController::sortByModified_pushed() {
    sortPushed(sortEpisodesBy::modified);
}
void MainViewController::sortByPublished_pushed() {
    sortPushed(sortEpisodesBy::published);
}

void MainViewController::btn_newEpisode_pressed() {
    auto* sheet = new NewEpisodeViewController(this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->openDelegate =
        [self = QPointer<MainViewController>(this)](const std::shared_ptr<AEEpisode>& episode) {
            if (self) self->open(episode);
        };
    sheet->open();
}

void MainViewController::removeButton_pressed(int row) {
    const auto episode = model_->episodeAt(row);
    if (!episode) return;
    if (!ih_alertOkCancel("Warning!", "You *really* want to remove this episode? (" + episode->title + ")"))
        return;
    removeEpisode(episode);
}

void MainViewController::removeEpisode(const std::shared_ptr<AEEpisode>& episode) {
    qxLog("removeEpisode: " + episode->episodeId + " " + episode->id);
    episode->removeEpisodeAssets();
    episode->deleted = true;
    if (zendrelShow) std::erase(zendrelShow->episodes, episode);
    mustUpdate = true;
    saveShow();
}

void MainViewController::infoButton_pressed(int row) {
    const auto episode = model_->episodeAt(row);
    if (!episode) return;
    auto* panel = new AEEpisodeVC(episode, this);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->episodeVCDone = [self = QPointer<MainViewController>(this)](const std::shared_ptr<AEEpisode>& e) {
        if (self) self->episodeVCDone(e);
    };
    panel->open();
}

void MainViewController::episodeVCDone(const std::shared_ptr<AEEpisode>& episode) {
    if (zendrelShow)
        for (auto& entry : zendrelShow->episodes)
            if (entry && entry->id == episode->id && entry != episode) entry = episode;
    saveShow();
    update();
}

void MainViewController::importEpisode() {
    const QString path =
        fu_selectFile("Select Episode File", "", {"zendepisode"}, AEIngest::documentsFolder());
    if (!path.isEmpty()) importEpisodeBehindWindow(path);
}

void MainViewController::importEpisodeBehindWindow(const QString& path) {
    // The import blocks the main thread: the window says why, once it is on the screen.
    auto window = std::make_shared<std::shared_ptr<LoadingWindow>>();
    *window = LoadingWindow::make(
        "Importing", "Importing " + QFileInfo(path).fileName(), "Please wait just a little...",
        [self = QPointer<MainViewController>(this), path, window] {
            if (self) self->importEpisode(path);
            (*window)->dismiss();
            window->reset();
        },
        "Zendrel_rolling_v2_");
}

bool MainViewController::importEpisode(const QString& path) {
    const AEEpisodeImport imported = AEEpisode::importEpisode(path);
    if (!imported.episode) {
        Warning("Import", "The episode was not imported. " + imported.error);
        return false;
    }
    saveShow();
    update();
    emit assetListsChanged();
    return true;
}

void MainViewController::clicOnTable(int row) {
    if (row < 0) return;
    if (const auto episode = model_->episodeAt(row)) open(episode);
}

void MainViewController::open(const std::shared_ptr<AEEpisode>& episode) {
    if (!episode || !zendrelShow) return;
    // A second click while a timeline is open (or opening) does nothing.
    if (TimelineWindowStatus != AEWindowStatus::closed) return;
    qxLog("MainViewController.open: " + episode->episodeId + " " + episode->id);
    const auto& episodes = zendrelShow->episodes;
    const auto found = std::find(episodes.begin(), episodes.end(), episode);
    AEEpisodeSelected = episode;
    AEEpisodeSelectedId =
        found == episodes.end() ? std::optional<int>(0) : std::optional<int>(int(found - episodes.begin()));
    AEEpisodeAssetListVCGlobal = episode->assets;
    TimelineWindowStatus = AEWindowStatus::yetOpen;
    stopTimer();
    auto loading = std::make_shared<std::shared_ptr<LoadingWindow>>();
    *loading = LoadingWindow::make(
        "Loading", "Loading " + episode->episodeId, "Please wait just a little...",
        [self = QPointer<MainViewController>(this), episode, loading] {
            if (episode->assets.empty()) episode->forceLoadAssets();
            episode->checkAssets();
            AEAssetListVCGlobal = zendrelShow ? zendrelShow->commonAssets : AEAssetListVCGlobal;
            AEEpisodeAssetListVCGlobal = episode->assets;
            if (self && self->timelineOpener) {
                self->timelineOpener(episode);
            } else {
                TimelineWindowStatus = AEWindowStatus::closed;
                if (self) self->startTimer();
            }
            if (*loading) (*loading)->dismiss();
            loading->reset();
        },
        "Zendrel_rolling_v2_");
}
