#include "playback/engine/StreamingFile.h"

#include "dsp/SndFile.h"

#include <SoundTouch.h>
#include <algorithm>
#include <chrono>
#include <vector>

namespace {
constexpr int64_t kChunkFrames = 4096;
} // namespace

std::shared_ptr<StreamingFile> StreamingFile::open(const QString& path, const Options& options) {
    SndFile probe(path);
    if (!probe.isOpen() || probe.frames() <= 0) return nullptr;
    std::shared_ptr<StreamingFile> file(new StreamingFile());
    file->path_ = path;
    file->options_ = options;
    file->rate_ = probe.sampleRate();
    file->frames_ = probe.frames();
    const auto toFrame = [&](double seconds) {
        return std::clamp<int64_t>(static_cast<int64_t>(seconds * file->rate_), 0, file->frames_);
    };
    file->startFrame_ = toFrame(std::max(options.startSeconds, 0.0));
    file->endFrame_ = options.stopSeconds ? toFrame(*options.stopSeconds) : file->frames_;
    if (file->startFrame_ >= file->endFrame_) return nullptr;
    file->ring_ = std::make_unique<SpscRing>(static_cast<size_t>(kReadAheadSeconds * file->rate_) * 2);
    file->worker_ = std::thread([raw = file.get()] { raw->work(); });
    return file;
}

StreamingFile::~StreamingFile() {
    stop_ = true;
    if (worker_.joinable()) worker_.join();
}

double StreamingFile::durationSeconds() const {
    return static_cast<double>(frames_) / rate_;
}

double StreamingFile::positionSeconds() const {
    // At another speed each frame heard stands for `rate` frames of the file.
    const auto consumed = static_cast<int64_t>(static_cast<double>(consumed_.load()) * options_.rate);
    const int64_t firstPass = endFrame_ - startFrame_;
    int64_t frame = startFrame_ + consumed;
    if (options_.loop && consumed >= firstPass) frame = (consumed - firstPass) % endFrame_;
    return static_cast<double>(std::min(frame, frames_)) / rate_;
}

void StreamingFile::work() {
    SndFile file(path_);
    if (!file.isOpen() || !file.seek(startFrame_)) {
        decodedAll_.store(true, std::memory_order_release);
        return;
    }
    const int channels = file.channels();
    std::vector<float> in(static_cast<size_t>(kChunkFrames * channels));
    std::vector<float> out(static_cast<size_t>(kChunkFrames * 2));
    std::unique_ptr<soundtouch::SoundTouch> stretch;
    if (options_.rate != 1.0) {
        stretch = std::make_unique<soundtouch::SoundTouch>();
        stretch->setSampleRate(static_cast<unsigned>(rate_));
        stretch->setChannels(2);
        stretch->setTempo(options_.rate);
    }
    // Time-stretched frames waiting for room in the ring.
    std::vector<float> stretched(out.size());
    int64_t at = startFrame_;
    bool fileDone = false;
    while (!stop_) {
        if (stretch && stretch->numSamples() > 0) {
            if (ring_->writable() < stretched.size()) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                continue;
            }
            const unsigned got =
                stretch->receiveSamples(stretched.data(), static_cast<unsigned>(kChunkFrames));
            ring_->write(stretched.data(), static_cast<size_t>(got) * 2);
            continue;
        }
        if (fileDone) break;
        if (ring_->writable() < out.size()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            continue;
        }
        const int64_t want = std::min(kChunkFrames, endFrame_ - at);
        const int64_t got = want > 0 ? file.readFrames(in.data(), want) : 0;
        if (got <= 0) {
            // The end, or a read error, which ends the file the same way.
            if (!options_.loop || !file.seek(0)) {
                // What the stretcher still holds comes out before the end.
                if (stretch) stretch->flush();
                fileDone = true;
                continue;
            }
            at = 0;
            continue;
        }
        const int right = channels > 1 ? 1 : 0;
        for (int64_t f = 0; f < got; ++f) {
            out[static_cast<size_t>(2 * f)] = in[static_cast<size_t>(f * channels)];
            out[static_cast<size_t>(2 * f + 1)] = in[static_cast<size_t>(f * channels + right)];
        }
        if (stretch)
            stretch->putSamples(out.data(), static_cast<unsigned>(got));
        else
            ring_->write(out.data(), static_cast<size_t>(got * 2));
        at += got;
    }
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
