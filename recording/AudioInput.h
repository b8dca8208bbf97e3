#pragma once
// The sound card end of a recording: one Qt Multimedia input stream of a chosen device, converted to
// float, metered, and, while a take runs, copied into the ring of its RecordingFile.
//
// The source lives on an input thread with an event loop of its own (a busy window cannot starve
// it). Its callback is the audio thread: it converts into a buffer made beforehand, meters, and
// writes to the ring; it takes no lock, allocates nothing and never touches the disk. The ring it
// writes to is changed only by a blocking hop onto that thread, so a pause or a stop falls between
// two blocks, and no block is half in one take and half in the next.

#include <QAudioDevice>
#include <QString>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

class QAudioSource;
class QIODevice;
class SpscRing;

class AudioInput {
public:
    static constexpr int kMaxMeteredChannels = 8;
    // Level windows: the meters move at 20 readings a second.
    static constexpr double kMeterWindow = 0.05;
    static constexpr float kSilenceDb = -160.0f;

    // Null with *error filled when the device cannot give `channels` at `rate`. Returns once the
    // first sound has come in. Main thread.
    static std::unique_ptr<AudioInput> open(const QAudioDevice& device, int rate, int channels,
                                            QString* error);
    // Stops and destroys the source on the input thread, and waits for that.
    ~AudioInput();
    // The same, ahead of the destructor (at the application object's teardown); idempotent.
    void close();
    AudioInput(const AudioInput&) = delete;
    AudioInput& operator=(const AudioInput&) = delete;

    int rate() const { return rate_; }
    int channels() const { return channels_; }
    const QAudioDevice& device() const { return device_; }

    // Where the blocks go from the next one on; null while paused or idle. `ring` holds frames of
    // channels() values. Blocks until the input thread has taken it.
    void setTarget(SpscRing* ring);

    // Keeps the blocks coming into the current ring until the stream has delivered what was heard
    // until now (what the server still holds would otherwise be lost to a pause or a stop), or
    // `maxSeconds` have passed. Main thread; the input thread goes on meanwhile.
    void catchUp(double maxSeconds);

    // Frames that reached the ring since open, and frames the full ring refused.
    int64_t framesCaptured() const { return captured_.load(std::memory_order_acquire); }
    int64_t framesDropped() const { return dropped_.load(std::memory_order_acquire); }
    // The stream stopped with an error (the device went away or the server died).
    bool failed() const { return failed_.load(std::memory_order_acquire); }

    // RMS and peak of the last level window, dB below full scale; kSilenceDb for none.
    float averagePowerDb(int channel) const;
    float peakPowerDb(int channel) const;

private:
    class Feed;
    AudioInput() = default;

    QAudioDevice device_;
    int rate_ = 0;
    int channels_ = 0;
    std::atomic<int64_t> captured_{0};
    std::atomic<int64_t> dropped_{0};
    std::atomic<bool> failed_{false};
    // Frames delivered since open, and when the first of them was heard (steady clock, ns).
    std::atomic<int64_t> heard_{0};
    std::atomic<int64_t> startNs_{0};
    std::array<std::atomic<float>, kMaxMeteredChannels> average_{};
    std::array<std::atomic<float>, kMaxMeteredChannels> peak_{};
    // Made, used and destroyed on the input thread.
    QAudioSource* source_ = nullptr;
    Feed* feed_ = nullptr;
};
