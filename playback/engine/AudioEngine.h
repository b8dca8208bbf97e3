#pragma once
// The one output stream of the application: a mixer and what consumes its sound, a sound device or,
// without one, the null output, which consumes at the engine's rate by the wall clock, so transport,
// end callbacks, fades and meters behave as with a device (CI, a server, a muted session). Offline
// mode has no thread at all: the caller renders, and the clock is the number of frames rendered, for
// tests.

#include "playback/engine/Mixer.h"

class DeviceOutput;
class QXTimer;
#include <QByteArray>
#include <QString>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

class AudioEngine {
public:
    static constexpr int kRate = 44100;
    // The null output's block: 10 ms.
    static constexpr int64_t kNullBlockFrames = kRate / 100;

    enum class Mode { stopped, null, device, offline };

    AudioEngine();
    ~AudioEngine();
    AudioEngine(const AudioEngine&) = delete;
    AudioEngine& operator=(const AudioEngine&) = delete;

    Mixer& mixer() { return mixer_; }
    Mode mode() const { return mode_.load(); }

    // Control thread. Each stops what ran before; the clock goes on from where it was.
    void startNullOutput();
    // The output device with that id, the default one when empty. Without it (no server, no device,
    // an id that is gone) the null output runs instead and the reason is logged; false then. A device
    // that stops later (its server gone) is opened again, or the null output takes over. Main thread.
    bool startDeviceOutput(const QByteArray& deviceId = {});
    // What plays the sound now: the device's description, or why there is none.
    QString outputDescription() const;
    void startOffline();
    void stop();

    // Offline mode only: `frames` frames of the mix, interleaved stereo; the clock advances by them.
    // Empty in any other mode.
    std::vector<float> renderOffline(int64_t frames);

    // Frames consumed by the output since the engine was made.
    int64_t framesPlayed() const { return framesPlayed_.load(); }
    double secondsPlayed() const { return static_cast<double>(framesPlayed()) / kRate; }

    // The clock the transport reads, in milliseconds since 1970: the wall clock, except offline,
    // where it is the moment offline mode began plus the frames rendered since.
    double clockMs() const;

private:
    void runNullOutput();
    void renderToDevice(float* stereo, int64_t frames) noexcept;
    void watchDevice();

    Mixer mixer_;
    std::atomic<Mode> mode_{Mode::stopped};
    std::atomic<bool> stopping_{false};
    std::atomic<int64_t> framesPlayed_{0};
    // Offline clock origin: wall clock and framesPlayed when offline mode began.
    std::atomic<double> offlineOriginMs_{0};
    std::atomic<int64_t> offlineOriginFrames_{0};
    std::thread thread_;
    std::unique_ptr<DeviceOutput> device_;
    QByteArray requestedDeviceId_;
    std::shared_ptr<QXTimer> deviceWatch_;
    QString outputDescription_ = "none";
};
