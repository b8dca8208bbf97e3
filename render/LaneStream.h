#pragma once
// One lane of a render as a stream of frames, made in one pass from the sources themselves. Each piece
// gives the very samples the file of that item used to hold (leading silence, trimmed span, gain,
// fade-out of a music bed, volume envelope, clipping wherever a 16-bit file was written) and the
// pieces follow one another as the lane's concatenation did, so the lane is the same sound without a
// file per item. Sources are read through libsndfile at the destination's rate.

#include "render/AUAudioConvolution.h"

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class SndFile;

struct LanePiece {
    int64_t padFrames = 0; // silence in front
    QString path;          // empty: the body is silence
    int64_t startFrame = 0;
    int64_t bodyFrames = 0; // after the pad, at most what the source holds from startFrame (or its repeats)
    bool loop = false;      // the source starts again at its end
    double gain = 1.0;      // linear
    // A logarithmic fade over the last frames of pad and body together, as the sound tool's `fade`.
    int64_t fadeOutFrames = 0;
    // Volume points over pad and body, seconds from the piece's start.
    std::optional<std::vector<AUAudioConvolution::GainPoint>> envelope;
};

class LaneStream {
public:
    LaneStream(std::vector<LanePiece> pieces, int rate, int channels);
    ~LaneStream();
    LaneStream(LaneStream&&) noexcept;
    LaneStream& operator=(LaneStream&&) noexcept;

    // Interleaved frames of the lane into out (room for frames × channels); fewer at its end.
    int64_t read(float* out, int64_t frames);
    // Back to the lane's start.
    void rewind();
    // Frames the whole lane holds.
    int64_t frames() const;

    // The sound tool's count of samples in a time it was given as text: rounded to the nearest.
    static int64_t samplesIn(double seconds, int rate);
    // Whether a source can be streamed as it is: readable here, at the rate, with channels one, two or
    // as many as the destination.
    static bool streamable(const QString& path, int rate, int channels);

private:
    struct Span {
        int64_t first;
        int64_t last;
        float g0;
        double step;
    };
    void openPiece();
    int64_t readPiece(float* out, int64_t frames);
    int64_t readShaped(float* out, int64_t frames);
    int64_t readBody(float* out, int64_t frames);
    void skipShapedTo(int64_t position);
    int64_t shapedFrames(const LanePiece& piece) const;

    std::vector<LanePiece> pieces_;
    int rate_;
    int channels_;
    size_t current_ = 0;
    bool open_ = false;
    std::unique_ptr<SndFile> source_;
    int64_t shapedPos_ = 0; // frames of pad and body given so far
    int64_t sourcePos_ = 0; // where the source will be read next
    bool floatSource_ = false;
    std::vector<float> lastFrame_;
    std::vector<float> scratch_;
    // Envelope walk: the spans, the one being read, the extra last frame still owed.
    std::vector<Span> spans_;
    size_t span_ = 0;
    bool tailOwed_ = false;
    double tailMultiplier_ = 1.0;
};
