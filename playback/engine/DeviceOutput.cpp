#include "playback/engine/DeviceOutput.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QCoreApplication>
#include <QIODevice>
#include <QList>
#include <QMediaDevices>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <set>
#include <vector>

namespace {

constexpr int kChannels = 2;
// Longer reads are served in pieces of this many frames.
constexpr int64_t kScratchFrames = 2048;

int16_t toInt16(float x) {
    if (std::isnan(x)) return 0;
    if (x >= 1.0f) return 32767;
    if (x <= -1.0f) return -32767;
    return static_cast<int16_t>(std::lrint(x * 32767.0f));
}

// The pull end of the sink, on the audio thread. Reads are always served in full: a short read would
// make the sink go idle until told that data is ready again.
class Feed : public QIODevice {
public:
    Feed(DeviceOutput::Render render, bool int16, std::atomic<int64_t>* pulled)
        : render_(std::move(render)), int16_(int16), pulled_(pulled),
          scratch_(static_cast<size_t>(kScratchFrames * kChannels)) {}

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        const qint64 frameBytes = kChannels * (int16_ ? qint64(sizeof(int16_t)) : qint64(sizeof(float)));
        const int64_t frames = maxSize / frameBytes;
        if (frames <= 0) return 0;
        if (!int16_ && reinterpret_cast<uintptr_t>(data) % alignof(float) == 0) {
            render_(reinterpret_cast<float*>(data), frames);
        } else {
            for (int64_t done = 0; done < frames;) {
                const int64_t n = std::min(kScratchFrames, frames - done);
                render_(scratch_.data(), n);
                char* to = data + done * frameBytes;
                if (int16_) {
                    for (int64_t i = 0; i < n * kChannels; ++i) {
                        const int16_t s = toInt16(scratch_[static_cast<size_t>(i)]);
                        std::memcpy(to + i * qint64(sizeof s), &s, sizeof s);
                    }
                } else {
                    std::memcpy(to, scratch_.data(), static_cast<size_t>(n * frameBytes));
                }
                done += n;
            }
        }
        pulled_->fetch_add(frames, std::memory_order_release);
        return frames * frameBytes;
    }

    qint64 writeData(const char*, qint64) override { return -1; }

private:
    DeviceOutput::Render render_;
    bool int16_;
    std::atomic<int64_t>* pulled_;
    std::vector<float> scratch_;
};

bool streamRuns(QAudio::State state, QAudio::Error error) {
    const bool live = state == QAudio::ActiveState || state == QAudio::IdleState;
    return live && (error == QAudio::NoError || error == QAudio::UnderrunError);
}

QString errorText(QAudio::Error error) {
    switch (error) {
    case QAudio::NoError:
        return QStringLiteral("no error reported");
    case QAudio::OpenError:
        return QStringLiteral("the device could not be opened");
    case QAudio::IOError:
        return QStringLiteral("writing to the device failed");
    case QAudio::UnderrunError:
        return QStringLiteral("the device ran out of sound");
    case QAudio::FatalError:
        return QStringLiteral("the sound system is unavailable");
    }
    return QStringLiteral("unknown error");
}

// The audio thread and the outputs open on it. Qt's sound-server connection is torn down with the
// process's globals, after which a sink can no longer be stopped safely, so what is still open when
// the application object goes is closed then, and the thread ends with it.
struct AudioThread {
    std::mutex mutex;
    QThread* thread = nullptr;
    // Belongs to the thread, so work can be queued there.
    QObject* anchor = nullptr;
    std::set<DeviceOutput*> outputs;
};

AudioThread& audioThread() {
    static AudioThread audio;
    return audio;
}

} // namespace

std::unique_ptr<DeviceOutput> DeviceOutput::open(const QByteArray& deviceId, int rate, Render render,
                                                 QString* error, bool forceInt16) {
    const auto fail = [error](const QString& message) {
        if (error) *error = message;
        return std::unique_ptr<DeviceOutput>();
    };
    if (!QCoreApplication::instance())
        return fail(QStringLiteral("Sound output needs the application object (QCoreApplication) to exist."));
    if (rate <= 0) return fail(QStringLiteral("Sound output needs a positive sample rate."));
    if (!render) return fail(QStringLiteral("Sound output needs something to play."));

    // Qt keeps the device list through a server connection of its own, made on the thread that first
    // asks and reconnected by that thread's timers: asked here, that is the caller's (main) thread.
    const QList<QAudioDevice> outputs = QMediaDevices::audioOutputs();
    if (outputs.isEmpty()) return fail(QStringLiteral("There is no audio output device."));
    QAudioDevice device;
    if (deviceId.isEmpty()) {
        device = QMediaDevices::defaultAudioOutput();
        if (device.isNull()) device = outputs.first();
    } else {
        for (const QAudioDevice& candidate : outputs)
            if (candidate.id() == deviceId) device = candidate;
        if (device.isNull())
            return fail(
                QStringLiteral("The audio output \"%1\" is not available.").arg(QString::fromUtf8(deviceId)));
    }

    QAudioFormat format;
    format.setSampleRate(rate);
    format.setChannelCount(kChannels);
    format.setChannelConfig(QAudioFormat::ChannelConfigStereo);
    format.setSampleFormat(QAudioFormat::Float);
    const bool int16 = forceInt16 || !device.isFormatSupported(format);
    if (int16) {
        format.setSampleFormat(QAudioFormat::Int16);
        if (!device.isFormatSupported(format))
            return fail(
                QStringLiteral("The audio output \"%1\" plays neither float nor 16-bit stereo at %2 Hz.")
                    .arg(device.description())
                    .arg(rate));
    }

    std::unique_ptr<DeviceOutput> out(new DeviceOutput);
    out->deviceId_ = device.id();
    out->description_ = device.description();
    out->format_ = int16 ? SampleFormat::int16 : SampleFormat::float32;
    out->rate_ = rate;
    QObject* anchor = nullptr;
    {
        AudioThread& audio = audioThread();
        const std::lock_guard lock(audio.mutex);
        if (!audio.thread) {
            audio.thread = new QThread;
            audio.thread->setObjectName(QStringLiteral("Audio output"));
            audio.anchor = new QObject;
            audio.anchor->moveToThread(audio.thread);
            audio.thread->start(QThread::TimeCriticalPriority);
            qAddPostRoutine([] {
                AudioThread& audio = audioThread();
                std::set<DeviceOutput*> open;
                {
                    const std::lock_guard lock(audio.mutex);
                    open = audio.outputs;
                }
                for (DeviceOutput* o : open)
                    o->shutDown();
                const std::lock_guard lock(audio.mutex);
                audio.thread->quit();
                audio.thread->wait();
                // The thread has ended, so what lived on it may go from here.
                delete audio.anchor;
                delete audio.thread;
                audio.anchor = nullptr;
                audio.thread = nullptr;
            });
        }
        anchor = audio.anchor;
        audio.outputs.insert(out.get());
    }

    QString failure;
    DeviceOutput* self = out.get();
    QMetaObject::invokeMethod(
        anchor,
        [&, self] {
            const qint64 frameBytes = format.bytesPerFrame();
            auto* feed = new Feed(std::move(render), int16, &self->framesPulled_);
            feed->open(QIODevice::ReadOnly | QIODevice::Unbuffered);
            self->feed_ = feed;
            auto* sink = new QAudioSink(device, format);
            self->sink_ = sink;
            if (sink->isNull()) {
                failure = QStringLiteral("The audio output \"%1\" has no sink.").arg(device.description());
                return;
            }
            sink->setBufferSize(static_cast<qsizetype>(int64_t(rate) * kBufferMs / 1000 * frameBytes));
            QObject::connect(sink, &QAudioSink::stateChanged, sink, [self, sink](QAudio::State state) {
                self->running_.store(streamRuns(state, sink->error()), std::memory_order_release);
            });
            sink->start(feed);
            if (!streamRuns(sink->state(), sink->error())) {
                failure = QStringLiteral("The audio output \"%1\" could not be started: %2.")
                              .arg(device.description(), errorText(sink->error()));
                return;
            }
            self->bufferFrames_ = sink->bufferSize() / frameBytes;
            self->running_.store(true, std::memory_order_release);
        },
        Qt::BlockingQueuedConnection);
    if (!failure.isEmpty()) return fail(failure);
    return out;
}

DeviceOutput::~DeviceOutput() {
    shutDown();
    AudioThread& audio = audioThread();
    const std::lock_guard lock(audio.mutex);
    audio.outputs.erase(this);
}

void DeviceOutput::shutDown() {
    QObject* anchor = nullptr;
    {
        AudioThread& audio = audioThread();
        const std::lock_guard lock(audio.mutex);
        anchor = audio.anchor;
    }
    if (!anchor || (!sink_ && !feed_)) return;
    QMetaObject::invokeMethod(
        anchor,
        [this] {
            if (sink_) sink_->stop();
            delete sink_;
            sink_ = nullptr;
            delete feed_;
            feed_ = nullptr;
            running_.store(false, std::memory_order_release);
        },
        Qt::BlockingQueuedConnection);
}

std::vector<std::pair<QByteArray, QString>> outputDevices() {
    std::vector<std::pair<QByteArray, QString>> devices;
    if (!QCoreApplication::instance()) return devices;
    const QList<QAudioDevice> outputs = QMediaDevices::audioOutputs();
    const QByteArray defaultId = QMediaDevices::defaultAudioOutput().id();
    for (const QAudioDevice& device : outputs) {
        const std::pair<QByteArray, QString> entry{device.id(), device.description()};
        if (device.id() == defaultId)
            devices.insert(devices.begin(), entry);
        else
            devices.push_back(entry);
    }
    return devices;
}
