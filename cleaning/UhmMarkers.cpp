#include "cleaning/UhmMarkers.h"

#include "cleaning/Uhm.h"
#include "cleaning/UhmDB.h"
#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEMarker.h"
#include "project/model/Globals.h"

namespace {

QString analysedPath(const AEAsset& asset) {
    return asset.ingested && fu_fileExists(asset.ingestedFilePath) ? asset.ingestedFilePath
                                                                   : asset.originalFilePath;
}

} // namespace

std::vector<UhmMarkerSpan> uhm_probableUhmSpans(const QString& path, std::shared_ptr<UhmDB> db,
                                                double analysisInterval, double minimumLength,
                                                float threshold) {
    Uhm uhm(path, std::move(db));
    uhm.analysisInterval = analysisInterval;
    uhm.minimumLength = minimumLength;
    uhm.threshold = threshold;
    uhm.analyze(1);
    std::vector<UhmMarkerSpan> spans;
    for (const UhmTimeInterval& i : uhm.getMinimumLengthMatchingIntervals()) {
        const double in = i.start + analysisInterval;
        const double out = i.end - 2.0 * analysisInterval;
        if (out > in) spans.push_back({in, out});
    }
    return spans;
}

void uhm_addMarkers(AEAsset& asset, const std::vector<UhmMarkerSpan>& spans) {
    for (const UhmMarkerSpan& s : spans)
        asset.markers.push_back(
            std::make_shared<AEMarker>(s.inTime, s.outTime, AEMarkerType::uhm, kProbableUhmNotes));
}

void uhmAnalysis(const std::shared_ptr<AEAsset>& asset, double analysisInterval, double minimumLength,
                 float threshold, std::function<void(int added)> done) {
    const QString path = analysedPath(*asset);
    qxLog("AEAsset.uhmAnalysis " + path);
    auto spans = std::make_shared<std::vector<UhmMarkerSpan>>();
    std::weak_ptr<AEAsset> weak = asset;
    XMain::queue(
        [spans, path, db = uhmDB, analysisInterval, minimumLength, threshold] {
            *spans = uhm_probableUhmSpans(path, db, analysisInterval, minimumLength, threshold);
        },
        [spans, weak, done] {
            const auto asset = weak.lock();
            if (asset) uhm_addMarkers(*asset, *spans);
            if (done) done(asset ? int(spans->size()) : 0);
        });
}

void addSelectionToUhmDB(const std::shared_ptr<AEAsset>& asset, double startTime, double endTime,
                         std::function<void(bool added)> done) {
    const std::shared_ptr<UhmDB> db = uhmDB;
    if (!db) {
        if (done) done(false);
        return;
    }
    const QString path = analysedPath(*asset);
    auto fingerprint = std::make_shared<std::vector<float>>();
    XMain::queue(
        [fingerprint, path, startTime, endTime] {
            Uhm uhm(path, nullptr);
            *fingerprint = uhm.getRangeFingerprint(startTime, endTime);
        },
        [fingerprint, db, done] {
            const bool added = !fingerprint->empty();
            if (added) {
                db->addFingerprint(UhmDB::normalizeFingerprint(*fingerprint));
                db->saveToFile();
            }
            if (done) done(added);
        });
}
