#pragma once
// The sound card end of the engine: one output stream that pulls interleaved stereo float from a
// render callback.
//
// The sink is fed from timer events of the thread it lives on, so every sink lives on one audio
// thread with an event loop of its own: a busy window cannot starve it. That thread lasts as long as
// the application object and is not one per output, because Qt binds its sound-server connection to
// the thread of the first sink, and reconnects after a server restart through that thread's timers.

#include <QByteArray>
#include <QString>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class QAudioSink;
class QIODevice;

class DeviceOutput {
public:
    // Called on the audio thread: must not lock, allocate or touch files.
    using Render = std::function<void(float* stereo, int64_t frames)>;

    enum class SampleFormat { float32, int16 };

    // What the device is asked to hold ahead of the ear.
    static constexpr int kBufferMs = 80;

    // Null with *error filled when the device cannot be opened. An empty `deviceId` is the default
    // output. The stream is 16-bit when the device refuses float, or when `forceInt16` asks for it.
    // Returns once the stream runs. Meant for the main thread, never the audio thread.
    static std::unique_ptr<DeviceOutput> open(const QByteArray& deviceId, int rate, Render render,
                                              QString* error, bool forceInt16 = false);
    // Stops and destroys the sink on the audio thread and waits for that: render is never called
    // after this returns.
    ~DeviceOutput();
    DeviceOutput(const DeviceOutput&) = delete;
    DeviceOutput& operator=(const DeviceOutput&) = delete;

    QByteArray deviceId() const { return deviceId_; }
    QString deviceDescription() const { return description_; }
    SampleFormat sampleFormat() const { return format_; }
    int rate() const { return rate_; }
    // What the device granted of the buffer asked for.
    int64_t bufferFrames() const { return bufferFrames_; }

    // The stream is active or idle and has not failed (a passing underrun is not a failure). False
    // for good once the server is lost; open a new output then.
    bool running() const { return running_.load(std::memory_order_acquire); }
    // Frames handed to the device so far.
    int64_t framesPulled() const { return framesPulled_.load(std::memory_order_acquire); }

private:
    DeviceOutput() = default;
    // Idempotent: from the destructor, or from the application object's teardown when the output
    // outlives it.
    void shutDown();

    QByteArray deviceId_;
    QString description_;
    SampleFormat format_ = SampleFormat::float32;
    int rate_ = 0;
    int64_t bufferFrames_ = 0;
    std::atomic<bool> running_{false};
    std::atomic<int64_t> framesPulled_{0};
    // Made and destroyed on the audio thread.
    QAudioSink* sink_ = nullptr;
    QIODevice* feed_ = nullptr;
};

// The outputs the user may pick from, as (id, description), the default first. Empty without a
// QCoreApplication.
std::vector<std::pair<QByteArray, QString>> outputDevices();
