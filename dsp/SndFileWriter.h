#pragma once
// A sound file open for writing through libsndfile, fed interleaved float frames in blocks; closes
// (and so finishes the header) when it goes. Movable, not copyable; one thread at a time.

#include <QString>
#include <cstdint>
#include <memory>
#include <sndfile.h>

class SndFileWriter {
public:
    // format as libsndfile's, e.g. SF_FORMAT_WAV | SF_FORMAT_FLOAT. Check isOpen(); the reason why not
    // is logged.
    SndFileWriter(const QString& path, int frequency, int channels, int format);

    bool isOpen() const { return handle_ != nullptr; }
    // False, with a log line, when fewer frames went out.
    bool writeFrames(const float* interleaved, int64_t frames);
    // 16-bit frames as they are, for a file of that depth.
    bool writeFrames(const int16_t* interleaved, int64_t frames);

private:
    struct Closer {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    std::unique_ptr<SNDFILE, Closer> handle_;
    QString path_;
};
