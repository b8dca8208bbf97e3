// Auto-ducking costs. The analysis of an hour of speech from its summary (1.08 M values) against one
// plain pass over the same values; the ducking job for a 2-hour episode of 200 speech items under one
// music item, split into its main-thread share (snapshot + apply, which includes the repair pass that
// rebuilds the applied envelopes) and its background share (union of the speech, the points), against
// the undo snapshot (duplicate) every edit of that timeline already takes on the main thread.
#include "BenchMain.h"
#include "dsp/ArrayUtils.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDucking.h"
#include "project/model/AEBGMSettings.h"
#include "timeline/model/AEDucking.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <random>

namespace {

// An hour at 300 values a second: stretches of 2-8 s of speech (around −12 dBFS) and 0.3-2 s of pause.
const std::vector<float>& hourOfSpeech() {
    static const std::vector<float> summary = [] {
        std::mt19937 rng(7);
        std::vector<float> v;
        v.reserve(3600 * 300);
        bool talking = true;
        while (v.size() < 3600 * 300) {
            const double seconds = talking ? std::uniform_real_distribution<double>(2, 8)(rng)
                                           : std::uniform_real_distribution<double>(0.3, 2)(rng);
            for (int n = 0; n < static_cast<int>(seconds * 300) && v.size() < 3600 * 300; ++n)
                v.push_back(talking ? 8000.0f + static_cast<float>(rng() % 4000) : 30.0f);
            talking = !talking;
        }
        return v;
    }();
    return summary;
}

void BM_BaselineSummaryPass(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(ArrayUtils::sum(hourOfSpeech()));
}
BENCHMARK(BM_BaselineSummaryPass)->Unit(benchmark::kMillisecond);

void BM_AnalysisHourOfSpeech(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(AEAssetDucking::analyse(hourOfSpeech(), -25.0f));
}
BENCHMARK(BM_AnalysisHourOfSpeech)->Unit(benchmark::kMillisecond);

// 200 items of 36 s, each its own asset with the analysis of a 36 s slice of the hour.
struct Episode {
    std::shared_ptr<AETimeLine> tl = AETimeLine::make("bench");
    AETimeLine::Item bed;
    Episode() {
        const auto& hour = hourOfSpeech();
        for (int n = 0; n < 200; ++n) {
            auto a = AEAsset::makePlaceholder();
            a->id = "speech" + QString::number(n);
            a->duration = 36;
            a->assetDucking = AEAssetDucking::make(a->id, nullptr);
            const auto slice = std::span(hour).subspan(static_cast<size_t>(n % 100) * 36 * 300, 36 * 300);
            a->assetDucking->setDuckingClusters(AEAssetDucking::analyse(slice, -25.0f));
            tl->appendItemInMainLane(a, std::nullopt, false);
        }
        auto music = AEAsset::makePlaceholder();
        music->type = AEAssetType::bgm;
        music->duration = 7200;
        music->bgmSettings = std::make_shared<AEBGMSettings>(true, 5.0, false);
        bed = tl->attachItem(music, -1, 0, std::nullopt, false, false);
    }
};

Episode& episode() {
    static Episode e;
    return e;
}

void BM_BaselineUndoSnapshot(benchmark::State& state) {
    auto& e = episode();
    for (auto _ : state)
        benchmark::DoNotOptimize(e.tl->duplicate());
}
BENCHMARK(BM_BaselineUndoSnapshot)->Unit(benchmark::kMillisecond);

void BM_DuckJobBackground(benchmark::State& state) {
    auto& e = episode();
    for (auto _ : state) {
        state.PauseTiming();
        AEDuckingJob job = AEDucking::snapshot(e.bed, *e.tl);
        state.ResumeTiming();
        AEDucking::compute(job);
    }
}
BENCHMARK(BM_DuckJobBackground)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_DuckJobMainThread(benchmark::State& state) {
    auto& e = episode();
    for (auto _ : state) {
        AEDuckingJob job = AEDucking::snapshot(e.bed, *e.tl);
        state.PauseTiming();
        AEDucking::compute(job);
        state.ResumeTiming();
        AEDucking::apply(job);
    }
    state.counters["points"] = static_cast<double>(e.bed->volumeKFs->keyframes.size());
}
BENCHMARK(BM_DuckJobMainThread)->Unit(benchmark::kMillisecond)->Iterations(20);

} // namespace

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv);
}
