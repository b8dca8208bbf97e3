#pragma once
// Class-level probes of an audio file, usable without any object; they answer as the aUt_ probes do.

#include "recording/QXAudioFileFormat.h"

#include <QString>
#include <cstdint>
#include <optional>

class QXAudioFile {
public:
    QXAudioFile() = delete;

    static double getDuration(const QString& path);
    static int getSampleRate(const QString& path);
    static int getFrequency(const QString& path);
    // From the extension alone.
    static std::optional<QXAudioFileFormat> getFormat(const QString& path);
    static int getBPS(const QString& path);
    static int getChannelCount(const QString& path);
    static int64_t timeToSampleN(double time, double sampleRate);
};
