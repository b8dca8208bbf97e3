#include "render/Loudness.h"

#include "dsp/SndFile.h"
#include "foundation/Prefs.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFilePaths.h"

#include <cmath>
#include <ebur128.h>
#include <memory>
#include <vector>

namespace {

QString kindKey(bool mp3) {
    return mp3 ? "Export.normaliseLoudnessMp3" : "Export.normaliseLoudnessWav";
}

QString targetKey(int channels) {
    return channels == 1 ? "Export.loudnessTargetMono" : "Export.loudnessTargetStereo";
}

const QString kCeilingKey = "Export.truePeakCeiling";

struct MeterCloser {
    void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

// The limiter sees the signal at this multiple of its rate, where inter-sample peaks have become samples.
constexpr int kOversampling = 4;

} // namespace

LoudnessSettings loudness_defaults(bool mp3, int channels) {
    LoudnessSettings settings;
    settings.normalise = mp3;
    settings.target = channels == 1 ? -19.0 : -16.0;
    settings.truePeakCeiling = -1.0;
    return settings;
}

LoudnessSettings loudness_settings(bool mp3, int channels) {
    LoudnessSettings settings = loudness_defaults(mp3, channels);
    settings.normalise = prefs_getValueBool(kindKey(mp3), settings.normalise);
    settings.target = prefs_getValueDouble(targetKey(channels), settings.target);
    settings.truePeakCeiling = prefs_getValueDouble(kCeilingKey, settings.truePeakCeiling);
    return settings;
}

void loudness_saveSettings(bool mp3, int channels, const LoudnessSettings& settings) {
    prefs_setValueBool(kindKey(mp3), settings.normalise);
    prefs_setValueDouble(targetKey(channels), settings.target);
    prefs_setValueDouble(kCeilingKey, settings.truePeakCeiling);
}

struct LoudnessMeter::State {
    std::unique_ptr<ebur128_state, MeterCloser> meter;
    unsigned channels = 0;
    int rate = 0;
    int64_t frames = 0;
    bool full = true;
};

LoudnessMeter::LoudnessMeter(int rate, int channels, bool full) : state_(std::make_unique<State>()) {
    if (rate < 1 || channels < 1) return;
    state_->channels = static_cast<unsigned>(channels);
    state_->rate = rate;
    // A mono file is heard on both speakers: BS.1770 counts it as one channel, which is why the mono
    // target is 3 dB lower.
    state_->full = full;
    state_->meter.reset(
        ebur128_init(state_->channels, static_cast<unsigned long>(rate),
                     full ? EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK : EBUR128_MODE_I));
}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::add(const float* interleaved, int64_t frames) {
    if (!state_->meter || frames <= 0) return;
    ebur128_add_frames_float(state_->meter.get(), interleaved, static_cast<size_t>(frames));
    state_->frames += frames;
}

void LoudnessMeter::add(const int16_t* interleaved, int64_t frames) {
    if (!state_->meter || frames <= 0) return;
    ebur128_add_frames_short(state_->meter.get(), interleaved, static_cast<size_t>(frames));
    state_->frames += frames;
}

std::optional<LoudnessMeasure> LoudnessMeter::result() const {
    if (!state_->meter || state_->frames == 0) return std::nullopt;
    ebur128_state* meter = state_->meter.get();
    LoudnessMeasure out;
    ebur128_loudness_global(meter, &out.integrated);
    out.seconds = static_cast<double>(state_->frames) / state_->rate;
    if (!state_->full) return out;
    ebur128_loudness_range(meter, &out.range);
    double peak = 0;
    for (unsigned c = 0; c < state_->channels; ++c) {
        double channelPeak = 0;
        ebur128_true_peak(meter, c, &channelPeak);
        peak = std::max(peak, channelPeak);
    }
    out.truePeak = peak > 0 ? 20.0 * std::log10(peak) : -INFINITY;
    return out;
}

std::optional<LoudnessMeasure> loudness_measure(const QString& path) {
    SndFile file(path);
    if (!file.isOpen() || file.channels() < 1 || file.sampleRate() < 1) return std::nullopt;
    LoudnessMeter meter(file.sampleRate(), file.channels());
    constexpr int64_t kBlock = 65536;
    std::vector<float> buffer(static_cast<size_t>(kBlock * file.channels()));
    for (;;) {
        const int64_t got = file.readFrames(buffer.data(), kBlock);
        if (got <= 0) break;
        meter.add(buffer.data(), got);
    }
    return meter.result();
}

double loudness_gainTo(const LoudnessMeasure& measured, double target) {
    return std::isfinite(measured.integrated) ? target - measured.integrated : 0.0;
}

QString loudness_filter(double gainDb, double truePeakCeiling, int rate) {
    const double limit = std::pow(10.0, truePeakCeiling / 20.0);
    // level=disabled: alimiter would otherwise lift its output back up to the limit.
    return QString("volume=%1dB,aresample=%2,alimiter=limit=%3:attack=5:release=50:level=disabled,"
                   "aresample=%4")
        .arg(gainDb, 0, 'f', 3)
        .arg(rate * kOversampling)
        .arg(limit, 0, 'f', 6)
        .arg(rate);
}

QStringList loudness_normalisePipeArgs(int channels, const QString& dst, double gainDb,
                                       double truePeakCeiling, int rate) {
    return QStringList{"-y", "-loglevel", "error"} + ffArgs::rawPcmInput(rate, channels) +
           QStringList{"-af", loudness_filter(gainDb, truePeakCeiling, rate), "-c:a", "pcm_s16le",
                       toolFilePaths::forTool(dst)};
}

QStringList loudness_normaliseArgs(const QString& src, const QString& dst, double gainDb,
                                   double truePeakCeiling, int rate) {
    return {"-y",
            "-nostdin",
            "-loglevel",
            "error",
            "-i",
            toolFilePaths::forTool(src),
            "-af",
            loudness_filter(gainDb, truePeakCeiling, rate),
            "-c:a",
            "pcm_s16le",
            toolFilePaths::forTool(dst)};
}

bool loudness_meets(const LoudnessMeasure& measured, const LoudnessSettings& settings) {
    return std::fabs(measured.integrated - settings.target) <= 0.5 &&
           measured.truePeak <= settings.truePeakCeiling + 0.1;
}
