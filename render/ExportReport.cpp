#include "render/ExportReport.h"

#include "dsp/SndFile.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <cmath>

namespace {

// JSON has no infinities: the loudness of silence is written as null.
QJsonValue decibels(double value) {
    if (!std::isfinite(value)) return QJsonValue::Null;
    return std::round(value * 10.0) / 10.0;
}

QString decibelText(double value) {
    return std::isfinite(value) ? QString::number(value, 'f', 1) : QString("-inf");
}

} // namespace

QJsonObject ExportReport::toJson() const {
    return QJsonObject{{"path", path},
                       {"integratedLoudness", decibels(integratedLoudness)},
                       {"loudnessRange", decibels(loudnessRange)},
                       {"truePeak", decibels(truePeak)},
                       {"duration", std::round(duration * 1000.0) / 1000.0},
                       {"size", static_cast<double>(size)},
                       {"sampleRate", sampleRate},
                       {"channels", channels},
                       {"bitRate", bitRate},
                       {"chapterCount", chapterCount},
                       {"normalised", normalised},
                       {"gain", decibels(gain)},
                       {"target", decibels(target)},
                       {"truePeakCeiling", decibels(truePeakCeiling)},
                       {"targetMet", targetMet}};
}

QString ExportReport::toText() const {
    const int seconds = static_cast<int>(std::lround(duration));
    return QString("Loudness: %1 LUFS (target %2, %3)\n")
               .arg(decibelText(integratedLoudness), decibelText(target), targetMet ? "met" : "not met") +
           QString("Loudness range: %1 LU\nTrue peak: %2 dBTP (ceiling %3)\n")
               .arg(decibelText(loudnessRange), decibelText(truePeak), decibelText(truePeakCeiling)) +
           QString("Duration: %1:%2:%3\nSize: %4 MB\n")
               .arg(seconds / 3600)
               .arg(seconds / 60 % 60, 2, 10, QChar('0'))
               .arg(seconds % 60, 2, 10, QChar('0'))
               .arg(static_cast<double>(size) / 1e6, 0, 'f', 1) +
           QString("Format: %1 Hz, %2, %3 kbit/s\nChapters: %4")
               .arg(sampleRate)
               .arg(channels == 1   ? "mono"
                    : channels == 2 ? "stereo"
                                    : QString::number(channels) + " channels")
               .arg(bitRate)
               .arg(chapterCount);
}

bool ExportReport::write(const QString& jsonPath) const {
    QSaveFile file(jsonPath);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(QJsonDocument(toJson()).toJson(QJsonDocument::Indented));
    return file.commit();
}

std::optional<ExportReport> exportReport_read(const QString& path, int bitRate, int chapterCount,
                                              const LoudnessSettings& settings, bool normalised,
                                              double gain) {
    const auto measured = loudness_measure(path);
    if (!measured) return std::nullopt;
    ExportReport report;
    {
        SndFile file(path);
        report.sampleRate = file.sampleRate();
        report.channels = file.channels();
    }
    report.path = QFileInfo(path).absoluteFilePath();
    report.integratedLoudness = measured->integrated;
    report.loudnessRange = measured->range;
    report.truePeak = measured->truePeak;
    report.duration = measured->seconds;
    report.size = QFileInfo(path).size();
    report.bitRate = bitRate;
    report.chapterCount = chapterCount;
    report.normalised = normalised;
    report.gain = gain;
    report.target = settings.target;
    report.truePeakCeiling = settings.truePeakCeiling;
    report.targetMet = loudness_meets(*measured, settings);
    return report;
}
