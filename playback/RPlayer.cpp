#include "playback/RPlayer.h"

#include "dsp/Levels.h"
#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "playback/engine/StreamingFile.h"
#include "recording/AudioFileFacts.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

std::mutex playerListMutex;
std::map<QString, std::shared_ptr<FilePlayer>>& players() {
    static std::map<QString, std::shared_ptr<FilePlayer>> list;
    return list;
}

// Volume changes glide over this much so that a step is never heard as a click.
constexpr double kVolumeRamp = 0.005;

int64_t toFrames(double seconds) {
    return static_cast<int64_t>(std::llround(seconds * AudioEngine::kRate));
}

double toDb(double volume) {
    return volume > 0 ? 20.0 * std::log10(volume) : -160.0;
}

} // namespace

void FilePlayer::probe() {
    std::call_once(probed_, [this] {
        if (const auto facts = readAudioFileFacts(path, false)) {
            duration_ = facts->duration;
            nChannels_ = facts->channels;
        }
    });
}

double FilePlayer::duration() {
    probe();
    return duration_;
}

int FilePlayer::nChannels() {
    probe();
    return nChannels_;
}

RPlayer::RPlayer(const QString& id, const QString& filePath, EndCallback endFileCallback)
    : id(id), filePath(filePath), endFileCallback(std::move(endFileCallback)), file_(getPlayer(filePath)) {}

RPlayer::~RPlayer() {
    if (pollingTimer_) pollingTimer_->stop();
    removeVoice();
}

std::shared_ptr<FilePlayer> RPlayer::getPlayer(const QString& path) {
    std::lock_guard lock(playerListMutex);
    auto& entry = players()[path];
    if (!entry) entry = std::make_shared<FilePlayer>(path);
    return entry;
}

std::vector<std::shared_ptr<FilePlayer>> RPlayer::playerList() {
    std::lock_guard lock(playerListMutex);
    std::vector<std::shared_ptr<FilePlayer>> out;
    for (const auto& [path, player] : players())
        out.push_back(player);
    return out;
}

void RPlayer::removeVoice() {
    if (voice_ >= 0) sharedAudioEngine().mixer().removeVoice(voice_);
    voice_ = -1;
    stream_.reset();
}

void RPlayer::play(double rate, bool doPolling, std::optional<double> stopAt,
                   std::optional<double> fadeDuration, bool loop) {
    std::lock_guard lock(mutex_);
    const double from = currentTime();
    removeVoice();
    if (!(rate > 0) || !std::isfinite(rate)) {
        qxLog("RPlayer: rate " + QString::number(rate) + " refused, playing at 1.0");
        rate = 1.0;
    }
    rate_ = rate;
    playFrom_ = from;
    stream_ = StreamingFile::open(filePath, {from, std::nullopt, loop, rate});
    if (!stream_) {
        // Nothing left to play (a position past the end, a missing file): the end, at once.
        pausedAt_ = from;
        finished();
        return;
    }
    voice_ = sharedAudioEngine().mixer().addVoice(stream_, static_cast<float>(volume_));
    if (voice_ < 0) {
        qxLog("RPlayer: no voice left for " + filePath);
        stream_.reset();
        pausedAt_ = from;
        return;
    }
    if (doPolling) {
        std::weak_ptr<RPlayer> weak = weak_from_this();
        pollingTimer_ =
            QXTimer::loop("RPlayer.idle." + (id.isEmpty() ? filePath : id), kTimerUpdate, false, [weak] {
                if (auto self = weak.lock()) self->idle();
            });
    }
    if (stopAt && fadeDuration) scheduleFadeOut(*stopAt, *fadeDuration);
}

void RPlayer::pause() {
    std::lock_guard lock(mutex_);
    pausedAt_ = currentTime();
    removeVoice();
    if (pollingTimer_) pollingTimer_->stop();
}

void RPlayer::stop() {
    std::lock_guard lock(mutex_);
    pause();
    pausedAt_ = 0;
}

bool RPlayer::playing() const {
    std::lock_guard lock(mutex_);
    return voice_ >= 0 && !sharedAudioEngine().mixer().ended(voice_);
}

double RPlayer::duration() const {
    return file_->duration();
}

double RPlayer::currentTime() const {
    std::lock_guard lock(mutex_);
    return stream_ ? stream_->positionSeconds() : pausedAt_;
}

void RPlayer::setCurrentTime(double seconds) {
    std::lock_guard lock(mutex_);
    // A voice that has ended is not playing: moving it must not start it again.
    const bool wasPlaying = playing();
    pausedAt_ = std::max(seconds, 0.0);
    if (wasPlaying) {
        removeVoice();
        play(rate_, pollingTimer_ && pollingTimer_->isRunning());
    }
}

double RPlayer::rate() const {
    std::lock_guard lock(mutex_);
    return rate_;
}

void RPlayer::applyVolume(double volume, double rampSeconds) {
    volume_ = volume;
    if (voice_ >= 0)
        sharedAudioEngine().mixer().setGain(voice_, static_cast<float>(volume), toFrames(rampSeconds));
}

void RPlayer::setVolume(double volume) {
    std::lock_guard lock(mutex_);
    if (voice_ < 0) qxLog("!");
    applyVolume(volume, kVolumeRamp);
}

double RPlayer::getVolume() const {
    std::lock_guard lock(mutex_);
    return volume_;
}

void RPlayer::setVolumeDB(double db) {
    setVolume(aUt_dbToDouble(db));
}

double RPlayer::getVolumeDB() const {
    return toDb(getVolume());
}

void RPlayer::setGlobalVolume(double volume) {
    std::lock_guard lock(mutex_);
    baseVolume_ = volume;
    setVolume(volume);
}

void RPlayer::setGlobalVolumeDB(double db) {
    setGlobalVolume(aUt_dbToDouble(db));
}

double RPlayer::baseVolume() const {
    std::lock_guard lock(mutex_);
    return baseVolume_;
}

void RPlayer::doDucking(const DuckingPrefs& prefs) {
    std::lock_guard lock(mutex_);
    doDucking_ = true;
    duckingPrefs_ = prefs;
}

void RPlayer::duckerLevel(double db) {
    std::lock_guard lock(mutex_);
    if (db > duckingPrefs_.threshold)
        startDucking();
    else
        startReleasing();
}

void RPlayer::startDucking() {
    std::lock_guard lock(mutex_);
    if (duckingStatus_ != DuckingStatus::normal && duckingStatus_ != DuckingStatus::releasing) return;
    duckingStatus_ = DuckingStatus::attacking;
    attackTime_ = QDateTime::currentDateTimeUtc();
}

void RPlayer::startReleasing() {
    std::lock_guard lock(mutex_);
    if (duckingStatus_ != DuckingStatus::ducking && duckingStatus_ != DuckingStatus::attacking) return;
    duckingStatus_ = DuckingStatus::releasing;
    releaseTime_ = QDateTime::currentDateTimeUtc();
}

DuckingStatus RPlayer::duckingStatus() const {
    std::lock_guard lock(mutex_);
    return duckingStatus_;
}

void RPlayer::scheduleFadeOut(double playingTime, double duration) {
    std::lock_guard lock(mutex_);
    fadeOutDuration_ = duration;
    if (voice_ < 0) return;
    // Counted in the voice's own frames rather than by a timer, so the fade lands on its sound.
    const double played = playFrom_ + stream_->elapsedSeconds();
    const double delay = std::max(playingTime - played - duration, 0.0);
    sharedAudioEngine().mixer().fadeOut(voice_, toFrames(delay / rate_), toFrames(duration / rate_));
}

void RPlayer::startFadeOut() {
    std::lock_guard lock(mutex_);
    if (voice_ < 0) return;
    sharedAudioEngine().mixer().fadeOut(voice_, 0, toFrames(fadeOutDuration_ / rate_));
}

double RPlayer::getMeteringPower(int channel) const {
    std::lock_guard lock(mutex_);
    if (voice_ < 0) return -160.0;
    const int last = std::max(file_->nChannels(), 1) - 1;
    return sharedAudioEngine().mixer().averagePowerDb(voice_, std::min(channel, last));
}

double RPlayer::getMeteringToDouble(int channel) const {
    return aUt_dbToDouble(getMeteringDB(channel));
}

void RPlayer::idle() {
    std::lock_guard lock(mutex_);
    const double baseDb = toDb(baseVolume_);
    const double db = toDb(volume_);
    if (duckingStatus_ == DuckingStatus::attacking) {
        const double floor = baseDb + duckingPrefs_.amount;
        const double next = std::max(db + duckingPrefs_.timeSliceDecrease(), floor);
        applyVolume(aUt_dbToDouble(next), kTimerUpdate);
        if (next <= floor) duckingStatus_ = DuckingStatus::ducking;
    } else if (duckingStatus_ == DuckingStatus::releasing) {
        const double next = std::min(db - duckingPrefs_.timeSliceIncrease(), baseDb);
        applyVolume(aUt_dbToDouble(next), kTimerUpdate);
        if (next >= baseDb) duckingStatus_ = DuckingStatus::normal;
    }
    if (voice_ < 0 || !sharedAudioEngine().mixer().ended(voice_)) return;
    // A fade-out stops the player; only the end of the sound is the end of the file.
    if (sharedAudioEngine().mixer().fadedOut(voice_))
        stop();
    else
        finished();
}

void RPlayer::finished() {
    pausedAt_ = file_->duration();
    removeVoice();
    if (pollingTimer_) pollingTimer_->stop();
    std::weak_ptr<RPlayer> weak = weak_from_this();
    // Posted even from the main thread, so the callback never runs inside a call on this player.
    XMain::asyncExecute([weak] {
        auto self = weak.lock();
        if (self && self->endFileCallback) self->endFileCallback(self);
    });
}
