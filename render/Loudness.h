#pragma once
// Loudness of a finished mix per ITU-R BS.1770 / EBU R128, measured by libebur128, and the export's
// loudness settings. Normalising is one gain to the target followed by ffmpeg's `alimiter`, run at
// four times the rate so that it holds true peaks and not only sample peaks.
//
// Measuring streams the file in blocks and may run on any thread; the settings live in the
// preferences ("Export.normaliseLoudnessMp3", "Export.normaliseLoudnessWav",
// "Export.loudnessTargetStereo", "Export.loudnessTargetMono", "Export.truePeakCeiling").

#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <optional>

struct LoudnessMeasure {
    double integrated = 0; // LUFS
    double range = 0;      // LU
    double truePeak = 0;   // dBTP, the highest of the channels
    double seconds = 0;
};

struct LoudnessSettings {
    bool normalise = true;
    double target = -16.0;         // LUFS
    double truePeakCeiling = -1.0; // dBTP
};

// Off by default for WAV, on for MP3; -16 LUFS stereo, -19 mono; -1.0 dBTP.
LoudnessSettings loudness_defaults(bool mp3, int channels);
// The defaults overridden by what the person stored.
LoudnessSettings loudness_settings(bool mp3, int channels);
void loudness_saveSettings(bool mp3, int channels, const LoudnessSettings& settings);

// Nothing when the file cannot be read or holds no sound; integrated is -inf (as libebur128 says)
// for digital silence.
std::optional<LoudnessMeasure> loudness_measure(const QString& path);

// A measurement fed block by block, for a mix that is streamed rather than written.
class LoudnessMeter {
public:
    // Without `full` only the integrated loudness is measured, at a fraction of the cost: no range,
    // no true peak (both 0).
    LoudnessMeter(int rate, int channels, bool full = true);
    ~LoudnessMeter();
    LoudnessMeter(const LoudnessMeter&) = delete;
    LoudnessMeter& operator=(const LoudnessMeter&) = delete;
    void add(const float* interleaved, int64_t frames);
    void add(const int16_t* interleaved, int64_t frames);
    // Nothing when no frame came or the meter could not be made.
    std::optional<LoudnessMeasure> result() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

// The gain, in dB, that brings `measured` to `target`; 0 for silence.
double loudness_gainTo(const LoudnessMeasure& measured, double target);

// The ffmpeg filter chain: the gain, then the limiter at the ceiling (true peak, by 4× oversampling),
// back at `rate`.
QString loudness_filter(double gainDb, double truePeakCeiling, int rate);
// ffmpeg arguments that normalise 16-bit frames from standard input into a 16-bit WAV dst.
QStringList loudness_normalisePipeArgs(int channels, const QString& dst, double gainDb,
                                       double truePeakCeiling, int rate);
// ffmpeg arguments that normalise src into a 16-bit WAV dst.
QStringList loudness_normaliseArgs(const QString& src, const QString& dst, double gainDb,
                                   double truePeakCeiling, int rate);
// Whether a measured file meets the settings: target ±0.5 LU, true peak at most the ceiling + 0.1 dB.
bool loudness_meets(const LoudnessMeasure& measured, const LoudnessSettings& settings);
