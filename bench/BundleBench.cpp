// Episode bundles against the distribution's zip and unzip of the same media: an episode of four
// speech-like WAV files, about 1 GB in all (ZENDREL_BUNDLE_BENCH_MB overrides the size), made here and
// deleted at the end. Which side goes first alternates round by round, and the fastest round of each
// counts; the ratios printed at the end are our time / the tool's time (1.0 = as fast).
#include "BenchMain.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "timeline/model/AETimeLine.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <chrono>
#include <cstdio>
#include <functional>
#include <map>

namespace {

constexpr int kFiles = 4;

struct Scene {
    QTemporaryDir dir{QDir::tempPath() + "/zendrel-bundle-bench-XXXXXX"};
    QString work;
    QStringList media;
    std::shared_ptr<AEEpisode> episode;
    std::map<std::string, double> best;
    int round = 0;
    double roundTotal = 0;

    Scene() {
        work = dir.path() + "/work/";
        AEIngest::workFolder = work;
        AEIngest ingest(work + "AssetIngests");
        zendrelShow = std::make_shared<AEShow>("Bench Show");
        const int megabytes = qEnvironmentVariableIntValue("ZENDREL_BUNDLE_BENCH_MB") > 0
                                  ? qEnvironmentVariableIntValue("ZENDREL_BUNDLE_BENCH_MB")
                                  : 1024;
        // 44.1 kHz stereo 16-bit: 176,400 bytes a second.
        const double seconds = megabytes * 1048576.0 / kFiles / 176400.0;
        episode = std::make_shared<AEEpisode>("E01", "Bench", "", work);
        for (int i = 0; i < kFiles; ++i) {
            // Brown noise shaped like speech in level: it deflates about as poorly as speech does.
            const QString file = AEIngest::ingestPath + QString("take%1.wav").arg(i);
            runTool("/usr/bin/sox",
                    {"-n", "-r", "44100", "-c", "2", "-b", "16", file, "synth", QString::number(seconds),
                     "brownnoise", "tremolo", "3", "60", "gain", "-6"});
            media << file;
            auto asset = AEAsset::makePlaceholder();
            asset->id = QString("bench%1").arg(i);
            asset->name = QFileInfo(file).completeBaseName();
            asset->originalFilePath = file;
            asset->ingestedFilePath = file;
            asset->ingested = true;
            asset->duration = seconds;
            AEAssetDB::saveAsset(asset);
            episode->assets.push_back(asset);
            episode->timeline->appendItemInMainLane(asset, std::nullopt, false);
        }
        episode->assetsLoaded = true;
        zendrelShow->episodes.push_back(episode);
    }

    void record(benchmark::State& state, const std::string& name, double seconds) {
        state.counters[name] = seconds;
        roundTotal += seconds;
        if (!best.count(name) || seconds < best[name]) best[name] = seconds;
    }

    void printRatios() const {
        std::printf("\nBundle of %d files, %.0f MB of media; fastest of the rounds:\n", kFiles, mediaMB());
        for (const auto& [ours, tool] : {std::pair{"export", "zip"}, std::pair{"import", "unzip"}})
            if (best.count(ours) && best.count(tool))
                std::printf("  %-6s %6.2f s   %-5s %6.2f s   ratio %.2f\n", ours, best.at(ours), tool,
                            best.at(tool), best.at(ours) / best.at(tool));
    }

    double mediaMB() const {
        double bytes = 0;
        for (const QString& file : media)
            bytes += QFileInfo(file).size();
        return bytes / 1048576.0;
    }
};

Scene& scene() {
    static Scene s;
    return s;
}

double since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// One round of all four. The tool goes first in odd rounds and second in even ones, so that neither
// side always meets the page cache and write-back the other left.
void BM_BundleRound(benchmark::State& state) {
    Scene& s = scene();
    for (auto _ : state) {
        s.roundTotal = 0;
        const QString round = s.dir.path() + QString("/round%1/").arg(++s.round);
        const bool toolFirst = s.round % 2 == 1;
        QDir().mkpath(round + "unzipped");
        auto timed = [&](const std::string& name, const std::function<void()>& work) {
            const auto start = std::chrono::steady_clock::now();
            work();
            s.record(state, name, since(start));
        };
        auto zip = [&] {
            timed("zip", [&] {
                runTool("/usr/bin/zip", QStringList{"-q", "-j", "-X", round + "plain.zip"} + s.media);
            });
        };
        auto exportBundle = [&] {
            timed("export", [&] {
                const QString error = s.episode->exportEpisode(round + "E01.zendepisode");
                if (!error.isEmpty()) state.SkipWithError(qPrintable(error));
            });
        };
        auto unzip = [&] {
            timed("unzip", [&] {
                runTool("/usr/bin/unzip", {"-qq", "-o", round + "plain.zip", "-d", round + "unzipped"});
            });
        };
        auto importBundle = [&] {
            // Into a working folder of its own.
            AEIngest::workFolder = round + "elsewhere/";
            AEIngest ingest(round + "elsewhere/AssetIngests");
            timed("import", [&] {
                const AEEpisodeImport imported = AEEpisode::importEpisode(round + "E01.zendepisode");
                if (!imported.episode) state.SkipWithError(qPrintable(imported.error));
            });
            AEIngest::workFolder = s.work;
            AEIngest back(s.work + "AssetIngests");
        };
        if (toolFirst) {
            zip();
            exportBundle();
            unzip();
            importBundle();
        } else {
            exportBundle();
            zip();
            importBundle();
            unzip();
        }
        QDir(round).removeRecursively();
        state.SetIterationTime(s.roundTotal);
    }
}
BENCHMARK(BM_BundleRound)->Iterations(2)->UseManualTime()->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char** argv) {
    const int status = runBenchmarks(argc, argv);
    scene().printRatios();
    return status;
}
