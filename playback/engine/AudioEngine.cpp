#include "playback/engine/AudioEngine.h"

#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "playback/engine/DeviceOutput.h"

#include <QDateTime>
#include <chrono>

AudioEngine::AudioEngine() = default;

AudioEngine::~AudioEngine() {
    if (deviceWatch_) deviceWatch_->stop();
    stop();
}

void AudioEngine::stop() {
    stopping_ = true;
    if (thread_.joinable()) thread_.join();
    stopping_ = false;
    device_.reset();
    mode_ = Mode::stopped;
}

void AudioEngine::startNullOutput() {
    stop();
    mode_ = Mode::null;
    outputDescription_ = "null output";
    thread_ = std::thread([this] { runNullOutput(); });
}

bool AudioEngine::startDeviceOutput(const QByteArray& deviceId) {
    stop();
    QString error;
    device_ = DeviceOutput::open(
        deviceId, kRate, [this](float* stereo, int64_t frames) { renderToDevice(stereo, frames); }, &error);
    if (!device_) {
        qxLog("AudioEngine: no sound device (" + error + "); playing to the null output");
        startNullOutput();
        outputDescription_ = "null output: " + error;
        return false;
    }
    mode_ = Mode::device;
    requestedDeviceId_ = deviceId;
    outputDescription_ = device_->deviceDescription();
    qxLog("AudioEngine: playing to " + outputDescription_);
    if (!deviceWatch_ || !deviceWatch_->isRunning())
        deviceWatch_ = QXTimer::loop("AudioEngine.deviceWatch", 0.5, false, [this] { watchDevice(); });
    return true;
}

void AudioEngine::watchDevice() {
    if (mode_ != Mode::device || !device_ || device_->running()) return;
    // Nothing would render: voices would never end and meters would freeze.
    qxLog("AudioEngine: " + outputDescription_ + " stopped; opening the output again");
    if (!startDeviceOutput(requestedDeviceId_) && deviceWatch_) deviceWatch_->stop();
}

QString AudioEngine::outputDescription() const {
    return outputDescription_;
}

void AudioEngine::renderToDevice(float* stereo, int64_t frames) noexcept {
    mixer_.render(stereo, frames);
    framesPlayed_ += frames;
}

void AudioEngine::startOffline() {
    stop();
    offlineOriginMs_ = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
    offlineOriginFrames_ = framesPlayed_.load();
    mode_ = Mode::offline;
}

double AudioEngine::clockMs() const {
    if (mode_ != Mode::offline) return static_cast<double>(QDateTime::currentMSecsSinceEpoch());
    const auto frames = static_cast<double>(framesPlayed_.load() - offlineOriginFrames_.load());
    return offlineOriginMs_.load() + frames * 1000.0 / kRate;
}

std::vector<float> AudioEngine::renderOffline(int64_t frames) {
    if (mode_ != Mode::offline || frames <= 0) return {};
    std::vector<float> out(static_cast<size_t>(frames * Mixer::kChannels));
    mixer_.render(out.data(), frames);
    framesPlayed_ += frames;
    return out;
}

void AudioEngine::runNullOutput() {
    using Clock = std::chrono::steady_clock;
    std::vector<float> block(static_cast<size_t>(kNullBlockFrames * Mixer::kChannels));
    const auto blockTime = std::chrono::microseconds(1'000'000 * kNullBlockFrames / kRate);
    // Deadlines from a fixed origin, so sleeping late now and then cannot make the clock drift.
    const Clock::time_point origin = Clock::now();
    int64_t blocks = 0;
    while (!stopping_) {
        mixer_.render(block.data(), kNullBlockFrames);
        framesPlayed_ += kNullBlockFrames;
        std::this_thread::sleep_until(origin + ++blocks * blockTime);
    }
}
