#pragma once
// What an export delivered, read back from the finished file: loudness as libebur128 measures it,
// the file's format and size, the chapters, and whether the loudness target was met. Shown in the
// "Done" alert and, on request, written as JSON beside the file. A plain value.

#include "render/Loudness.h"

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <optional>

struct ExportReport {
    QString path;
    double integratedLoudness = 0; // LUFS
    double loudnessRange = 0;      // LU
    double truePeak = 0;           // dBTP
    double duration = 0;           // seconds
    int64_t size = 0;              // bytes
    int sampleRate = 0;
    int channels = 0;
    int bitRate = 0; // kbit/s
    int chapterCount = 0;
    bool normalised = false;
    double gain = 0; // dB applied by the normalisation
    double target = 0;
    double truePeakCeiling = 0;
    bool targetMet = false;

    // Keys as the fields; numbers rounded to what a meter shows (0.1 dB, milliseconds).
    QJsonObject toJson() const;
    // A few lines for people: "Loudness: -16.0 LUFS (target -16.0, met)", ...
    QString toText() const;
    // Atomic; false when the file cannot be written.
    bool write(const QString& jsonPath) const;
};

// The report of the file at `path`; nothing when it cannot be read as sound.
std::optional<ExportReport> exportReport_read(const QString& path, int bitRate, int chapterCount,
                                              const LoudnessSettings& settings, bool normalised, double gain);
