#pragma once
// The waveform summary of one asset: magnitudes of channel 0 on the 16-bit scale at 300 values a
// second, which drawing and ducking read instead of the audio. While a recording runs, a second list
// (samplesT) grows at 15 values a second from the recorder's meter.
//
// Threads: generate() fills the summary on the background queue while the main thread may be drawing
// from it, so the summary is an immutable array published by an atomic pointer swap; `loaded` is set
// after the swap, readers may take any snapshot and test its size. Writers of the summary are
// serialised among themselves. The recording side (samplesT, the meter, the timer) is main-thread only.
// The object must be held by a shared_ptr for generate() and startRecording().
//
// Archive: only "average" is kept; the summary itself lives in the per-user cache (AECache).

#include "foundation/KeyedArchive.h"

#include <QString>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

class QXTimer;

inline constexpr int kAESubsamplesPerSecond = 300;

// A recorder's level meter, as the summary reads it while recording.
class AERecordingMeter {
public:
    virtual ~AERecordingMeter() = default;
    virtual void setMeteringEnabled(bool enabled) = 0;
    virtual void updateMeters() = 0;
    // dB below full scale: 0 at full scale, -160 for silence.
    virtual float averagePowerForChannel(int channel) = 0;
};

class AESubsamples : public KeyedObject, public std::enable_shared_from_this<AESubsamples> {
public:
    static constexpr const char* kClassName = "AESubsamples";
    static constexpr const char* kRecordingTimerName = "AESubsamples.recordingIdle";
    // -25 dB on the 16-bit scale: 10^(-25/20) × 32768, about 1842.7.
    static const float kAverageThreshold;

    AESubsamples() = default;
    ~AESubsamples() override;

    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    // An "average" of 0 (or none) is computed again from the summary.
    static std::shared_ptr<AESubsamples> decode(KeyedUnarchiver& coder);

    int samplesPerSecond = kAESubsamplesPerSecond;
    double samplesPerSecondD = kAESubsamplesPerSecond;
    std::atomic<bool> loaded{false};
    std::atomic<bool> recording{false};
    std::atomic<float> average{0.0f}; // mean level of the sound parts
    std::shared_ptr<AERecordingMeter> audioRecorder;
    int samplesPerSecondT = 15;
    double samplesPerSecondDT = 15.0;
    std::vector<float> samplesT;
    std::shared_ptr<QXTimer> recordingTimer;

    // A snapshot of the summary; never null.
    std::shared_ptr<const std::vector<float>> samples() const;
    void setSamples(std::vector<float> values);

    std::shared_ptr<AESubsamples> duplicate() const;
    void generateAverage();

    using Callback = std::function<void()>;
    // On the background queue: the summary of the original file, or of the ingested copy when the
    // original has gone (both through AEIngest::loadPath), then the average, `loaded`, the cache entry
    // under originalFilePath when asked, and the callback, which runs on that queue's thread.
    void generate(const QString& originalFilePath, const QString& ingestedFilePath, bool saveToCache = true,
                  Callback callback = {});
    // The summary generate() computes for a file: block means of |channel 0 × 32767|, value k over
    // frames [⌊k × rate / samplesPerSecond⌋, ⌊(k+1) × rate / samplesPerSecond⌋), so the summary has
    // exactly samplesPerSecond values a second at any rate (at a rate that is a multiple of it, the
    // values equal ArrayUtils::downsample of the whole channel). Read slice by slice, so only one
    // slice is held at a time. Empty when unreadable or the rate is below samplesPerSecond.
    static std::vector<float> summaryOfFile(const QString& path, int samplesPerSecond);

    bool saveToCache(const QString& originalFilePath) const;
    // A cache hit takes the entry and calls back at once on this thread; a miss runs generate().
    // The average is not recomputed on a hit: it came with the archive.
    void loadFromCache(bool loadFromOriginalIfNotPresent, const QString& originalFilePath,
                       const QString& ingestedFilePath, Callback callback);

    // The value at `time` seconds; past the end 0, or with isLoop the value wrapped round. While
    // recording it reads samplesT at its own rate. Time is never negative.
    float getSample(double time, bool isLoop) const;
    // Magnitudes of a live stream, reduced by samplesPerSecond whatever the stream's rate, appended.
    void appendSamples(std::span<const float> magnitudes);

    void startRecording(std::shared_ptr<AERecordingMeter> meter);
    // One meter reading: max((dB + 60) × 256, 0) onto samplesT.
    void recordingIdle();
    void stopRecording();

private:
    std::atomic<std::shared_ptr<const std::vector<float>>> samples_{
        std::make_shared<const std::vector<float>>()};
    std::mutex writeMutex_;
};
