// How one item plays along with the transport: nothing is scheduled ahead; each tick looks at the
// playhead and starts, stops or re-levels the item's own player.
#include "dsp/Levels.h"
#include "foundation/Log.h"
#include "playback/RPlayer.h"
#include "project/model/AEAsset.h"
#include "project/model/AEBGMSettings.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <cmath>

namespace {

bool loopable(const AETimeLineItem& item) {
    return item.isBGM() && item.asset->bgmSettings && item.asset->bgmSettings->loopable;
}

} // namespace

void AETimeLineItem::playingIdle(double time, const AETimeLine& timeline) {
    if (playingIdleR) return;
    playingIdleR = true;
    // For music outTime() is bgmOutTime once computed, which is both where it stops and how long it
    // may be entered.
    const double end = outTime();
    const bool inside = time >= inTime && time < end;
    if (playing && (!player || !player->playing())) {
        playing = false;
        // The sound runs a little ahead of the clock: a clip that has played out before the
        // playhead reaches its end is not started again for the last few milliseconds.
        playedOut = inside;
    }
    if (!inside) playedOut = false;
    const bool mayPlay = timeline.itemCanBePlayed(shared_from_this());
    if (playing && (!mayPlay || !inside)) pause();
    if (!playing && !playedOut && mayPlay && player && inside) {
        double at = range.i + (time - inTime);
        const double length = asset->duration > 0 ? asset->duration : player->duration();
        if (loopable(*this) && length > 0) at = std::fmod(at, length);
        // Past the end of a file that does not loop there is nothing to start; starting anyway would
        // end at once and start again at every tick.
        if (at < length) {
            // The fade of looping music ends on bgmOutTime, in the asset time of this play.
            if (loopable(*this)) stopAt = at + (bgmOutTime - time);
            play(at, timeline, playSpeedRate);
        }
    }
    if (playing) adjustVolume(time, false, false, timeline);
    playingIdleR = false;
}

void AETimeLineItem::play(double at, const AETimeLine& timeline, std::optional<double> rate) {
    if (playing) pause();
    playing = true;
    playSpeedRate = rate.value_or(1.0);
    if (!player) {
        qxLog("NIL");
        return;
    }
    if (!timeline.itemCanBePlayed(shared_from_this())) {
        qxLog("INACTIVE");
        return;
    }
    player->setCurrentTime(at);
    if (loopable(*this))
        player->play(playSpeedRate, true, stopAt, asset->bgmSettings->fadeOut, true);
    else
        player->play(playSpeedRate, true);
}

void AETimeLineItem::pause() {
    if (player) player->pause();
    playing = false;
    playedOut = false;
}

void AETimeLineItem::adjustVolume(double time, bool isAssetTime, bool force, const AETimeLine& timeline) {
    // The pass runs on the main thread, so it can only meet a drawing half way through a re-entrant
    // call; then the next tick does it.
    if (!force && timeline.drawing) return;
    double value = asset->volumeGain;
    // Between keyframes the gain moves linearly in amplitude, as the render makes it, so the two
    // differ only by the tick's steps.
    if (globalKFS && !globalKFS->keyframes.empty())
        value += aUt_percToDb(globalKFS->getValuePerc(isAssetTime ? time : globalTimeToAssetTime(time)));
    if (value == currentVolume && !force) return;
    currentVolume = value;
    if (player) player->setVolumeDB(value);
}
