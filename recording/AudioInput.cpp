#include "recording/AudioInput.h"

#include "dsp/SpscRing.h"

#include <QAudioFormat>
#include <QAudioSource>
#include <QCoreApplication>
#include <QIODevice>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace {

constexpr int kStartTimeoutMs = 2000;
// Blocks longer than this are taken in pieces.
constexpr int64_t kScratchFrames = 4096;

int64_t nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

float toDb(double linear) {
    return linear > 0.0 ? std::max(AudioInput::kSilenceDb, static_cast<float>(20.0 * std::log10(linear)))
                        : AudioInput::kSilenceDb;
}

// The input thread and the inputs open on it; closed with the application object, as Qt's
// sound-server connection does not outlive the process's globals.
struct InputThread {
    std::mutex mutex;
    QThread* thread = nullptr;
    QObject* anchor = nullptr;
    std::set<AudioInput*> inputs;
};

InputThread& inputThread() {
    static InputThread input;
    return input;
}

QObject* inputAnchor(AudioInput* input) {
    InputThread& t = inputThread();
    const std::lock_guard lock(t.mutex);
    if (!t.thread) {
        t.thread = new QThread;
        t.thread->setObjectName(QStringLiteral("Audio input"));
        t.anchor = new QObject;
        t.anchor->moveToThread(t.thread);
        t.thread->start(QThread::TimeCriticalPriority);
        qAddPostRoutine([] {
            InputThread& t = inputThread();
            std::set<AudioInput*> open;
            {
                const std::lock_guard lock(t.mutex);
                open = t.inputs;
            }
            for (AudioInput* i : open)
                i->close();
            const std::lock_guard lock(t.mutex);
            t.thread->quit();
            t.thread->wait();
            delete t.anchor;
            delete t.thread;
            t.anchor = nullptr;
            t.thread = nullptr;
        });
    }
    if (input) t.inputs.insert(input);
    return t.anchor;
}

} // namespace

// The push end of the source, on the input thread: everything here is the audio thread.
class AudioInput::Feed : public QIODevice {
public:
    Feed(AudioInput* owner, QAudioFormat::SampleFormat format)
        : owner_(owner), format_(format), channels_(owner->channels_),
          bytesPerSample_(format == QAudioFormat::Int16 ? 2 : 4),
          scratch_(static_cast<size_t>(kScratchFrames * channels_)),
          windowFrames_(std::max<int64_t>(1, std::lround(kMeterWindow * owner->rate_))),
          sumSquares_(static_cast<size_t>(channels_)), peak_(static_cast<size_t>(channels_)) {
        carry_.reserve(static_cast<size_t>(channels_ * bytesPerSample_));
    }

    bool isSequential() const override { return true; }
    SpscRing* target = nullptr;

protected:
    qint64 readData(char*, qint64) override { return -1; }

    // audio thread
    qint64 writeData(const char* data, qint64 size) override {
        const qint64 frameBytes = qint64(channels_) * bytesPerSample_;
        qint64 used = 0;
        // A frame split between two blocks is put together first.
        if (!carry_.empty()) {
            const qint64 need = frameBytes - qint64(carry_.size());
            const qint64 take = std::min(need, size);
            carry_.insert(carry_.end(), data, data + take);
            used = take;
            if (qint64(carry_.size()) == frameBytes) {
                take_(carry_.data(), 1);
                carry_.clear();
            }
        }
        while (size - used >= frameBytes) {
            const int64_t frames = std::min<int64_t>(kScratchFrames, (size - used) / frameBytes);
            take_(data + used, frames);
            used += frames * frameBytes;
        }
        carry_.insert(carry_.end(), data + used, data + size);
        return size;
    }

private:
    // audio thread
    void take_(const char* bytes, int64_t frames) {
        const int64_t n = frames * channels_;
        float* out = scratch_.data();
        if (format_ == QAudioFormat::Float) {
            std::memcpy(out, bytes, static_cast<size_t>(n) * sizeof(float));
        } else if (format_ == QAudioFormat::Int32) {
            for (int64_t i = 0; i < n; ++i) {
                int32_t s;
                std::memcpy(&s, bytes + i * 4, 4);
                out[i] = static_cast<float>(s / 2147483648.0);
            }
        } else {
            for (int64_t i = 0; i < n; ++i) {
                int16_t s;
                std::memcpy(&s, bytes + i * 2, 2);
                out[i] = static_cast<float>(s) / 32768.0f;
            }
        }
        meter(out, frames);
        if (owner_->heard_.load(std::memory_order_relaxed) == 0)
            owner_->startNs_.store(nowNs() - frames * 1'000'000'000 / owner_->rate_,
                                   std::memory_order_release);
        owner_->heard_.fetch_add(frames, std::memory_order_release);
        if (!target) return;
        const auto values = static_cast<size_t>(n);
        if (target->writable() < values) {
            owner_->dropped_.fetch_add(frames, std::memory_order_release);
            return;
        }
        target->write(out, values);
        owner_->captured_.fetch_add(frames, std::memory_order_release);
    }

    // audio thread
    void meter(const float* x, int64_t frames) {
        for (int64_t f = 0; f < frames; ++f) {
            for (int c = 0; c < channels_; ++c) {
                const double v = x[f * channels_ + c];
                sumSquares_[static_cast<size_t>(c)] += v * v;
                peak_[static_cast<size_t>(c)] = std::max(peak_[static_cast<size_t>(c)], std::abs(v));
            }
            if (++windowFill_ < windowFrames_) continue;
            const int metered = std::min(channels_, kMaxMeteredChannels);
            for (int c = 0; c < metered; ++c) {
                const auto i = static_cast<size_t>(c);
                owner_->average_[i].store(toDb(std::sqrt(sumSquares_[i] / double(windowFrames_))),
                                          std::memory_order_relaxed);
                owner_->peak_[i].store(toDb(peak_[i]), std::memory_order_relaxed);
            }
            std::fill(sumSquares_.begin(), sumSquares_.end(), 0.0);
            std::fill(peak_.begin(), peak_.end(), 0.0);
            windowFill_ = 0;
        }
    }

    AudioInput* owner_;
    QAudioFormat::SampleFormat format_;
    int channels_;
    int bytesPerSample_;
    std::vector<float> scratch_;
    std::vector<char> carry_;
    int64_t windowFrames_;
    int64_t windowFill_ = 0;
    std::vector<double> sumSquares_;
    std::vector<double> peak_;
};

std::unique_ptr<AudioInput> AudioInput::open(const QAudioDevice& device, int rate, int channels,
                                             QString* error) {
    const auto fail = [error](const QString& message) {
        if (error) *error = message;
        return std::unique_ptr<AudioInput>();
    };
    if (!QCoreApplication::instance())
        return fail(QStringLiteral("Recording needs the application object (QCoreApplication) to exist."));
    if (device.isNull()) return fail(QStringLiteral("There is no audio input device."));
    if (rate <= 0 || channels <= 0) return fail(QStringLiteral("Recording needs a rate and channels."));

    QAudioFormat format;
    format.setSampleRate(rate);
    format.setChannelCount(channels);
    QAudioFormat::SampleFormat sampleFormat = QAudioFormat::Unknown;
    for (const QAudioFormat::SampleFormat candidate :
         {QAudioFormat::Float, QAudioFormat::Int32, QAudioFormat::Int16}) {
        format.setSampleFormat(candidate);
        if (device.isFormatSupported(format)) {
            sampleFormat = candidate;
            break;
        }
    }
    if (sampleFormat == QAudioFormat::Unknown)
        return fail(QStringLiteral("The input \"%1\" cannot record %2 channels at %3 Hz.")
                        .arg(device.description())
                        .arg(channels)
                        .arg(rate));
    format.setSampleFormat(sampleFormat);

    std::unique_ptr<AudioInput> in(new AudioInput);
    in->device_ = device;
    in->rate_ = rate;
    in->channels_ = channels;
    for (size_t c = 0; c < kMaxMeteredChannels; ++c) {
        in->average_[c].store(kSilenceDb);
        in->peak_[c].store(kSilenceDb);
    }
    QObject* anchor = inputAnchor(in.get());

    QString failure;
    AudioInput* self = in.get();
    QMetaObject::invokeMethod(
        anchor,
        [&, self] {
            self->feed_ = new Feed(self, sampleFormat);
            self->feed_->open(QIODevice::WriteOnly | QIODevice::Unbuffered);
            auto* source = new QAudioSource(device, format);
            self->source_ = source;
            // Small blocks keep the meters lively and the ring's share of each block small.
            source->setBufferSize(static_cast<qsizetype>(rate / 50 * format.bytesPerFrame()));
            QObject::connect(source, &QAudioSource::stateChanged, source,
                             [self, source](QAudio::State state) {
                                 if (state == QAudio::StoppedState && source->error() != QAudio::NoError)
                                     self->failed_.store(true, std::memory_order_release);
                             });
            source->start(self->feed_);
            if (source->error() != QAudio::NoError || source->state() == QAudio::StoppedState)
                failure = QStringLiteral("The input \"%1\" could not be started.").arg(device.description());
        },
        Qt::BlockingQueuedConnection);
    if (!failure.isEmpty()) return fail(failure);
    // The server connects the stream on its own time: the input runs once sound comes in.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kStartTimeoutMs);
    while (in->heard_.load(std::memory_order_acquire) == 0 && !in->failed() &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    if (in->heard_.load(std::memory_order_acquire) == 0)
        return fail(QStringLiteral("The input \"%1\" gives no sound.").arg(device.description()));
    return in;
}

AudioInput::~AudioInput() {
    close();
    InputThread& t = inputThread();
    const std::lock_guard lock(t.mutex);
    t.inputs.erase(this);
}

void AudioInput::close() {
    QObject* anchor = nullptr;
    {
        InputThread& t = inputThread();
        const std::lock_guard lock(t.mutex);
        anchor = t.anchor;
    }
    if (!anchor || (!source_ && !feed_)) return;
    QMetaObject::invokeMethod(
        anchor,
        [this] {
            if (source_) source_->stop();
            delete source_;
            source_ = nullptr;
            delete feed_;
            feed_ = nullptr;
        },
        Qt::BlockingQueuedConnection);
}

void AudioInput::setTarget(SpscRing* ring) {
    QObject* anchor = inputAnchor(nullptr);
    QMetaObject::invokeMethod(
        anchor,
        [this, ring] {
            if (feed_) feed_->target = ring;
        },
        Qt::BlockingQueuedConnection);
}

void AudioInput::catchUp(double maxSeconds) {
    const int64_t until = nowNs();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(maxSeconds);
    // Within a few milliseconds is caught up: blocks come in pieces of about that.
    constexpr int64_t kSlackNs = 5'000'000;
    while (!failed() && std::chrono::steady_clock::now() < deadline) {
        const int64_t start = startNs_.load(std::memory_order_acquire);
        const int64_t heard = heard_.load(std::memory_order_acquire);
        if (heard == 0) return;
        if (start + heard * 1'000'000'000 / rate_ + kSlackNs >= until) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

float AudioInput::averagePowerDb(int channel) const {
    if (channel < 0 || channel >= std::min(channels_, kMaxMeteredChannels)) return kSilenceDb;
    return average_[static_cast<size_t>(channel)].load(std::memory_order_relaxed);
}

float AudioInput::peakPowerDb(int channel) const {
    if (channel < 0 || channel >= std::min(channels_, kMaxMeteredChannels)) return kSilenceDb;
    return peak_[static_cast<size_t>(channel)].load(std::memory_order_relaxed);
}
