#pragma once
// Finding the spoken passages ("clusters") of a speech file from its level alone: a two-threshold gate
// on 300-sample blocks with a hold from each opening, then filtering, expanding and merging of spans.
//
// A cluster array is a flat list of seconds in which a positive value (or zero) opens a span and a
// negative one closes it at its magnitude. All functions are pure and any thread may call them.

#include "cleaning/BrightwashSetting.h"
#include "dsp/SpeechLevels.h"
#include "render/tools/Cluster.h"

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

class Prog;

// The views getClusterArray reads: 300-sample block means, and the tenth-sample maxima for an automatic
// threshold.
SpeechLevels::Wanted clusterLevelsWanted();

std::vector<double> getClusterArray(const SpeechLevels& levels, double dbThreshold, bool isForSync,
                                    int32_t decayInSamples, int32_t samplesPerSecond, bool noisyEnviroment,
                                    double environmentNoiseLevel, double hysteresis,
                                    const std::shared_ptr<Prog>& prog);
// Keeps the spans of at least minDuration; when none is left, all of them.
std::vector<double> filterSpikes(const std::vector<double>& clusterArray, double minDuration);
// No result for an empty array. A leading close opens at 0; a trailing open closes at audioLength.
std::optional<std::vector<cluster>> getClusterList(const std::vector<double>& clusterArray,
                                                   double audioLength);
// Keeps clusters of at least minDuration; when none is left, retries with 90 % of it.
std::vector<cluster> filterClusterListByDuration(const std::vector<cluster>& clusterList, double minDuration);
std::vector<cluster> expandClusterList(const std::vector<cluster>& clusterList, double decay,
                                       double fadeInDuration, double fadeOutDuration, double preRoll);
// Touching or overlapping neighbours merge, the later one's end winning.
void correctOverlappingClusters(std::vector<cluster>& clusterList);
void mergeTwoConsecutiveClusters(std::vector<cluster>& clusterList, size_t index);
// The widest gap between two clusters as (start, end); (0, 0) with fewer than two.
std::pair<double, double> getLongestPause(const std::vector<cluster>& clusterList);

// The automatic threshold in dB, read from the shape of the level histogram.
double getThreshold(const SpeechLevels& levels, double baseThreshold, bool isForSync, bool noisyEnviroment);
double thresholdAnalysis(const SpeechLevels& levels, const BWGateAdvancedSettings& settings);
double weightedValue(double a, double wa, double b, double wb);

// The clusters as tagged text ("old" gives the plain "clusterStr: " / "clusterEnd: " lines); written to
// saveTo when it is not empty, else returned only.
QString printClusterList(const std::vector<cluster>& clusterList, const QString& resultType,
                         const QString& saveTo = {});
// The clusters of such a text; a value that does not parse ends the list.
std::vector<cluster> parseClusterText(const QString& clusterText);
