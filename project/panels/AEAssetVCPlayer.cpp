// The inspector's player: the asset alone on a timeline of its own, shown by the timeline widget and
// played by the timeline's transport, so that it sounds, zooms and scrolls as it does in the episode.
#include "foundation/Hallard.h"
#include "foundation/Prefs.h"
#include "foundation/Timecode.h"
#include "playback/RPlayer.h"
#include "project/model/AEAsset.h"
#include "project/panels/AEAssetVC.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/view/TimelineWidget.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr int kPlayerTickMs = 20;
const char* const kPlay = "pd_icon_play (0-00-00-00)";
const char* const kPause = "pd_icon_pause (0-00-00-00)";

QToolButton* playerButton(const QString& text, const QString& tip, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(tip);
    return button;
}

AEZoomTo zoomTo() {
    return static_cast<AEZoomTo>(prefs_getValueInt("AEPreferences.zoomTo", 0));
}

} // namespace

QWidget* AEAssetVC::makePlayer() {
    // The lane layout's height is shared by all timelines: the episode's is laid out again on close.
    shownLanesHeight_ = AETimeLineLanesHelper::totalH.load();
    shownTimeline_ = AETimeLineLanesHelper::timeline;
    // An id of its own: its ticks are named after it.
    assetTimeline = AETimeLine::make(hallard_getNewId());
    assetTimeline->timelineEditor = AETimelineEditor::asset;

    auto* player = new QWidget(this);
    timelineView = new TimelineWidget(assetTimeline, player);
    timecode = new QLabel(tc_getFloatTimecode(0), player);
    timecode->setMinimumWidth(110);
    playButton = playerButton(tr("Play"), tr("Play / pause"), player);
    playButton->setProperty("imageName", kPlay);
    const std::pair<QToolButton*, void (AEAssetVC::*)()> actions[] = {
        {playerButton("−", tr("Zoom out"), player), &AEAssetVC::zoomOut_pressed},
        {playerButton("+", tr("Zoom in"), player), &AEAssetVC::zoomIn_pressed},
        {playerButton(tr("All"), tr("View all"), player), &AEAssetVC::zoomAll_pressed},
        {playerButton("|<", tr("Go to the beginning"), player), &AEAssetVC::goBegin_pressed},
        {playButton, &AEAssetVC::pausePlayPressed},
        {playerButton(">|", tr("Go to the end"), player), &AEAssetVC::goEnd_pressed},
    };
    auto* bar = new QHBoxLayout;
    for (const auto& [button, action] : actions) {
        connect(button, &QToolButton::clicked, this, action);
        bar->addWidget(button);
    }
    bar->addStretch(1);
    bar->addWidget(timecode);
    auto* layout = new QVBoxLayout(player);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(timelineView, 1);
    layout->addLayout(bar);

    playerTimer_ = new QTimer(this);
    playerTimer_->setInterval(kPlayerTickMs);
    connect(playerTimer_, &QTimer::timeout, this, &AEAssetVC::playerIdle);
    playerTimer_->start();
    placeAsset();
    return player;
}

void AEAssetVC::placeAsset() {
    assetTimeline->pause();
    if (!assetTimeline->mainLane.empty()) assetTimeline->removeItemInMainLane(0, false);
    const auto item = assetTimeline->appendItemInMainLane(asset, std::nullopt, false);
    // Music is drawn and played up to its bgmOutTime, which only the episode's lanes set: here it
    // is the whole file.
    item->bgmOutTime = item->outTime();
    zoomAll_pressed();
}

void AEAssetVC::playerIdle() {
    timecode->setText(tc_getFloatTimecode(std::max(0.0, assetTimeline->getPlayHeadTime())));
    const bool playing = assetTimeline->playing;
    if (playButton->property("imageName").toString() != (playing ? kPause : kPlay)) {
        playButton->setProperty("imageName", playing ? kPause : kPlay);
        playButton->setText(playing ? tr("Pause") : tr("Play"));
    }
}

void AEAssetVC::zoomIn_pressed() {
    assetTimeline->zoomIn(zoomTo());
}

void AEAssetVC::zoomOut_pressed() {
    assetTimeline->zoomOut(zoomTo());
}

void AEAssetVC::zoomAll_pressed() {
    assetTimeline->setViewportRangeAll();
}

void AEAssetVC::goBegin_pressed() {
    assetTimeline->goToBegin();
    playerIdle();
}

void AEAssetVC::goEnd_pressed() {
    assetTimeline->goToEnd();
    playerIdle();
}

void AEAssetVC::pausePlayPressed() {
    assetTimeline->playPause();
    playerIdle();
}

void AEAssetVC::closePlayer() {
    if (playerClosed_) return;
    playerClosed_ = true;
    playerTimer_->stop();
    assetTimeline->pause();
    assetTimeline->stopTimers();
    for (const auto& item : assetTimeline->mainLane)
        item->player.reset();
    AETimeLineLanesHelper::timeline = shownTimeline_;
    if (const auto shown = shownTimeline_.lock())
        AETimeLineLanesHelper::setBGM(*shown, shownLanesHeight_);
    else
        AETimeLineLanesHelper::totalH = shownLanesHeight_;
}
