// Hesitation analysis of one minute of espeak-ng speech at 16 and 32 analyses a second (reading the
// file included; the wall time of an iteration is the time per minute of audio); FFT2's forward transform of
// 2048 points against a bare FFTW r2c call on the same plan, and against that call plus the same magnitude
// and phase loop; a batch of four files cleaned side by side against the same four one after the other (the
// default chain, files of kBatchMinutes each).
//
// qxLog writes to standard output: HesitationBench >/dev/null --benchmark_out=uhm.txt
// --benchmark_out_format=console
#include "BenchMain.h"
#include "cleaning/Brightwash.h"
#include "cleaning/BrightwashBatch.h"
#include "cleaning/Uhm.h"
#include "dsp/fft/FFT2.h"

#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <benchmark/benchmark.h>
#include <cmath>
#include <fftw3.h>

namespace {

constexpr double kBatchMinutes = 3.0;

double seconds(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e9;
}

// Sentences with short pauses, repeated to `minutes`, at 44.1 kHz mono.
QString makeTalk(const QString& folder, double minutes, const QString& name) {
    const QString p = folder + "/";
    if (!QFile::exists(p + "block.wav")) {
        QStringList pieces;
        for (int i = 0; i < 6; ++i) {
            const QString s = p + QString("s%1.wav").arg(i);
            runTool(
                "/usr/bin/espeak-ng",
                {"-w", s, QString("Sentence %1 of the talk, well, it goes on at an even pace.").arg(i + 1)});
            pieces << s;
        }
        runTool("/usr/bin/sox", pieces + QStringList{p + "block.wav"});
    }
    const QString talk = p + name;
    runTool("/usr/bin/sox", {p + "block.wav", "-r", "44100", talk, "repeat", "300", "trim", "0",
                             QString::number(minutes * 60)});
    return talk;
}

void UhmAnalysisPerMinute(benchmark::State& state) {
    QTemporaryDir dir;
    const QString talk = makeTalk(dir.path(), 1.0, "minute.wav");
    const double interval = 1.0 / double(state.range(0));
    for (auto _ : state) {
        Uhm uhm(talk, nullptr);
        uhm.analysisInterval = interval;
        uhm.analyze(1);
        benchmark::DoNotOptimize(uhm.deltaList->size());
    }
}

// One run, three loops of the same transforms: FFT2, bare FFTW, bare FFTW plus magnitude and phase.
void FFT2AgainstBareFftw(benchmark::State& state) {
    constexpr int n = 2048;
    constexpr int rounds = 20000;
    std::vector<float> samples(n);
    for (int i = 0; i < n; ++i)
        samples[size_t(i)] = std::sin(0.01f * float(i)) + 0.001f * float(i % 13);
    float* in = fftwf_alloc_real(n);
    fftwf_complex* out = fftwf_alloc_complex(n / 2 + 1);
    const fftwf_plan plan = fftwf_plan_dft_r2c_1d(n, in, out, FFTW_ESTIMATE);
    std::copy(samples.begin(), samples.end(), in);
    std::vector<float> mag(n / 2), phase(n / 2);
    for (auto _ : state) {
        const double fft2 = seconds([&] {
            for (int r = 0; r < rounds; ++r)
                benchmark::DoNotOptimize(FFT2::calculateForward(samples));
        });
        const double bare = seconds([&] {
            for (int r = 0; r < rounds; ++r) {
                fftwf_execute(plan);
                benchmark::DoNotOptimize(out);
            }
        });
        const double bareMagPhase = seconds([&] {
            for (int r = 0; r < rounds; ++r) {
                fftwf_execute(plan);
                for (int k = 0; k < n / 2; ++k) {
                    mag[size_t(k)] = std::sqrt(out[k][0] * out[k][0] + out[k][1] * out[k][1]);
                    phase[size_t(k)] = std::atan2(out[k][1], out[k][0]);
                }
                benchmark::DoNotOptimize(mag.data());
            }
        });
        state.counters["fft2_us"] = fft2 / rounds * 1e6;
        state.counters["bare_us"] = bare / rounds * 1e6;
        state.counters["bare_magphase_us"] = bareMagPhase / rounds * 1e6;
        state.counters["speed_vs_bare"] = bare / fft2;
        state.counters["speed_vs_bare_magphase"] = bareMagPhase / fft2;
    }
    fftwf_destroy_plan(plan);
    fftwf_free(in);
    fftwf_free(out);
}

void BatchOfFourAgainstSequential(benchmark::State& state) {
    QTemporaryDir dir;
    std::vector<BWBatchData> data;
    const BrightwashSetting settings = Brightwash::loadSettings();
    for (int i = 0; i < 4; ++i)
        data.push_back({makeTalk(dir.path(), kBatchMinutes, QString("talk%1.wav").arg(i)), settings});
    for (auto _ : state) {
        const double sequential = seconds([&] {
            for (const BWBatchData& d : data)
                Brightwash::make(d.filePath, d.settings, nullptr, {})->start();
        });
        const double batch = seconds([&] {
            auto run = BrightwashBatch::make(data);
            run->start();
            while (run->getCompleted() < int(run->count())) {
                QCoreApplication::processEvents();
                QThread::msleep(20);
            }
        });
        state.counters["sequential_s"] = sequential;
        state.counters["batch_s"] = batch;
        state.counters["speedup"] = sequential / batch;
    }
}

} // namespace

BENCHMARK(UhmAnalysisPerMinute)->Arg(16)->Arg(32)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FFT2AgainstBareFftw)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(BatchOfFourAgainstSequential)->Iterations(1)->Unit(benchmark::kSecond);

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv);
}
