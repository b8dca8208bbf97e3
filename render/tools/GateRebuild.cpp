#include "render/tools/GateRebuild.h"

#include "foundation/FileUtils.h"
#include "foundation/Log.h"

#include <QFile>
#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>
#include <sndfile.h>

namespace {

struct SndCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SndHandle = std::unique_ptr<SNDFILE, SndCloser>;

constexpr int64_t kBlockFrames = 1 << 15;

int64_t framesAt(double seconds, int rate) {
    return std::max<int64_t>(0, std::llround(seconds * rate));
}

bool writeSilence(SNDFILE* out, int64_t frames, int channels) {
    std::vector<int> zeros(static_cast<size_t>(std::min(frames, kBlockFrames) * channels), 0);
    while (frames > 0) {
        const int64_t n = std::min(frames, kBlockFrames);
        if (sf_writef_int(out, zeros.data(), n) != n) return false;
        frames -= n;
    }
    return true;
}

// Gain of the sound tool's default (logarithmic) fade at `done` of `length` samples: 100 dB down at the
// far end.
double gateFadeGain(int64_t done, int64_t length) {
    if (length <= 0) return 1.0;
    const double x = static_cast<double>(done) / static_cast<double>(length);
    return std::pow(0.1, (1.0 - x) * 5.0);
}

// One cluster read block by block (a passage may be hours long), gains given per frame.
// Samples travel as 32-bit integers: a 16- or 24-bit source goes through unchanged where no gain
// touches it.
class SpanPass {
public:
    SpanPass(SNDFILE* in, int channels, int64_t from, int64_t length, int64_t fadeIn, int64_t fadeOut)
        : in_(in), from_(from), length_(length), fadeIn_(fadeIn), fadeOut_(fadeOut),
          block_(static_cast<size_t>(std::min(length, kBlockFrames) * channels)) {}

    double fadeAt(int64_t f) const {
        double gain = f < fadeIn_ ? gateFadeGain(f, fadeIn_) : 1.0;
        if (f >= length_ - fadeOut_) gain *= gateFadeGain(length_ - f, fadeOut_);
        return gain;
    }

    // Calls each(block, frames, firstFrame) over the span; false on a short read.
    template <typename Each> bool run(Each&& each) {
        if (sf_seek(in_, from_, SEEK_SET) < 0) return false;
        for (int64_t done = 0; done < length_;) {
            const int64_t n = std::min(kBlockFrames, length_ - done);
            if (sf_readf_int(in_, block_.data(), n) != n) return false;
            if (!each(block_, n, done)) return false;
            done += n;
        }
        return true;
    }

private:
    SNDFILE* in_;
    int64_t from_, length_, fadeIn_, fadeOut_;
    std::vector<int> block_;
};

} // namespace

bool gateRebuild(const QString& src, const QString& dst, const std::vector<GateSpan>& spans,
                 bool normalizeEach, const std::function<void(int)>& written) {
    SF_INFO inInfo{};
    SndHandle in(sf_open(QFile::encodeName(src).constData(), SFM_READ, &inInfo));
    if (!in) {
        qxLog("gateRebuild: cannot read " + src);
        return false;
    }
    SF_INFO outInfo = inInfo;
    outInfo.frames = 0;
    outInfo.format = SF_FORMAT_WAV | (inInfo.format & SF_FORMAT_SUBMASK);
    if (!sf_format_check(&outInfo)) outInfo.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SndHandle out(sf_open(QFile::encodeName(dst).constData(), SFM_WRITE, &outInfo));
    if (!out) {
        qxLog("gateRebuild: cannot write " + dst);
        return false;
    }
    const int rate = inInfo.samplerate, channels = inInfo.channels;
    bool ok = true;
    for (size_t k = 0; k < spans.size() && ok; ++k) {
        const GateSpan& g = spans[k];
        const int64_t from = std::min(framesAt(g.span.inPoint, rate), inInfo.frames);
        const int64_t length = std::min(framesAt(g.span.endPoint, rate), inInfo.frames) - from;
        if (g.silenceBefore > 0.01) ok = writeSilence(out.get(), framesAt(g.silenceBefore, rate), channels);
        if (!ok || length <= 0) continue;
        SpanPass pass(in.get(), channels, from, length, std::min(framesAt(g.fadeIn, rate), length),
                      std::min(framesAt(g.fadeOut, rate), length));
        double scale = 1.0;
        if (normalizeEach) {
            double peak = 0;
            ok = pass.run([&](const std::vector<int>& block, int64_t n, int64_t first) {
                for (int64_t f = 0; f < n; ++f)
                    for (int c = 0; c < channels; ++c)
                        peak = std::max(peak, std::fabs(block[static_cast<size_t>(f * channels + c)] *
                                                        pass.fadeAt(first + f)));
                return true;
            });
            if (peak > 0) scale = INT_MAX / peak;
        }
        ok = ok && pass.run([&](std::vector<int>& block, int64_t n, int64_t first) {
            for (int64_t f = 0; f < n; ++f) {
                const double gain = pass.fadeAt(first + f) * scale;
                if (gain == 1.0) continue;
                for (int c = 0; c < channels; ++c) {
                    int& s = block[static_cast<size_t>(f * channels + c)];
                    s = static_cast<int>(std::clamp(std::round(s * gain), double(INT_MIN), double(INT_MAX)));
                }
            }
            return sf_writef_int(out.get(), block.data(), n) == n;
        });
        if (written) written(static_cast<int>(k + 1));
    }
    out.reset();
    if (!ok) {
        qxLog("gateRebuild: failed writing " + dst);
        fu_deleteFile(dst);
    }
    return ok;
}
