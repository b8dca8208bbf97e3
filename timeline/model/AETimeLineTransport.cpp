// The transport: one virtual time read from the engine's clock, and a tick that starts, stops and
// re-levels the items' players. No mix bus: clips start within one tick of their place and run
// freely from there; the meters add up the players' own levels.
#include "dsp/Levels.h"
#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "foundation/Timecode.h"
#include "playback/RPlayer.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "project/model/AEAsset.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/VirtualScroller.h"

#include <algorithm>
#include <cmath>

namespace {

double nowMs() {
    return sharedAudioEngine().clockMs();
}

} // namespace

double AETimeLine::getPlayHeadTime() {
    if (playing) currentPHTime = playStartedAtPos + (nowMs() - playStartedAt) * playSpeedRate / 1000.0;
    return currentPHTime;
}

void AETimeLine::setPlayheadTime(double time, bool center) {
    currentPHTime = time;
    if (playing) {
        // A seek while playing restarts the clock from the new place, and the clips from theirs at
        // the next tick.
        pauseItems();
        playStartedAt = nowMs();
        playStartedAtPos = time;
    }
    if (center) centerToPlayHead();
    drawPlayhead();
    updateTimeCodeViewer();
    mustDraw = true;
}

void AETimeLine::play(std::optional<double> at) {
    // A pinch must not change the scale under a moving playhead.
    if (virtualScroller) virtualScroller->magnificationAllowed = false;
    qxLog("AETimeLine: play");
    // One timeline plays at a time.
    for (const auto& other : tlList())
        if (other.get() != this && other->playing) other->pause();
    if (playing) pauseItems();
    if (at) currentPHTime = *at;
    hideEphemeral();
    playStartedAt = nowMs();
    playStartedAtPos = currentPHTime;
    playing = true;
    startPlayIdle();
}

void AETimeLine::pause() {
    getPlayHeadTime();
    playing = false;
    if (playIdleTimer) playIdleTimer->stop();
    pauseItems();
    setSpeedRate(1.0);
    allItemsPlayIdleR = false;
    if (virtualScroller) virtualScroller->magnificationAllowed = true;
}

void AETimeLine::pauseItems() {
    for (const auto& item : getCollectedItems())
        item->pause();
}

void AETimeLine::playPause() {
    if (playing) {
        pause();
        return;
    }
    if (view && view->ephemeralPlayhead && !view->ephemeralPlayhead->hidden)
        play(view->ephemeralPlayhead->currentTime);
    else
        play(currentPHTime);
}

void AETimeLine::setSpeedRate(double rate) {
    if (!(rate > 0) || !std::isfinite(rate)) {
        qxLog("AETimeLine: speed " + QString::number(rate) + " refused");
        return;
    }
    if (playing) {
        // Clock and players restart together from where the playhead is, read at the old rate.
        pause();
        setSpeedRate(rate);
        play();
        return;
    }
    playSpeedRate = rate;
    for (const auto& item : getCollectedItems())
        item->playSpeedRate = rate;
}

void AETimeLine::playingIdle() {
    if (playingIdleR) return;
    playingIdleR = true;
    const AETimeRange visible = currentViewRange;
    const double time = getPlayHeadTime();
    if (time >= getTimelineOutTime()) {
        pause();
        mustDraw = true;
        playingIdleR = false;
        return;
    }
    if (!allItemsPlayIdleR) {
        allItemsPlayIdleR = true;
        // A hop to the next turn of the main loop: the pass reads the items the editor changes, so
        // it must not run beside an edit.
        std::weak_ptr<AETimeLine> weak = weak_from_this();
        XMain::asyncExecute([weak] {
            if (auto self = weak.lock()) self->allItemsPlayIdle();
        });
    }
    if (virtualScroller) {
        if (view && view->autoScroll) {
            centerToPlayHead();
        } else {
            const double length = visible.duration();
            if (time > visible.o - length / 10) setViewportRange(time - length / 2, time + length / 2);
        }
    }
    drawPlayhead();
    playingIdleR = false;
}

void AETimeLine::allItemsPlayIdle() {
    if (playing) {
        const double time = getPlayHeadTime();
        for (const auto& item : getCollectedItems())
            item->playingIdle(time, *this);
    }
    allItemsPlayIdleR = false;
}

void AETimeLine::updateVolumeFromOutside() {
    const double time = getPlayHeadTime();
    for (const auto& item : getCollectedItems())
        if (item->playing) item->adjustVolume(time, false, true, *this);
}

double AETimeLine::getMetering() {
    double sum = 0;
    for (const auto& item : getCollectedItems())
        if (item->playing && item->player) sum += item->player->getMeteringToDouble(0);
    if (view) view->meterLevel = sum;
    return sum;
}

std::pair<double, double> AETimeLine::getMeteringStereo() {
    double left = 0;
    double right = 0;
    for (const auto& item : getCollectedItems()) {
        if (!item->playing || !item->player || item->asset->type == AEAssetType::silence) continue;
        left += item->player->getMeteringToDouble(0);
        right += item->player->getMeteringToDouble(1);
    }
    if (view) {
        view->meterLeft = left;
        view->meterRight = right;
    }
    return {left, right};
}

void AETimeLine::hideEphemeral() {
    if (view && view->ephemeralPlayhead) view->ephemeralPlayhead->hidden = true;
    if (hideEphemeralCallback) hideEphemeralCallback();
}

void AETimeLine::showEphemeral() {
    if (view && view->ephemeralPlayhead) view->ephemeralPlayhead->hidden = false;
}

void AETimeLine::drawPlayhead() {
    if (!view || !view->playhead) return;
    AEPlayHead& head = *view->playhead;
    head.currentTime = currentPHTime;
    head.x = timeToX(currentPHTime) - head.originX;
    head.hidden = !playheadVisible();
}

void AETimeLine::updateTimeCodeViewer() {
    if (!view) return;
    view->mainTimecodeText = tc_getFloatTimecode(std::max(0.0, getPlayHeadTime()));
    view->durationText = tc_getFloatTimecode(getTimelineOutTime());
}
