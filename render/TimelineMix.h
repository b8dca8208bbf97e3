#pragma once
// The lanes of a render summed as the sound tool's mix did: each divided by their number, the gain it
// gave back for two to five of them, then clipped and dithered to 16 bits (one lane alone passes as it
// is). Pulled block by block by whoever writes or encodes it, so no mix file is needed. One thread
// pulls; the lanes are read on their own threads.

#include "render/LaneStream.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

class TimelineMix {
public:
    TimelineMix(std::vector<LaneStream> lanes, int rate, int channels);
    ~TimelineMix();

    const int rate;
    const int channels;

    bool empty() const { return lanes_.empty(); }
    // Interleaved frames into out (room for frames × channels); fewer at the end.
    int64_t read(int16_t* out, int64_t frames);
    // The next frames as raw little-endian bytes, as an encoder reads them from a pipe; empty at the
    // end.
    QByteArray readBytes(int64_t frames);
    // The rest of the mix into a 16-bit WAV at path; onBlock after every block. False when it cannot
    // be written.
    bool writeWav(const QString& path, const std::function<void()>& onBlock = {});
    // From the start again, with the same dither: the same frames once more.
    void rewind();
    // The longest lane, and what has been read of it.
    int64_t frames() const { return frames_; }
    int64_t framesRead() const { return framesRead_; }

    // What every lane is multiplied by in a mix of `lanes`.
    static double laneScale(size_t lanes);

private:
    void readLanes(int64_t frames);

    std::vector<LaneStream> lanes_;
    std::vector<std::vector<float>> blocks_;
    std::vector<int64_t> got_;
    std::vector<float> sum_;
    double scale_;
    int64_t frames_ = 0;
    int64_t framesRead_ = 0;
    uint32_t noise_ = 1;
};
