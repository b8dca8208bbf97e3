#include "playback/engine/StreamingFile.h"

#include "dsp/SndFile.h"
#include "playback/engine/AudioEngine.h"

#include <SoundTouch.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

namespace {
constexpr int64_t kChunkFrames = 4096;
} // namespace

// Reads, converts to stereo and time-stretches; owned by one thread at a time (the opener while
// priming, then the worker).
class StreamingFile::Decoder {
public:
    Decoder(SndFile file, const Options& options, int64_t startFrame, int64_t endFrame)
        : file_(std::move(file)), loop_(options.loop), at_(startFrame), endFrame_(endFrame) {
        if (!file_.isOpen() || !file_.seek(startFrame)) {
            done_ = true;
            return;
        }
        channels_ = file_.channels();
        in_.resize(static_cast<size_t>(kChunkFrames * channels_));
        out_.resize(static_cast<size_t>(kChunkFrames * 2));
        const int rate = file_.sampleRate();
        if (options.rate != 1.0 || rate != AudioEngine::kRate) {
            stretch_ = std::make_unique<soundtouch::SoundTouch>();
            stretch_->setSampleRate(static_cast<unsigned>(rate));
            stretch_->setChannels(2);
            stretch_->setTempo(options.rate);
            // A file of another rate is resampled to the engine's, so it plays at its own pitch.
            stretch_->setRate(static_cast<double>(rate) / AudioEngine::kRate);
        }
    }

    bool done() const { return done_; }

    // One chunk into the ring when there is room for it; false when there was none.
    bool step(SpscRing& ring) {
        if (stretch_ && stretch_->numSamples() > 0) {
            if (ring.writable() < out_.size()) return false;
            const unsigned got = stretch_->receiveSamples(out_.data(), static_cast<unsigned>(kChunkFrames));
            ring.write(out_.data(), static_cast<size_t>(got) * 2);
            return true;
        }
        if (fileDone_) {
            done_ = true;
            return true;
        }
        if (ring.writable() < out_.size()) return false;
        const int64_t want = std::min(kChunkFrames, endFrame_ - at_);
        const int64_t got = want > 0 ? file_.readFrames(in_.data(), want) : 0;
        if (got <= 0) {
            // The end, or a read error, which ends the file the same way; so does a loop that went
            // round without a frame.
            if (loop_ && framesThisPass_ > 0 && file_.seek(0)) {
                at_ = 0;
                framesThisPass_ = 0;
                return true;
            }
            // What the stretcher still holds comes out before the end.
            if (stretch_) stretch_->flush();
            fileDone_ = true;
            return true;
        }
        const int right = channels_ > 1 ? 1 : 0;
        for (int64_t f = 0; f < got; ++f) {
            out_[static_cast<size_t>(2 * f)] = in_[static_cast<size_t>(f * channels_)];
            out_[static_cast<size_t>(2 * f + 1)] = in_[static_cast<size_t>(f * channels_ + right)];
        }
        if (stretch_)
            stretch_->putSamples(out_.data(), static_cast<unsigned>(got));
        else
            ring.write(out_.data(), static_cast<size_t>(got * 2));
        at_ += got;
        framesThisPass_ += got;
        return true;
    }

private:
    SndFile file_;
    const bool loop_;
    int64_t at_;
    const int64_t endFrame_;
    int channels_ = 0;
    std::vector<float> in_;
    std::vector<float> out_;
    std::unique_ptr<soundtouch::SoundTouch> stretch_;
    int64_t framesThisPass_ = 0;
    bool fileDone_ = false;
    bool done_ = false;
};

std::shared_ptr<StreamingFile> StreamingFile::open(const QString& path, const Options& options) {
    if (!(options.rate > 0) || !std::isfinite(options.rate)) return nullptr;
    SndFile sound(path);
    if (!sound.isOpen() || sound.frames() <= 0) return nullptr;
    std::shared_ptr<StreamingFile> file(new StreamingFile());
    file->options_ = options;
    file->rate_ = sound.sampleRate();
    file->frames_ = sound.frames();
    const auto toFrame = [&](double seconds) {
        return std::clamp<int64_t>(static_cast<int64_t>(seconds * file->rate_), 0, file->frames_);
    };
    const int64_t startFrame = toFrame(std::max(options.startSeconds, 0.0));
    file->endFrame_ = options.stopSeconds ? toFrame(*options.stopSeconds) : file->frames_;
    file->startFrame_ = startFrame;
    if (startFrame >= file->endFrame_) return nullptr;
    file->ring_ = std::make_unique<SpscRing>(static_cast<size_t>(kReadAheadSeconds * AudioEngine::kRate) * 2);
    auto decoder = std::make_unique<Decoder>(std::move(sound), options, startFrame, file->endFrame_);
    // Primed here, so a new voice never starts on an empty ring: its first block is its first sound.
    while (!decoder->done() && file->ring_->readable() < static_cast<size_t>(kPrimeFrames * 2))
        decoder->step(*file->ring_);
    file->decodedAll_ = decoder->done();
    if (!decoder->done())
        file->worker_ = std::thread([raw = file.get(), d = std::move(decoder)] { raw->work(*d); });
    return file;
}

StreamingFile::~StreamingFile() {
    stop_ = true;
    if (worker_.joinable()) worker_.join();
}

double StreamingFile::durationSeconds() const {
    return static_cast<double>(frames_) / rate_;
}

double StreamingFile::elapsedSeconds() const {
    // At another speed each frame heard stands for `rate` seconds' worth of the file.
    return static_cast<double>(consumed_.load()) * options_.rate / AudioEngine::kRate;
}

double StreamingFile::positionSeconds() const {
    const auto consumed = static_cast<int64_t>(elapsedSeconds() * rate_);
    const int64_t firstPass = endFrame_ - startFrame_;
    int64_t frame = startFrame_ + consumed;
    if (options_.loop && consumed >= firstPass) frame = (consumed - firstPass) % endFrame_;
    return static_cast<double>(std::min(frame, frames_)) / rate_;
}

void StreamingFile::work(Decoder& decoder) {
    while (!stop_ && !decoder.done())
        if (!decoder.step(*ring_)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    decodedAll_.store(true, std::memory_order_release);
}

int64_t StreamingFile::pull(float* stereo, int64_t frames) noexcept {
    const auto wanted = static_cast<size_t>(frames * 2);
    size_t got = ring_->read(stereo, wanted);
    if (got < wanted) {
        // Whatever the worker wrote before it said it was done is in the ring now.
        const bool done = decodedAll_.load(std::memory_order_acquire);
        got += ring_->read(stereo + got, wanted - got);
        if (got < wanted && !done) {
            std::fill(stereo + got, stereo + wanted, 0.0f);
            underruns_.fetch_add(static_cast<int64_t>(wanted - got) / 2, std::memory_order_relaxed);
            consumed_.fetch_add(static_cast<int64_t>(got / 2), std::memory_order_relaxed);
            return frames;
        }
    }
    consumed_.fetch_add(static_cast<int64_t>(got / 2), std::memory_order_relaxed);
    return static_cast<int64_t>(got / 2);
}
