#include "render/LaneStream.h"

#include "dsp/Levels.h"
#include "dsp/SndFile.h"
#include "render/tools/ToolFilePaths.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int64_t kChunk = 16384;
// The largest value a 16-bit file holds: every stage that wrote one clipped there.
constexpr float kTop = 32767.0f / 32768.0f;

float clip16(float v) {
    return std::clamp(v, -1.0f, kTop);
}

// The sound tool's channel change: mono is copied to both sides, stereo to mono is their mean.
void mapChannels(const float* in, int inChannels, float* out, int outChannels, int64_t frames) {
    const auto n = static_cast<size_t>(frames);
    if (inChannels == outChannels) {
        std::copy(in, in + n * static_cast<size_t>(inChannels), out);
    } else if (inChannels == 1) {
        for (size_t f = 0; f < n; ++f)
            std::fill(out + f * static_cast<size_t>(outChannels),
                      out + (f + 1) * static_cast<size_t>(outChannels), in[f]);
    } else {
        for (size_t f = 0; f < n; ++f)
            out[f] = (in[2 * f] + in[2 * f + 1]) * 0.5f;
    }
}

// The sound tool's logarithmic fade: 100 dB down at the very end.
double fadeOutGain(int64_t left, int64_t length) {
    const double index = std::clamp(static_cast<double>(left) / static_cast<double>(length), 0.0, 1.0);
    return std::pow(0.1, (1.0 - index) * 5.0);
}

} // namespace

LaneStream::LaneStream(std::vector<LanePiece> pieces, int rate, int channels)
    : pieces_(std::move(pieces)), rate_(rate), channels_(channels),
      lastFrame_(static_cast<size_t>(channels), 0.0f) {}

LaneStream::~LaneStream() = default;
LaneStream::LaneStream(LaneStream&&) noexcept = default;
LaneStream& LaneStream::operator=(LaneStream&&) noexcept = default;

int64_t LaneStream::samplesIn(double seconds, int rate) {
    // The printed number reads back exactly; the tool rounds it to the nearest sample.
    return seconds > 0 ? static_cast<int64_t>(seconds * rate + 0.5) : 0;
}

bool LaneStream::streamable(const QString& path, int rate, int channels) {
    // Compressed and AIFF sources go through the decoded copy beside them, as every render made it.
    const QString extension = toolFilePaths::extensionLower(path);
    if (extension == "mp3" || extension == "m4a" || extension == "aif" || extension == "aiff") return false;
    const SndFile file(path);
    if (!file.isOpen() || file.sampleRate() != rate) return false;
    const int in = file.channels();
    return in == channels || (in == 1 && channels == 2) || (in == 2 && channels == 1);
}

int64_t LaneStream::frames() const {
    int64_t total = 0;
    for (const LanePiece& piece : pieces_) {
        const int64_t shaped = shapedFrames(piece);
        total += shaped + (piece.envelope && shaped > 0 ? 1 : 0);
    }
    return total;
}

int64_t LaneStream::shapedFrames(const LanePiece& piece) const {
    return piece.padFrames + piece.bodyFrames;
}

void LaneStream::rewind() {
    current_ = 0;
    open_ = false;
    source_.reset();
}

void LaneStream::openPiece() {
    const LanePiece& piece = pieces_[current_];
    open_ = true;
    shapedPos_ = 0;
    std::fill(lastFrame_.begin(), lastFrame_.end(), 0.0f);
    source_.reset();
    if (!piece.path.isEmpty()) {
        source_ = std::make_unique<SndFile>(piece.path);
        const int64_t length = source_->frames();
        sourcePos_ = piece.loop && length > 0 ? piece.startFrame % length : piece.startFrame;
        if (!source_->isOpen() || !source_->seek(sourcePos_)) source_.reset();
    }
    floatSource_ =
        source_ && (source_->subFormat() == SF_FORMAT_FLOAT || source_->subFormat() == SF_FORMAT_DOUBLE);
    spans_.clear();
    span_ = 0;
    tailOwed_ = false;
    if (!piece.envelope) return;
    // The envelope of the piece's padded file: ramps between the points, then its last frame again.
    const int64_t count = shapedFrames(piece);
    const auto list = AUAudioConvolution::envelopePoints(*piece.envelope, static_cast<double>(count) / rate_);
    for (size_t i = 0; i + 1 < list.size(); ++i) {
        const int64_t first = AUAudioConvolution::timeToSample(list[i].time, rate_);
        const int64_t last = std::min(AUAudioConvolution::timeToSample(list[i + 1].time, rate_), count);
        if (first < 0 || last <= first) continue;
        const auto g0 = static_cast<float>(aUt_dbToDouble(list[i].db));
        const auto g1 = static_cast<float>(aUt_dbToDouble(list[i + 1].db));
        spans_.push_back(
            {first, last, g0, (static_cast<double>(g1) - g0) / static_cast<double>(last - first)});
    }
    tailOwed_ = count > 0;
    tailMultiplier_ = aUt_dbToDouble(list.back().db);
}

int64_t LaneStream::read(float* out, int64_t frames) {
    int64_t done = 0;
    while (done < frames && current_ < pieces_.size()) {
        if (!open_) openPiece();
        const int64_t got = readPiece(out + done * channels_, frames - done);
        if (got > 0) {
            done += got;
            continue;
        }
        open_ = false;
        source_.reset();
        ++current_;
    }
    return done;
}

int64_t LaneStream::readPiece(float* out, int64_t frames) {
    if (!pieces_[current_].envelope) return readShaped(out, frames);
    int64_t done = 0;
    while (done < frames && span_ < spans_.size()) {
        const Span& span = spans_[span_];
        skipShapedTo(span.first);
        if (shapedPos_ >= span.last) {
            ++span_;
            continue;
        }
        const int64_t from = shapedPos_;
        const int64_t got = readShaped(out + done * channels_, std::min(frames - done, span.last - from));
        for (int64_t f = 0; f < got; ++f) {
            const double multiplier = span.g0 + span.step * static_cast<double>(from + f - span.first);
            float* frame = out + (done + f) * channels_;
            for (int c = 0; c < channels_; ++c)
                frame[c] = clip16(static_cast<float>(frame[c] * multiplier));
        }
        if (got == 0) ++span_;
        done += got;
    }
    if (done < frames && span_ >= spans_.size() && tailOwed_) {
        skipShapedTo(shapedFrames(pieces_[current_]));
        float* frame = out + done * channels_;
        for (int c = 0; c < channels_; ++c)
            frame[c] = clip16(static_cast<float>(lastFrame_[static_cast<size_t>(c)] * tailMultiplier_));
        tailOwed_ = false;
        ++done;
    }
    return done;
}

void LaneStream::skipShapedTo(int64_t position) {
    std::vector<float> discard;
    while (shapedPos_ < position) {
        discard.resize(static_cast<size_t>(kChunk * channels_));
        if (readShaped(discard.data(), std::min(kChunk, position - shapedPos_)) == 0) return;
    }
}

int64_t LaneStream::readShaped(float* out, int64_t frames) {
    const LanePiece& piece = pieces_[current_];
    const int64_t want = std::min(frames, shapedFrames(piece) - shapedPos_);
    if (want <= 0) return 0;
    int64_t done = 0;
    if (shapedPos_ < piece.padFrames) {
        done = std::min(want, piece.padFrames - shapedPos_);
        std::fill(out, out + done * channels_, 0.0f);
        shapedPos_ += done;
    }
    if (done < want) done += readBody(out + done * channels_, want - done);
    std::copy(out + (want - 1) * channels_, out + want * channels_, lastFrame_.begin());
    return want;
}

int64_t LaneStream::readBody(float* out, int64_t frames) {
    const LanePiece& piece = pieces_[current_];
    const int64_t total = shapedFrames(piece);
    int64_t done = 0;
    while (done < frames && source_) {
        if (piece.loop && sourcePos_ >= source_->frames()) {
            if (!source_->seek(0)) break;
            sourcePos_ = 0;
        }
        const int64_t wanted = std::min(frames - done, kChunk);
        scratch_.resize(static_cast<size_t>(wanted * source_->channels()));
        const int64_t got = source_->readFrames(scratch_.data(), wanted);
        if (got <= 0) break;
        mapChannels(scratch_.data(), source_->channels(), out + done * channels_, channels_, got);
        sourcePos_ += got;
        done += got;
    }
    // A source that ends early leaves silence, so the lane keeps its time.
    std::fill(out + done * channels_, out + frames * channels_, 0.0f);
    // Integer sources at unity gain are within full scale already: only a fade has work to do.
    const int64_t fadeFrom = piece.fadeOutFrames > 0 ? total - piece.fadeOutFrames : total;
    const int64_t first =
        piece.gain != 1.0 || floatSource_ ? 0 : std::clamp<int64_t>(fadeFrom - shapedPos_, 0, frames);
    for (int64_t f = first; f < frames; ++f) {
        const int64_t position = shapedPos_ + f;
        double multiplier = piece.gain;
        if (piece.fadeOutFrames > 0 && position >= total - piece.fadeOutFrames)
            multiplier *= fadeOutGain(total - position, piece.fadeOutFrames);
        float* frame = out + f * channels_;
        for (int c = 0; c < channels_; ++c)
            frame[c] = clip16(static_cast<float>(std::clamp(frame[c], -1.0f, 1.0f) * multiplier));
    }
    shapedPos_ += frames;
    return frames;
}
