#pragma once
// A sound file open for reading through libsndfile, delivering 32-bit float at the file's rate
// (integer formats at full scale ±1.0). Closes itself; movable, not copyable. One thread at a time.

#include <QString>
#include <cstdint>
#include <memory>
#include <sndfile.h>

class SndFile {
public:
    // Check isOpen(): a file libsndfile cannot open gives a closed object, never an exception.
    explicit SndFile(const QString& path);

    bool isOpen() const { return handle_ != nullptr; }
    int64_t frames() const { return info_.frames; }
    int sampleRate() const { return info_.samplerate; }
    int channels() const { return info_.channels; }
    int majorFormat() const { return info_.format & SF_FORMAT_TYPEMASK; }
    int subFormat() const { return info_.format & SF_FORMAT_SUBMASK; }
    int64_t fileBytes() const { return fileBytes_; }
    // frames(), but no more than the file's bytes could hold: a header may claim more than is there (a
    // cut MP3 keeps its full-length header). For sizing buffers, not for reading.
    int64_t plausibleFrames() const;

    // Moves the read position to `frame` from the start; false when the file cannot seek there.
    bool seek(int64_t frame);
    // Interleaved frames into `buffer` (room for frames × channels); the count read, short at the end
    // of the data or on a read error.
    int64_t readFrames(float* buffer, int64_t frames);

private:
    struct Closer {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    std::unique_ptr<SNDFILE, Closer> handle_;
    SF_INFO info_{};
    int64_t fileBytes_ = 0;
};
