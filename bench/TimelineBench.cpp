// Editing a two-hour episode: 500 main-lane clips (speech, jingles, silences summing to 7,200 s), 100
// attached items (effects above, music below), envelopes on a fifth of the clips and a few markers.
// Each edit is timed with the undo snapshot it takes in use; every iteration starts from a fresh
// copy of the same timeline, made outside the timed region.
//
// qxLog writes every line to standard output: run with stdout to /dev/null and the report in a
// file, e.g. TimelineBench >/dev/null --benchmark_out=timeline.txt --benchmark_out_format=console
#include "BenchMain.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEBGMSettings.h"
#include "project/model/AEIngest.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/SimpleRound.h"
#include "timeline/model/Undo.h"
#include "timeline/model/VirtualScroller.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <memory>
#include <vector>

namespace {

constexpr int kMainItems = 500;
constexpr double kEpisodeLength = 7200.0;
constexpr int kAttachedItems = 100;

std::shared_ptr<AEAsset> makeAsset(const QString& id, AEAssetType type, double duration,
                                   const QString& file = {}) {
    AEAsset::Args args;
    args.name = id;
    args.filePath = file;
    args.type = type;
    args.duration = duration;
    // Given properties spare the audio probes: the one short file behind these records only lets them in.
    args.fileSize = 1;
    args.frequency = 44100;
    args.nChannels = 1;
    args.bitDepth = 16;
    args.ingest = false;
    args.generateSubsamples = false;
    auto asset = AEAsset::make(args);
    if (type == AEAssetType::silence) return asset;
    asset->id = id;
    if (type == AEAssetType::bgm) asset->bgmSettings = std::make_shared<AEBGMSettings>(true, 5.0, false);
    AEAssetDB::saveAsset(asset);
    return asset;
}

// Clip lengths of a plausible episode: mostly speech of 5 to 30 s, a jingle every 25 clips, a short
// silence every 10, scaled so that they sum to the episode's length on the time grid.
std::vector<double> clipLengths() {
    std::vector<double> raw;
    double sum = 0;
    for (int n = 0; n < kMainItems; ++n) {
        const double length = n % 25 == 12 ? 8.0 : n % 10 == 5 ? 1.5 : 5.0 + (n * 37 % 26);
        raw.push_back(length);
        sum += length;
    }
    std::vector<double> lengths;
    double placed = 0;
    for (int n = 0; n < kMainItems - 1; ++n) {
        lengths.push_back(simpleRound(raw[static_cast<size_t>(n)] * kEpisodeLength / sum));
        placed += lengths.back();
    }
    lengths.push_back(kEpisodeLength - placed);
    return lengths;
}

struct Episode {
    QTemporaryDir dir;
    QString path;
    std::shared_ptr<AETimeLine> timeline;

    Episode() {
        AEIngest::workFolder = dir.path() + "/";
        AEIngest ingest(dir.path() + "/AssetIngests");
        path = AETimeLine::persistPath(dir.path() + "/", "bench");

        const QString file = dir.path() + "/short.wav";
        runTool("/usr/bin/sox", {"-n", "-r", "44100", "-c", "1", "-b", "16", file, "trim", "0", "0.1"});
        std::vector<std::shared_ptr<AEAsset>> speech;
        for (int n = 0; n < 8; ++n)
            speech.push_back(makeAsset("speech" + QString::number(n), AEAssetType::speech, 1800.0, file));
        const auto jingle = makeAsset("jingle", AEAssetType::jingle, 8.0, file);
        const auto silence = makeAsset("", AEAssetType::silence, 0);
        std::vector<std::shared_ptr<AEAsset>> effects;
        for (int n = 0; n < 6; ++n)
            effects.push_back(makeAsset("effect" + QString::number(n), AEAssetType::effect, 2.0 + n, file));
        const auto bed = makeAsset("bed", AEAssetType::bgm, 120.0, file);

        timeline = AETimeLine::make("bench");
        AETimeLine& tl = *timeline;
        tl.setView(1000, 400, QPointF(0, 0));
        tl.setInsetViewSize();
        tl.virtualScroller->setTotalRange(0, 100000);
        tl.setViewportRange(0, 100);

        const auto lengths = clipLengths();
        std::vector<double> readFrom(speech.size(), 0.0);
        for (int n = 0; n < kMainItems; ++n) {
            const double length = lengths[static_cast<size_t>(n)];
            if (n % 25 == 12) {
                tl.appendItemInMainLane(jingle, AETimeRange(0, length), false);
            } else if (n % 10 == 5) {
                tl.appendItemInMainLane(silence, AETimeRange(0, length), false);
            } else {
                // Stretches of a few long recordings, as a cut-down interview is.
                const size_t s = static_cast<size_t>(n) % speech.size();
                if (readFrom[s] + length > speech[s]->duration) readFrom[s] = 0;
                tl.appendItemInMainLane(speech[s], AETimeRange(readFrom[s], readFrom[s] + length), false);
                readFrom[s] += length + 3.0;
            }
        }
        for (int n = 0; n < kMainItems; n += 5) {
            const auto& item = tl.mainLane[static_cast<size_t>(n)];
            const double d = item->range.duration();
            for (int k = 1; k <= 4; ++k)
                item->volumeKFs->setKeyframe(simpleRound(item->range.i + d * k / 5.0), -3.0 * k);
            item->updateGlobalKFs();
        }
        for (int n = 7; n < kMainItems; n += 50)
            tl.mainLane[static_cast<size_t>(n)]->addMarker(std::nullopt,
                                                           tl.mainLane[static_cast<size_t>(n)]->inTime + 1.0,
                                                           "chapter", AEMarkerType::chapter);

        // Music under the first half of each stretch between jingles, effects spread over the rest.
        int attached = 0;
        for (const auto& j : tl.getMainLaneSubset(AEAssetType::jingle)) {
            if (attached >= 20) break;
            tl.attachItem(bed, -1, j->outTime() + 2.0, std::nullopt, false, false);
            ++attached;
        }
        for (int n = 0; attached < kAttachedItems; ++n, ++attached)
            tl.attachItem(effects[static_cast<size_t>(n) % effects.size()], 1 + n % 3, 30.0 + n * 88.0,
                          std::nullopt, false, false);
        tl.save(path);
    }
};

Episode& episode() {
    static Episode e;
    return e;
}

// A copy of the episode's timeline, wired to an undo queue as the window wires it, or (to tell the
// edit's own cost from its snapshots') with no undo at all.
struct Editing {
    Undo queue;
    std::shared_ptr<AETimeLine> timeline;

    explicit Editing(bool withUndo) {
        timeline = episode().timeline->duplicate();
        // A snapshot drops the music fade-outs; the repair pass brings them back, as after an undo.
        timeline->adjustBGM();
        if (withUndo)
            timeline->undoDoCallback = [this] { queue.addStatus(timeline->getStatus()); };
        else
            timeline->undoDoCallback = nullptr;
    }
};

void describe(benchmark::State& state) {
    const auto& tl = *episode().timeline;
    state.SetLabel(QString("%1 clips, %2 attached, %3 s")
                       .arg(tl.mainLane.size())
                       .arg(tl.attachedItems.size())
                       .arg(tl.getMainLaneOutTime())
                       .toStdString());
}

void BM_UndoSnapshot(benchmark::State& state) {
    auto& tl = *episode().timeline;
    for (auto _ : state) {
        auto snapshot = tl.getStatus();
        benchmark::DoNotOptimize(snapshot.get());
        // The queue keeps its snapshots: letting one go is not part of taking it.
        state.PauseTiming();
        snapshot.reset();
        state.ResumeTiming();
    }
    describe(state);
}
BENCHMARK(BM_UndoSnapshot)->Unit(benchmark::kMicrosecond);

// Runs edit on a fresh copy in each iteration, timing only the edit (with its snapshots when the
// argument is 1, as in use).
template <class Edit> void timeEdit(benchmark::State& state, Edit edit) {
    const bool withUndo = state.range(0) != 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto editing = std::make_unique<Editing>(withUndo);
        state.ResumeTiming();
        edit(*editing->timeline);
        state.PauseTiming();
        if (withUndo && editing->queue.queue.empty()) state.SkipWithError("the edit took no undo snapshot");
        editing.reset();
        state.ResumeTiming();
    }
    describe(state);
    state.counters["snapshots"] = withUndo ? 1 : 0;
}

void BM_InsertAtStart(benchmark::State& state) {
    episode();
    const auto clip = AEAssetDB::loadAsset("speech0");
    timeEdit(state, [&](AETimeLine& tl) { tl.insertItemInMainLane(clip, 0, AETimeRange(0, 12.0)); });
}
BENCHMARK(BM_InsertAtStart)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);

void BM_SliceInTheMiddle(benchmark::State& state) {
    timeEdit(state, [](AETimeLine& tl) {
        const auto& item = tl.mainLane[tl.mainLane.size() / 2];
        tl.sliceMainLane(simpleRound(item->inTime + item->range.duration() / 2));
    });
}
BENCHMARK(BM_SliceInTheMiddle)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);

void BM_DeleteAThird(benchmark::State& state) {
    timeEdit(state, [](AETimeLine& tl) {
        tl.drag->setRange(AETimeRange(kEpisodeLength / 3 + 0.5, 2 * kEpisodeLength / 3 + 0.5));
        tl.deleteSelection();
    });
}
BENCHMARK(BM_DeleteAThird)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);

// The same third removed clip by clip, each removal repairing the timeline: how a delete used to go.
void BM_RemoveAThirdClipByClip(benchmark::State& state) {
    timeEdit(state, [](AETimeLine& tl) {
        const int64_t first = tl.getAssetInMainLane(kEpisodeLength / 3 + 0.5);
        const int64_t last = tl.getAssetInMainLane(2 * kEpisodeLength / 3 + 0.5);
        // One snapshot, as the delete takes.
        for (int64_t n = last; n >= first; --n)
            tl.removeItemInMainLane(n, n == last);
    });
}
BENCHMARK(BM_RemoveAThirdClipByClip)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);

void BM_Save(benchmark::State& state) {
    auto& e = episode();
    for (auto _ : state)
        if (!e.timeline->save(e.path)) state.SkipWithError("save failed");
    state.counters["file_kB"] = static_cast<double>(QFileInfo(e.path).size()) / 1024.0;
    describe(state);
}
BENCHMARK(BM_Save)->Unit(benchmark::kMicrosecond);

void BM_Load(benchmark::State& state) {
    auto& e = episode();
    for (auto _ : state) {
        const auto tl = AETimeLine::load(e.path);
        if (!tl || tl->mainLane.size() != e.timeline->mainLane.size()) state.SkipWithError("load lost clips");
    }
    describe(state);
}
BENCHMARK(BM_Load)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv);
}
