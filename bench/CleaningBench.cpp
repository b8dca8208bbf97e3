// The default cleaning chain (ingest, noise gate in a noisy room, compressor) on 30 minutes of espeak-ng
// speech with pauses, pink noise and a 50 Hz hum, timed once against the bare passes of the sound tools
// it contains, run by themselves in one shell script on the same material: the decode to mono 16-bit,
// the 1...3 kHz band-pass of the gate's analysis, one copy standing for the gate's rebuild, and the
// compander. Counters: seconds of each, their ratio, the analyses alone (level histogram and cluster
// list on the working copy) and the process's peak resident memory.
//
// Memory is the analyses' level views (the samples are never held whole): 8.8 bytes per 100 samples,
// 14 MB an hour of 44.1 kHz mono. Measured: the 60-minute analysis peaks at 37 MB for the whole process
// (21 MB before it), so a 3-hour file stays near 70 MB.
//
// qxLog writes to standard output: CleaningBench >/dev/null --benchmark_out=clean.txt
// --benchmark_out_format=console
#include "BenchMain.h"
#include "cleaning/AudioAnalysis.h"
#include "cleaning/Brightwash.h"
#include "cleaning/ClusterGate.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace {

constexpr double kMinutes = 30.0;

// Ten sentences with pauses of 0.5...3 s, repeated to kMinutes, with noise and hum mixed in.
QString makeTalk(const QTemporaryDir& dir) {
    const QString p = dir.path() + "/";
    QStringList pieces;
    for (int i = 0; i < 10; ++i) {
        const QString s = p + QString("s%1.wav").arg(i);
        runTool("/usr/bin/espeak-ng", {"-w", s,
                                       QString("Sentence number %1 of the benchmark talk, spoken at an "
                                               "even pace with a little pause after it.")
                                           .arg(i + 1)});
        const QString padded = p + QString("p%1.wav").arg(i);
        runTool("/usr/bin/sox", {s, padded, "pad", "0", QString::number(0.5 + 0.25 * i)});
        pieces << padded;
    }
    const QString block = p + "block.wav";
    runTool("/usr/bin/sox", pieces + QStringList{block});
    const QString clean = p + "clean.wav";
    runTool("/usr/bin/sox", {block, clean, "repeat", "200", "trim", "0", QString::number(kMinutes * 60)});
    const QString noise = p + "noise.wav";
    runTool("/usr/bin/sox",
            {clean, noise, "synth", "pinknoise", "vol", "0.01", "synth", "sine", "mix", "50"});
    const QString talk = p + "talk.wav";
    runTool("/usr/bin/sox", {"-m", "-v", "1", clean, "-v", "0.3", noise, talk});
    return talk;
}

double seconds(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e9;
}

void CleaningChainAgainstBareSox(benchmark::State& state) {
    QTemporaryDir dir;
    const QString talk = makeTalk(dir);
    const QString p = dir.path() + "/";
    const QString script = p + "bare.sh";
    QFile file(script);
    file.open(QIODevice::WriteOnly);
    file.write(
        QString("set -e\n"
                "ffmpeg -nostdin -v error -y -i '%1' -ac 1 -c:a pcm_s16le '%2m.wav'\n"
                "sox -V0 '%2m.wav' '%2bp.wav' lowpass 3000 highpass 1000\n"
                "sox -V0 '%2m.wav' '%2gate.wav'\n"
                "sox -V0 '%2gate.wav' '%2ceq.wav' compand 0.3,1 -90,-90,-70,-70,-30,-6,0,0 -12 -90 0.1\n")
            .arg(talk, p)
            .toUtf8());
    file.close();
    const BrightwashSetting settings = Brightwash::loadSettings();
    for (auto _ : state) {
        const double chain = seconds([&] { Brightwash::make(talk, settings, nullptr, {})->start(); });
        const double bare = seconds([&] { runTool("/bin/bash", {script}); });
        const double analyses = seconds([&] {
            const auto analysis = AudioAnalysis::make(p + "m.wav", -90, -3);
            getClusterListByWavePath(p + "m.wav", analysis->getThresholdOldAlgo(), 0.5, 0.5, 0.3, 0.7, false,
                                     1.0, 15.0, 0.2, false, nullptr);
        });
        state.counters["chain_s"] = chain;
        state.counters["bare_sox_s"] = bare;
        state.counters["ratio"] = chain / bare;
        state.counters["analyses_s"] = analyses;
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_rss_MB"] = double(usage.ru_maxrss) / 1024.0;
}

// The level views of a file of the given minutes, for the memory slope.
void AnalysisMemory(benchmark::State& state) {
    QTemporaryDir dir;
    const QString file = dir.path() + "/long.wav";
    const double minutes = double(state.range(0));
    runTool("/usr/bin/sox", {"-n", "-r", "44100", "-c", "1", "-b", "16", file, "synth",
                             QString::number(minutes * 60), "pinknoise", "vol", "0.1"});
    for (auto _ : state) {
        const auto analysis = AudioAnalysis::make(file, -90, -3);
        benchmark::DoNotOptimize(analysis->getAverage());
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_rss_MB"] = double(usage.ru_maxrss) / 1024.0;
}

} // namespace

BENCHMARK(CleaningChainAgainstBareSox)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(AnalysisMemory)->Arg(60)->Iterations(1)->Unit(benchmark::kSecond);

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv);
}
