#pragma once
// The player of one file: one per timeline item and one per asset preview. It plays through the
// shared engine as a voice of its own, streamed from disk, and adds what a bare voice lacks: volume
// in dB over a persistent base level, a scheduled fade-out, a polled ducker and the end callback.
//
// Players of one file share its facts (duration, rate, channels) through playerList, but each plays
// its own stream, so two items of one file can sound at once, as a person expects.
//
// Calls come from the main thread and from analysis and recording threads; a lock per player keeps
// them apart. Ticks and the end callback run on the main thread.

#include <QDateTime>
#include <QString>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

class QXTimer;
class StreamingFile;

constexpr double kTimerUpdate = 0.025;

struct DuckingPrefs {
    double threshold = -20.0; // dB
    double amount = -12.0;    // dB
    double attack = 0.4;      // s
    double release = 1.1;     // s
    double timerUpdate = kTimerUpdate;

    // dB per tick.
    double timeSliceDecrease() const { return amount / (attack / timerUpdate); }
    double timeSliceIncrease() const { return amount / (release / timerUpdate); }
};

enum class DuckingStatus { normal, attacking, ducking, releasing };

// What the players of one path share: the file's facts, probed once, when first asked for.
class FilePlayer {
public:
    explicit FilePlayer(const QString& path) : path(path) {}
    const QString path;
    double duration();
    int nChannels();

private:
    void probe();
    std::once_flag probed_;
    double duration_ = 0;
    int nChannels_ = 0;
};

class RPlayer : public std::enable_shared_from_this<RPlayer> {
public:
    using EndCallback = std::function<void(const std::shared_ptr<RPlayer>&)>;

    RPlayer(const QString& id, const QString& filePath, EndCallback endFileCallback = {});
    // A player known only by its file.
    explicit RPlayer(const QString& filePath) : RPlayer(QString(), filePath) {}
    ~RPlayer();

    const QString id;
    const QString filePath;
    EndCallback endFileCallback;

    // The sharing table, filled on first request of each path.
    static std::shared_ptr<FilePlayer> getPlayer(const QString& path);
    static std::vector<std::shared_ptr<FilePlayer>> playerList();

    // From currentTime. stopAt (file time, may lie beyond the end when looping) with fadeDuration
    // schedules the fade-out that ends the play; the player then stops, without the end callback.
    void play(double rate = 1.0, bool doPolling = true, std::optional<double> stopAt = std::nullopt,
              std::optional<double> fadeDuration = std::nullopt, bool loop = false);
    void pause();
    void stop();
    bool playing() const;
    double duration() const;
    double currentTime() const;
    void setCurrentTime(double seconds);
    double rate() const;

    // Linear volume of the voice; baseVolume is the level the ducker returns to.
    void setVolume(double volume);
    double getVolume() const;
    void setVolumeDB(double db);
    double getVolumeDB() const;
    void setGlobalVolume(double volume);
    void setGlobalVolumeDB(double db);
    double baseVolume() const;

    void doDucking(const DuckingPrefs& prefs);
    void duckerLevel(double db);
    void startDucking();
    void startReleasing();
    DuckingStatus duckingStatus() const;

    void scheduleFadeOut(double playingTime, double duration);
    void startFadeOut();

    // Average power of a channel (the last channel when asked beyond it); -160 when not playing.
    double getMeteringPower(int channel) const;
    double getMeteringDB(int channel) const { return getMeteringPower(channel); }
    double getMeteringToDouble(int channel) const;

    // The polling tick, every kTimerUpdate while playing: ducker ramps and the end of the file.
    void idle();

private:
    void applyVolume(double volume, double rampSeconds);
    void removeVoice();
    void finished();

    std::shared_ptr<FilePlayer> file_;
    mutable std::recursive_mutex mutex_;
    std::shared_ptr<StreamingFile> stream_;
    int voice_ = -1;
    double volume_ = 1.0;
    double baseVolume_ = 1.0;
    double rate_ = 1.0;
    // File time the current play started from.
    double playFrom_ = 0;
    double pausedAt_ = 0;
    bool doDucking_ = false;
    DuckingPrefs duckingPrefs_;
    DuckingStatus duckingStatus_ = DuckingStatus::normal;
    QDateTime attackTime_;
    QDateTime releaseTime_;
    double fadeOutDuration_ = 0;
    std::shared_ptr<QXTimer> pollingTimer_;
};
