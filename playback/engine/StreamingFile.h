#pragma once
// A sound file played from disk: a worker thread decodes ahead into a ring of about two seconds, so
// memory does not grow with the file, and the audio thread only copies out of the ring. Mono files
// play on both channels; a file of another sample rate is resampled to the engine's. A speed other
// than 1.0 is made in the worker by time-stretching, which keeps the pitch.

#include "dsp/SpscRing.h"
#include "playback/engine/VoiceSource.h"

#include <QString>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>

class StreamingFile : public VoiceSource {
public:
    struct Options {
        double startSeconds = 0;
        // Where playing ends, in file time; the end of the file when unset or beyond it.
        std::optional<double> stopSeconds;
        // From the end (or stopSeconds) back to the start of the file.
        bool loop = false;
        // Speed with the pitch kept; at 1.0 the samples pass untouched.
        double rate = 1.0;
    };

    static constexpr double kReadAheadSeconds = 2.0;
    // Decoded by open() itself, before the worker takes over: more than any output block.
    static constexpr int64_t kPrimeFrames = 8192;

    // Null when the file cannot be read, the start lies beyond its end or the rate is not above 0.
    static std::shared_ptr<StreamingFile> open(const QString& path, const Options& options);
    ~StreamingFile() override;

    int64_t pull(float* stereo, int64_t frames) noexcept override;

    int sampleRate() const { return rate_; }
    double durationSeconds() const;
    // File time of the next frame the audio thread takes (ahead of the ear by the output's latency).
    double positionSeconds() const;
    // File time played since the start, loops unrolled.
    double elapsedSeconds() const;
    // Frames the audio thread asked for and the worker had not decoded yet.
    int64_t underrunFrames() const { return underruns_.load(); }

private:
    class Decoder;
    StreamingFile() = default;
    void work(Decoder& decoder);

    Options options_;
    int rate_ = 0;
    int64_t frames_ = 0;
    std::unique_ptr<SpscRing> ring_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> decodedAll_{false};
    std::atomic<int64_t> consumed_{0};
    std::atomic<int64_t> underruns_{0};
    int64_t startFrame_ = 0;
    int64_t endFrame_ = 0;
    std::thread worker_;
};
