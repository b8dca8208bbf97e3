#pragma once
// Cutting, joining and level changes of whole files with SoX. Each call replaces its destination and
// blocks until done; failures leave no destination (or an empty one) and are not reported.

#include <QString>
#include <QStringList>
#include <optional>

// The span inPoint...outPoint in seconds.
void soxUt_trim(const QString& srcFilePath, double inPoint, double outPoint, const QString& dstFilePath);
// Digital silence, 32-bit; 44100 Hz, 2 channels and 1.0 s when not given.
void soxUt_generateSilence(const QString& dstPath, std::optional<int> frequency = std::nullopt,
                           std::optional<int> channels = std::nullopt,
                           std::optional<double> duration = std::nullopt);
// Puts `seconds` of silence in front. MP3, M4A and AAC sources go through a mono 16-bit WAV beside
// them, removed afterwards.
void soxUt_pad(const QString& srcFilePath, const QString& dstFilePath, double seconds);
// One after the other; missing sources are skipped and with none there is no run. The sources must
// share rate and channel count (the format flags apply to the output only).
void soxUt_concatenate(const QStringList& srcPathList, const QString& dstPath,
                       std::optional<int> frequency = std::nullopt,
                       std::optional<int> nChannels = std::nullopt,
                       std::optional<int> bitsPerSample = std::nullopt, double fadeInSecs = 0.0,
                       double fadeOutSecs = 0.0);
// Sums the sources (SoX needs at least two). removePauses shortens every pause longer than `length`
// seconds under `threshold` dB to that length.
void soxUt_mixdown(const QStringList& srcPathList, const QString& dstPath, bool removePauses = false,
                   double length = 0.25, double threshold = -25.0,
                   std::optional<int> nChannels = std::nullopt, std::optional<int> frequency = std::nullopt);
// Pauses under dBThreshold longer than `length` seconds are cut down to `length`.
void soxUt_removePauses(const QString& srcFilePath, const QString& dstFilePath, double length,
                        double dBThreshold);
// dB; negative lowers.
void soxUt_gain(const QString& srcPath, const QString& dstPath, double gain);
// Cuts at every pause of at least silenceDuration seconds; the pieces are numbered files beside the
// source ("<name>_part001.<ext>", ...), returned in order.
QStringList soxUt_splitAtSilence(const QString& srcPath, double silenceDuration);
