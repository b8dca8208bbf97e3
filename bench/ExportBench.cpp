// Exporting a generated 60-minute episode: 40 main-lane speech items of 90 s, two looping music beds
// with volume envelopes on their own lanes, ten effects. Each export is timed once (a run takes
// minutes); the baselines are timed in the same run on the same material:
//   - Mp3Export against FFmpegEncodeAlone, ffmpeg encoding the final mix at 128 kbit/s, the floor of
//     any MP3 export;
//   - WavExport against SoxMixAlone, one "sox -m" of four files of the episode's length and format,
//     standing for the lane files the export makes.
//   - NormalisedMp3Export, the whole delivery (render, loudness measure, gain and true-peak limiter
//     inside the encode, read-back report), against the same FFmpegEncodeAlone;
//   - Ingest of a 1 GB file (one read that hashes and copies) against CpAlone, "cp" of that file;
//   - ThreeHourExportMemory, the normalised MP3 export of the same episode three times as long, for
//     its peak resident memory (run it alone: the peak is the process's).
// The counters hold each stage of the export in seconds, and the peak resident memory of this
// process and of the largest tool it ran.
//
// qxLog writes every line to standard output: run with stdout to /dev/null and the report in a
// file, e.g. ExportBench >/dev/null --benchmark_out=export.txt --benchmark_out_format=console
#include "BenchMain.h"
#include "project/model/AEAsset.h"
#include "project/model/AEBGMSettings.h"
#include "project/model/AEIngest.h"
#include "recording/AudioProbes.h"
#include "render/EpisodeExport.h"
#include "render/SoXer.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/VirtualScroller.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace {

constexpr int kSpeechItems = 40;
constexpr double kSpeechSeconds = 90.0;
constexpr int kEffects = 10;

std::shared_ptr<AEAsset> fileAsset(const QString& file, AEAssetType type) {
    AEAsset::Args args;
    args.filePath = file;
    args.type = type;
    args.generateSubsamples = false;
    // Reading it starts no ingest.
    args.isIngestedCopy = true;
    return AEAsset::make(args);
}

struct Episode {
    QTemporaryDir dir;
    std::shared_ptr<AETimeLine> timeline;
    QString error;

    QString path(const QString& name) const { return dir.path() + "/" + name; }

    explicit Episode(int speechItems = kSpeechItems) {
        AEIngest::workFolder = dir.path() + "/";
        AEIngest ingest(dir.path() + "/AssetIngests");
        const QString sox = "/usr/bin/sox";
        // Speech stands in as modulated pink noise: mono, 16 bits, like most voice recordings.
        QStringList speech;
        for (int i = 0; i < 4; ++i) {
            speech << path("speech" + QString::number(i) + ".wav");
            if (!runTool(sox, {"-n", "-r", "44100", "-c", "1", "-b", "16", speech.back(), "synth",
                               QString::number(kSpeechSeconds), "pinknoise", "tremolo",
                               QString::number(3 + i), "90", "vol", "0.3"}))
                error = "cannot make speech";
        }
        QStringList beds;
        for (int i = 0; i < 2; ++i) {
            beds << path("bed" + QString::number(i) + ".wav");
            if (!runTool(sox, {"-n", "-r", "44100", "-c", "2", "-b", "16", beds.back(), "synth", "30", "sine",
                               QString::number(220 + 110 * i), "sine", "330", "vol", "0.2"}))
                error = "cannot make music";
        }
        const QString effect = path("effect.wav");
        if (!runTool(sox, {"-n", "-r", "44100", "-c", "2", "-b", "16", effect, "synth", "1.5", "sine", "1000",
                           "fade", "0", "1.5", "1.2"}))
            error = "cannot make an effect";

        timeline = AETimeLine::make("bench");
        timeline->setView(1000, 400, QPointF(0, 0));
        timeline->setInsetViewSize();
        timeline->virtualScroller->setTotalRange(0, 100000);
        timeline->setViewportRange(0, 100);
        std::vector<std::shared_ptr<AEAsset>> voices;
        for (const QString& file : speech)
            voices.push_back(fileAsset(file, AEAssetType::speech));
        for (int i = 0; i < speechItems; ++i)
            timeline->appendItemInMainLane(voices[static_cast<size_t>(i % 4)], std::nullopt, false);
        const double end = timeline->getMainLaneOutTime();
        for (int i = 0; i < 2; ++i) {
            auto bed = fileAsset(beds[i], AEAssetType::bgm);
            bed->bgmSettings = std::make_shared<AEBGMSettings>(true, 5.0, false);
            const double at = i * end / 2;
            auto item = timeline->attachItem(bed, -1 - i, at, std::nullopt, false, false);
            for (int k = 0; k < 6; ++k)
                item->volumeKFs->setKeyframe(k * 240.0 + 10, k % 2 == 0 ? -6.0 : -18.0);
        }
        auto sting = fileAsset(effect, AEAssetType::effect);
        for (int i = 0; i < kEffects; ++i)
            timeline->attachItem(sting, 1, 60.0 + i * end / kEffects, std::nullopt, false, false);
        timeline->adjustBGM();
    }
};

Episode& episode() {
    static Episode e;
    return e;
}

void setMemoryCounters(benchmark::State& state) {
    rusage self{}, tools{};
    getrusage(RUSAGE_SELF, &self);
    getrusage(RUSAGE_CHILDREN, &tools);
    state.counters["peak_rss_MB"] = static_cast<double>(self.ru_maxrss) / 1024.0;
    state.counters["tool_peak_rss_MB"] = static_cast<double>(tools.ru_maxrss) / 1024.0;
}

void setStageCounters(benchmark::State& state, const SoXer& soxer) {
    state.counters["mainLane_s"] = soxer.stageTimes.mainLane;
    state.counters["lanes_s"] = soxer.stageTimes.lanes;
    state.counters["mix_s"] = soxer.stageTimes.mix;
    state.counters["encode_s"] = soxer.stageTimes.encode;
}

void exportTo(benchmark::State& state, const QString& name) {
    Episode& e = episode();
    if (!e.error.isEmpty()) {
        state.SkipWithError(e.error.toStdString().c_str());
        return;
    }
    for (auto _ : state) {
        auto soxer = SoXer::make(e.path(name), 44100, 2, 16, e.timeline);
        QElapsedTimer clock;
        clock.start();
        const bool done = soxer->perform();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        if (!done) state.SkipWithError("no result");
        setStageCounters(state, *soxer);
    }
    setMemoryCounters(state);
    state.counters["episode_s"] = aUt_getAudioDuration(e.path(name));
}

void WavExport(benchmark::State& state) {
    exportTo(state, "episode.wav");
}

void Mp3Export(benchmark::State& state) {
    exportTo(state, "episode.mp3");
}

void timeTool(benchmark::State& state, const QString& program, const QStringList& arguments);

void normalisedExport(benchmark::State& state, Episode& e) {
    if (!e.error.isEmpty()) {
        state.SkipWithError(e.error.toStdString().c_str());
        return;
    }
    for (auto _ : state) {
        ExportOptions options;
        options.destPath = e.path("normalised.mp3");
        options.loudness = loudness_defaults(true, 2);
        auto job = EpisodeExport::make(e.timeline, nullptr, nullptr, options);
        QElapsedTimer clock;
        clock.start();
        const ExportOutcome outcome = job->perform();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        if (!outcome.done) state.SkipWithError(outcome.error.toStdString().c_str());
        state.counters["render_s"] = job->stageTimes.render;
        state.counters["measure_s"] = job->stageTimes.measure;
        state.counters["encode_s"] = job->stageTimes.encode;
        state.counters["report_s"] = job->stageTimes.check;
        state.counters["lufs"] = outcome.report.integratedLoudness;
        state.counters["episode_s"] = outcome.report.duration;
    }
    setMemoryCounters(state);
}

void NormalisedMp3Export(benchmark::State& state) {
    normalisedExport(state, episode());
}

void ThreeHourExportMemory(benchmark::State& state) {
    static Episode e(kSpeechItems * 3);
    normalisedExport(state, e);
}

// 1 GB of random bytes, so neither side can skip anything.
QString bigFile() {
    static const QString path = [] {
        const QString file = episode().path("big.bin");
        if (!runTool("/bin/sh", {"-c", "head -c 1073741824 /dev/urandom > \"$0\"", file})) return QString();
        return file;
    }();
    return path;
}

void Ingest(benchmark::State& state) {
    const QString file = bigFile();
    if (file.isEmpty()) {
        state.SkipWithError("cannot make the file");
        return;
    }
    AEIngest ingest(episode().path("ingested"));
    for (auto _ : state) {
        QDir(episode().path("ingested")).removeRecursively();
        QDir().mkpath(episode().path("ingested"));
        QElapsedTimer clock;
        clock.start();
        const bool done = AEIngest::ingest(file).has_value();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        if (!done) state.SkipWithError("no copy");
    }
}

void CpAlone(benchmark::State& state) {
    const QString file = bigFile();
    if (file.isEmpty()) {
        state.SkipWithError("cannot make the file");
        return;
    }
    QFile::remove(episode().path("copied.bin"));
    timeTool(state, "/bin/cp", {file, episode().path("copied.bin")});
}

void timeTool(benchmark::State& state, const QString& program, const QStringList& arguments) {
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        if (!runTool(program, arguments)) state.SkipWithError("tool failed");
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
    }
}

void FFmpegEncodeAlone(benchmark::State& state) {
    Episode& e = episode();
    if (!QFileInfo::exists(e.path("episode.wav"))) {
        state.SkipWithError("run WavExport first");
        return;
    }
    timeTool(
        state, "/usr/bin/ffmpeg",
        {"-nostdin", "-v", "error", "-y", "-i", e.path("episode.wav"), "-b:a", "128k", e.path("floor.mp3")});
}

void SoxMixAlone(benchmark::State& state) {
    Episode& e = episode();
    const QString mix = e.path("episode.wav");
    if (!QFileInfo::exists(mix)) {
        state.SkipWithError("run WavExport first");
        return;
    }
    timeTool(state, "/usr/bin/sox", {"-m", mix, mix, mix, mix, e.path("mixed.wav"), "gain", "8"});
}

} // namespace

BENCHMARK(WavExport)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
BENCHMARK(SoxMixAlone)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
BENCHMARK(Mp3Export)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
BENCHMARK(FFmpegEncodeAlone)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
BENCHMARK(NormalisedMp3Export)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
BENCHMARK(CpAlone)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
BENCHMARK(Ingest)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
BENCHMARK(ThreeHourExportMemory)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv);
}
