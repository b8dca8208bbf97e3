#pragma once
// Clusters: spans of a source rebuilt as separate files with their leading silence, and the noise
// gate that puts a speech file back together from its clusters. Blocking; run off the main thread.

#include "render/tools/Cluster.h"

#include <QString>
#include <memory>
#include <optional>
#include <vector>

class Prog;

// The span startSec...endSec of the source with fades, normalized and with gain (bound to -40...20
// dB, 0 for none) on request, preceded by silenceDuration seconds of silence (none up to 0.01 s).
// MP3, M4A and AIFF sources are first decoded to a stereo 16-bit WAV beside them, which stays there as
// a cache. A missing source raises the "SHX ERROR" alert and leaves no destination.
void soxUt_createCluster(const QString& srcFilePath, double silenceDuration, double startSec, double endSec,
                         double fadeInSecs, double fadeOutSecs, const QString& dstFilePath, bool normalize,
                         double gain, std::optional<int> frequency = std::nullopt,
                         std::optional<int> nChannels = std::nullopt,
                         std::optional<int> bitsPerSample = std::nullopt);

// A looping music span in one sound-tool run: `length` seconds from startSec, the source repeated
// `repeats` times to cover them, then gain, leading silence and a fade-out over its last fadeOutSecs.
// The same sound as clusters of each pass concatenated, without a file per pass.
void soxUt_createLoopCluster(const QString& srcFilePath, double silenceDuration, double startSec,
                             double length, int repeats, double fadeOutSecs, const QString& dstFilePath,
                             double gain, std::optional<int> frequency, std::optional<int> nChannels,
                             std::optional<int> bitsPerSample);

// The source with everything outside the clusters turned to silence, each cluster faded in and out.
// With removePauses no gap is longer than pauseMaxLength. An empty list copies the source. prog may be
// null.
void soxUt_clusterGate(const QString& srcFilePath, const QString& dstFilePath, double fadeInTime,
                       double fadeOutTime, bool removePauses, double pauseMaxLength,
                       const std::vector<cluster>& clusters, bool normalizeEachCluster,
                       const std::shared_ptr<Prog>& prog);
