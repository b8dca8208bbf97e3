#include "recording/RecordingFile.h"

#include "foundation/Log.h"

#include <QFile>
#include <chrono>
#include <sndfile.h>
#include <vector>

namespace {
constexpr auto kPoll = std::chrono::milliseconds(10);
}

struct RecordingFile::Handle {
    SNDFILE* file = nullptr;
    std::vector<float> block;
    ~Handle() {
        if (file) sf_close(file);
    }
};

RecordingFile::RecordingFile(const QString& path, int rate, int channels)
    : path_(path), rate_(rate), channels_(channels),
      ring_(static_cast<size_t>(kRingSeconds * rate) * static_cast<size_t>(channels)),
      handle_(std::make_unique<Handle>()) {}

std::unique_ptr<RecordingFile> RecordingFile::create(const QString& path, int rate, int channels,
                                                     int bitDepth, QString* error) {
    const auto fail = [&](const QString& message) {
        if (error) *error = message;
        return std::unique_ptr<RecordingFile>();
    };
    if (rate <= 0 || channels <= 0) return fail(QStringLiteral("A recording needs a rate and channels."));
    if (bitDepth != 16 && bitDepth != 24)
        return fail(QStringLiteral("A recording is 16 or 24 bit, not %1.").arg(bitDepth));
    std::unique_ptr<RecordingFile> out(new RecordingFile(path, rate, channels));
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | (bitDepth == 24 ? SF_FORMAT_PCM_24 : SF_FORMAT_PCM_16);
    out->handle_->file = sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info);
    if (!out->handle_->file)
        return fail(
            QStringLiteral("The recording \"%1\" cannot be written: %2.").arg(path, sf_strerror(nullptr)));
    // Float beyond full scale is clipped, not wrapped round.
    sf_command(out->handle_->file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    sf_command(out->handle_->file, SFC_UPDATE_HEADER_NOW, nullptr, 0);
    out->handle_->block.resize(out->ring_.writable() / 8 / static_cast<size_t>(channels) *
                               static_cast<size_t>(channels));
    out->thread_ = std::thread([self = out.get()] { self->run(); });
    return out;
}

RecordingFile::~RecordingFile() {
    finish();
}

void RecordingFile::finish() {
    if (!thread_.joinable()) return;
    stopping_.store(true, std::memory_order_release);
    thread_.join();
    drain();
    if (handle_->file) {
        sf_write_sync(handle_->file);
        sf_close(handle_->file);
        handle_->file = nullptr;
    }
    qxLog(QStringLiteral("RecordingFile.finish %1 frames %2").arg(path_).arg(framesWritten()));
}

QString RecordingFile::failure() const {
    return failed() ? failure_ : QString();
}

void RecordingFile::run() {
    auto lastHeader = std::chrono::steady_clock::now();
    const auto headerEvery = std::chrono::milliseconds(static_cast<int>(kHeaderInterval * 1000));
    while (!stopping_.load(std::memory_order_acquire)) {
        std::this_thread::sleep_for(kPoll);
        drain();
        const auto now = std::chrono::steady_clock::now();
        if (now - lastHeader >= headerEvery && !failed()) {
            sf_command(handle_->file, SFC_UPDATE_HEADER_NOW, nullptr, 0);
            lastHeader = now;
        }
    }
}

bool RecordingFile::drain() {
    const auto ch = static_cast<size_t>(channels_);
    for (;;) {
        // Whole frames only: the audio thread writes whole frames, so a partial one is still coming.
        const size_t n = std::min(ring_.readable() / ch * ch, handle_->block.size());
        if (n == 0) return !failed();
        ring_.read(handle_->block.data(), n);
        if (failed()) continue; // keep the ring moving; the file is lost from here on
        const auto frames = static_cast<sf_count_t>(n / ch);
        const sf_count_t written = sf_writef_float(handle_->file, handle_->block.data(), frames);
        framesWritten_.fetch_add(written, std::memory_order_release);
        if (written != frames) {
            failure_ = QStringLiteral("Writing \"%1\" failed: %2.").arg(path_, sf_strerror(handle_->file));
            failed_.store(true, std::memory_order_release);
        }
    }
}
