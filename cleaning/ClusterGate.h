#pragma once
// The noise gate of the cleaning chain: the speech passages of a file found by ClusterAnalysis, then the
// file rebuilt from them with true silence between. Blocking; run off the main thread. prog may be null.

#include "render/tools/Cluster.h"

#include <QString>
#include <memory>
#include <vector>

class Prog;

// Seconds and dB as in BWGateSettings. Always returns a list: unreadable audio gives an empty one.
std::vector<cluster> getClusterListByWavePath(const QString& path, double threshold, double decay,
                                              double minDuration, double fadeInDuration,
                                              double fadeOutDuration, bool noisyEnironment,
                                              double environmentNoiseLevel, double hysteresis, double preRoll,
                                              bool isForSync, const std::shared_ptr<Prog>& prog);

void performClusterGate(const QString& srcFilePath, const QString& dstFilePath, double threshold,
                        double decay, double minDuration, double fadeInDuration, double fadeOutDuration,
                        bool removePauses, double pauseMaxLength, bool noisyEnironment,
                        double environmentNoiseLevel, double hysteresis, bool normalizeEachCluster,
                        double preRoll, const std::shared_ptr<Prog>& prog);
