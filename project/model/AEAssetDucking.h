#pragma once
// Where an asset has speech, as the ducking of background music sees it: the on-spans of its waveform
// summary above the ducking threshold. Each threshold has its own record, a small JSON file in the
// working folder's "LFSubsamples" folder named by the asset id and the threshold, so a restart finds
// the analysis again and a new threshold analyses anew.
//
// Threads: made on the main thread; the analysis runs on the background pool and publishes the
// clusters under a mutex, so any thread may read duckingClusters() and qxppStatus at any time.

#include "dsp/QXOnOffList.h"

#include <QString>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <span>

class AESubsamples;

enum class QXPersistenceStatus { none, generating, saved };

class AEAssetDucking : public std::enable_shared_from_this<AEAssetDucking> {
public:
    // Loads the record of the current threshold, or (with a summary) analyses it in the background.
    static std::shared_ptr<AEAssetDucking> make(const QString& id,
                                                const std::shared_ptr<AESubsamples>& subSamples);

    static constexpr double minSpikeDuration = 0.5;
    static constexpr double minPauseDuration = 1.25;
    static constexpr int reduceFactor = 30;
    static constexpr double timeUnit = 0.1;
    // The working folder's "LFSubsamples" folder, with a trailing "/"; "" without a working folder.
    static QString qxppSaveFolderPrefix();
    static QString recordPath(const QString& uniqueId);

    const QString qxppUniqueId;
    std::atomic<QXPersistenceStatus> qxppStatus{QXPersistenceStatus::none};

    // Nothing until the analysis is there.
    std::shared_ptr<const QXOnOffList> duckingClusters() const;
    void setDuckingClusters(QXOnOffList clusters);

    // The on-spans of a summary at 300 values a second: downsampled by reduceFactor to 0.1 s a
    // value, in dB of 16-bit full scale, spikes and short pauses filtered.
    static QXOnOffList analyse(std::span<const float> summary, float threshold);

    // Told on the main thread when an analysis has been made (not when loaded): the music over the
    // asset may now dip. Set by the timeline layer.
    static inline std::function<void(const QString& assetId)> analysedObserver;

private:
    AEAssetDucking(QString uniqueId, QString assetId)
        : qxppUniqueId(std::move(uniqueId)), assetId_(std::move(assetId)),
          recordPath_(recordPath(qxppUniqueId)) {}
    bool loadLocal();
    void saveLocal(const QXOnOffList& clusters) const;

    const QString assetId_;
    // Fixed at construction: the working folder is the main thread's.
    const QString recordPath_;
    mutable std::mutex mutex_;
    std::shared_ptr<const QXOnOffList> clusters_;
};
