#pragma once
// Hesitations on an asset: the "Probable Uhm" marker pass and the learning of a selection into the
// show's UhmDB. The analyses read the whole file; run them off the main thread. Markers and the
// database are changed on the main thread only.

#include <QString>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class AEAsset;
class UhmDB;

inline const QString kProbableUhmNotes = "Probable Uhm";

struct UhmMarkerSpan {
    double inTime = 0.0;
    double outTime = 0.0;
};

// Any thread. The steady stretches of the file as marker spans, narrowed to (start + interval,
// end − 2 × interval) so that each lies inside the held sound; too short ones are dropped.
std::vector<UhmMarkerSpan> uhm_probableUhmSpans(const QString& path, std::shared_ptr<UhmDB> db,
                                                double analysisInterval, double minimumLength,
                                                float threshold);
// Main thread: one hesitation marker for each span.
void uhm_addMarkers(AEAsset& asset, const std::vector<UhmMarkerSpan>& spans);
// Main thread, returns at once: the analysis of the asset's own copy (or its original) on the pool,
// then its markers added and `done` told how many, on the main thread.
void uhmAnalysis(const std::shared_ptr<AEAsset>& asset, double analysisInterval, double minimumLength,
                 float threshold, std::function<void(int added)> done = {});

// Main thread, returns at once: the spectrum of a stretch of the asset (asset time) joins the show's
// database, which is saved; `done` hears false when the file gave no spectrum there.
void addSelectionToUhmDB(const std::shared_ptr<AEAsset>& asset, double startTime, double endTime,
                         std::function<void(bool added)> done = {});
