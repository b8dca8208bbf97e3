#pragma once
// The disk end of a take: a linear PCM WAV that a writer thread of its own fills from a ring, so the
// audio thread never waits on the disk. The header's sizes are rewritten every half second, so a
// take cut short by a crash or a kill leaves a WAV that any reader takes as it stands, missing at
// most the last half second.
//
// Threads: the audio thread writes whole frames into ring() and nothing else; everything else is for
// the owner's thread. finish() (or the destructor) drains the ring, fixes the header and closes.

#include "dsp/SpscRing.h"

#include <QString>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

class RecordingFile {
public:
    static constexpr double kHeaderInterval = 0.5; // seconds
    // What the ring holds: a writer held up by the disk this long loses nothing.
    static constexpr double kRingSeconds = 4.0;

    // bitDepth 16 or 24. Null with *error filled when the file cannot be made.
    static std::unique_ptr<RecordingFile> create(const QString& path, int rate, int channels, int bitDepth,
                                                 QString* error);
    ~RecordingFile();
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    SpscRing& ring() { return ring_; }
    int channels() const { return channels_; }
    int rate() const { return rate_; }
    const QString& path() const { return path_; }

    // Drains, writes the final header, closes; idempotent.
    void finish();
    int64_t framesWritten() const { return framesWritten_.load(std::memory_order_acquire); }
    // The disk refused a write: frames from then on are lost, and this says why.
    bool failed() const { return failed_.load(std::memory_order_acquire); }
    QString failure() const;

private:
    struct Handle;
    RecordingFile(const QString& path, int rate, int channels);
    void run();
    // Writes what the ring holds; false on a disk error.
    bool drain();

    QString path_;
    int rate_;
    int channels_;
    SpscRing ring_;
    std::unique_ptr<Handle> handle_;
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> failed_{false};
    std::atomic<int64_t> framesWritten_{0};
    QString failure_; // written by the writer thread before failed_ is set
};
