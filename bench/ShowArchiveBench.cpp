// Load and save of a show with 1,000 episodes and 2,000 common-asset ids.
#include "foundation/FileUtils.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

struct Fixture {
    QTemporaryDir dir;
    QString path;
    std::shared_ptr<AEShow> show = std::make_shared<AEShow>("Bench Show");

    Fixture() {
        AEIngest::workFolder = dir.path() + "/";
        AEIngest ingest(dir.path() + "/AssetIngests");
        path = AEIngest::workFolder + "show.AEShow";
        for (int i = 0; i < 1000; ++i) {
            auto e = std::make_shared<AEEpisode>(QString("E%1").arg(i), QString("Episode number %1").arg(i),
                                                 "", AEIngest::workFolder);
            e->notes = QString("Notes of episode %1, a few words long as show notes tend to be.").arg(i);
            e->duration = 1800.0 + i;
            e->assetIDs = {QString("%1").arg(i, 32, 16, QChar('0'))};
            show->episodes.push_back(e);
        }
        // Records without media: what is measured is the show, not audio probing.
        for (int i = 0; i < 2000; ++i) {
            AEAsset::Args args;
            args.ingest = false;
            args.generateSubsamples = false;
            auto asset = AEAsset::make(args);
            asset->id = QString("%1").arg(i, 32, 16, QChar('a'));
            AEAssetDB::saveAsset(asset);
            show->commonAssets.push_back(asset);
        }
        show->save(path);
    }
};

Fixture& fixture() {
    static Fixture f;
    return f;
}

void BM_ShowSave(benchmark::State& state) {
    auto& f = fixture();
    for (auto _ : state)
        benchmark::DoNotOptimize(f.show->save(f.path));
    state.counters["archive_bytes"] = static_cast<double>(fu_getFileSize(f.path));
}
BENCHMARK(BM_ShowSave)->Unit(benchmark::kMillisecond);

void BM_ShowLoad(benchmark::State& state) {
    auto& f = fixture();
    for (auto _ : state) {
        auto show = AEShow::load(f.path);
        if (show->episodes.size() != 1000) state.SkipWithError("show did not load whole");
    }
}
BENCHMARK(BM_ShowLoad)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
