// Waveform summaries, file digests and ingest against their plain baselines, on an hour of 44.1 kHz
// stereo 16-bit WAV (about 635 MB) and a 1 GB file, both made here and deleted at the end. Files sit in
// the page cache after the first pass, so these are CPU figures rather than disk figures. The machine
// may be shared, so each comparison runs its sides in turn, round by round, and takes the fastest round
// of each; the ratios printed at the end are baseline time / our time (1.0 = as fast).
#include "dsp/AUAudio.h"
#include "dsp/SndFile.h"
#include "foundation/FileUtils.h"
#include "foundation/Hallard.h"
#include "project/model/AEIngest.h"
#include "project/model/AESubsamples.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <functional>
#include <future>
#include <malloc.h>
#include <map>
#include <memory>

// Heap accounting for the whole process (ours, Qt's and libsndfile's allocations alike): the system's
// resident-size figures are not trustworthy on every virtual machine.
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void __libc_free(void*);
void* __libc_memalign(size_t, size_t);
}

namespace {
std::atomic<int64_t> heapInUse{0};
std::atomic<int64_t> heapPeak{0};

void counted(void* p) {
    if (!p) return;
    const int64_t now = heapInUse += static_cast<int64_t>(malloc_usable_size(p));
    int64_t peak = heapPeak.load();
    while (now > peak && !heapPeak.compare_exchange_weak(peak, now)) {
    }
}
void uncounted(void* p) {
    if (p) heapInUse -= static_cast<int64_t>(malloc_usable_size(p));
}
} // namespace

extern "C" {
void* malloc(size_t n) {
    void* p = __libc_malloc(n);
    counted(p);
    return p;
}
void* calloc(size_t n, size_t size) {
    void* p = __libc_calloc(n, size);
    counted(p);
    return p;
}
void* realloc(void* old, size_t n) {
    uncounted(old);
    void* p = __libc_realloc(old, n);
    counted(p ? p : (n == 0 ? nullptr : old));
    return p;
}
void free(void* p) {
    uncounted(p);
    __libc_free(p);
}
void* memalign(size_t alignment, size_t n) {
    void* p = __libc_memalign(alignment, n);
    counted(p);
    return p;
}
void* aligned_alloc(size_t alignment, size_t n) {
    return memalign(alignment, n);
}
int posix_memalign(void** out, size_t alignment, size_t n) {
    *out = memalign(alignment, n);
    return *out ? 0 : 12; // ENOMEM
}
}

namespace {

struct Files {
    QTemporaryDir dir;
    QString hourWav;
    QString gigabyte;

    Files() {
        hourWav = dir.filePath("hour.wav");
        QProcess sox;
        sox.start("sox", {"-n", "-r", "44100", "-c", "2", "-b", "16", hourWav, "synth", "3600", "sine", "440",
                          "gain", "-6"});
        sox.waitForFinished(-1);

        gigabyte = dir.filePath("gigabyte.bin");
        QFile out(gigabyte);
        if (out.open(QIODevice::WriteOnly)) {
            QByteArray block(1 << 20, '\0');
            QRandomGenerator random(42);
            random.fillRange(reinterpret_cast<quint32*>(block.data()), block.size() / 4);
            for (int i = 0; i < 1024; ++i)
                out.write(block);
        }
        std::fprintf(stderr, "made %s (%lld bytes) and %s (%lld bytes)\n", qPrintable(hourWav),
                     static_cast<long long>(QFileInfo(hourWav).size()), qPrintable(gigabyte),
                     static_cast<long long>(QFileInfo(gigabyte).size()));
    }
};

std::unique_ptr<Files> files;
double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// One benchmark iteration = one round of each side; the benchmark's own time is the sum.
using Side = std::pair<std::string, std::function<void()>>;

// Each round runs the baseline, then each side, with cleanUp (untimed) after each. Counters: the fastest
// round of each in seconds, and baseline time / side time ("ratio" when there is one side).
void compared(benchmark::State& state, const Side& baseline, const std::vector<Side>& sides,
              const std::function<void()>& cleanUp = {}) {
    std::map<std::string, double> fastest; // seconds of the fastest round
    auto run = [&](const Side& side) {
        const double seconds = secondsOf(side.second);
        fastest[side.first] = fastest.count(side.first) ? std::min(fastest[side.first], seconds) : seconds;
        state.PauseTiming();
        if (cleanUp) cleanUp();
        state.ResumeTiming();
    };
    for (auto _ : state) {
        run(baseline);
        for (const Side& side : sides)
            run(side);
    }
    for (const auto& [name, seconds] : fastest)
        state.counters[name + "_s"] = seconds;
    for (const Side& side : sides)
        state.counters[sides.size() == 1 ? "ratio" : "ratio_" + side.first] =
            fastest[baseline.first] / fastest[side.first];
}

void paired(benchmark::State& state, const std::string& ours, const std::function<void()>& ourWork,
            const std::string& baseline, const std::function<void()>& baselineWork,
            const std::function<void()>& cleanUp = {}) {
    compared(state, {baseline, baselineWork}, {{ours, ourWork}}, cleanUp);
}

void runProcess(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, arguments);
    process.waitForFinished(-1);
}

// libsndfile alone, asked for `frames` at a time.
void rawRead(int64_t frames) {
    SndFile file(files->hourWav);
    std::vector<float> buffer(static_cast<size_t>(frames * file.channels()));
    float last = 0.0f;
    while (const int64_t got = file.readFrames(buffer.data(), frames)) {
        last += buffer[static_cast<size_t>(got - 1)];
        if (got < frames) break;
    }
    benchmark::DoNotOptimize(last);
}

// The whole of generate: queue hop, read, reduction, average, cache write.
size_t generate(bool saveToCache) {
    auto subsamples = std::make_shared<AESubsamples>();
    std::promise<void> done;
    subsamples->generate(files->hourWav, "", saveToCache, [&done] { done.set_value(); });
    done.get_future().wait();
    return subsamples->samples()->size();
}

// Against libsndfile read in the reader's 1048576-frame slices and in the 16384-frame pieces it
// decodes into (the faster plain read: the buffer stays in cache).
void BM_GenerateVsRawSlices(benchmark::State& state) {
    paired(
        state, "generate", [] { generate(true); }, "raw_slices", [] { rawRead(AUAudio::kSliceFrames); });
}
void BM_GenerateVsRawPieces(benchmark::State& state) {
    paired(
        state, "generate", [] { generate(true); }, "raw_pieces", [] { rawRead(AUAudio::kPieceFrames); });
}
void BM_SummaryOfFileVsRawPieces(benchmark::State& state) {
    paired(
        state, "summaryOfFile",
        [] { benchmark::DoNotOptimize(AESubsamples::summaryOfFile(files->hourWav, kAESubsamplesPerSecond)); },
        "raw_pieces", [] { rawRead(AUAudio::kPieceFrames); });
}

void BM_GeneratePeakHeap(benchmark::State& state) {
    int64_t added = 0;
    size_t count = 0;
    for (auto _ : state) {
        const int64_t before = heapInUse.load();
        heapPeak = before;
        count = generate(true);
        added = heapPeak.load() - before;
    }
    state.counters["peak_heap_MB"] = static_cast<double>(added) / 1048576.0;
    state.counters["summary_MB"] = static_cast<double>(count * sizeof(float)) / 1048576.0;
    // What holding channel 0 whole as floats would cost instead.
    state.counters["whole_channel_MB"] =
        static_cast<double>(SndFile(files->hourWav).frames()) * sizeof(float) / 1048576.0;
}

void BM_Md5VsMd5sum(benchmark::State& state) {
    paired(
        state, "hallard_fileMd5", [] { benchmark::DoNotOptimize(hallard_fileMd5(files->hourWav)); }, "md5sum",
        [] { runProcess("md5sum", {files->hourWav}); });
}

void removeCopies() {
    QFile::remove(files->dir.filePath("cp.bin"));
    QFile::remove(files->dir.filePath("fu.bin"));
    for (const QString& name : QDir(AEIngest::ingestPath).entryList(QDir::Files))
        QFile::remove(AEIngest::ingestPath + name);
}

// The copy and digest as ingest made them before they overlapped: read, digest, write, in turn.
void serialCopyWithMd5(const QString& from, const QString& to) {
    QFile source(from);
    QFile target(to);
    if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::NewOnly)) return;
    QCryptographicHash hash(QCryptographicHash::Md5);
    QByteArray slice(4 << 20, Qt::Uninitialized);
    while (const qint64 got = source.read(slice.data(), slice.size())) {
        if (got < 0) return;
        hash.addData(QByteArrayView(slice.constData(), got));
        if (target.write(slice.constData(), got) != got) return;
    }
    target.flush();
    benchmark::DoNotOptimize(hash.result());
}

// Ingest against cp, with two references in the same rounds: the former serial copy and digest, and
// md5sum alone, the floor of anything that must take the digest.
void BM_IngestVsCp(benchmark::State& state) {
    AEIngest::workFolder = files->dir.path() + "/";
    AEIngest ingest(files->dir.filePath("AssetIngests"));
    removeCopies();
    compared(state,
             {"cp",
              [] {
                  runProcess("cp", {files->gigabyte, files->dir.filePath("cp.bin")});
              }},
             {{"ingest", [] { AEIngest::ingest(files->gigabyte); }},
              {"serial", [] { serialCopyWithMd5(files->gigabyte, files->dir.filePath("fu.bin")); }},
              {"md5sum", [] { runProcess("md5sum", {files->gigabyte}); }}},
             removeCopies);
}

// The copy inside ingest on its own, to split ingest into digest and copy.
void BM_FuCopyFileVsCp(benchmark::State& state) {
    removeCopies();
    paired(
        state, "fu_copyFile", [] { fu_copyFile(files->gigabyte, files->dir.filePath("fu.bin")); }, "cp",
        [] {
            runProcess("cp", {files->gigabyte, files->dir.filePath("cp.bin")});
        },
        removeCopies);
}

BENCHMARK(BM_GenerateVsRawSlices)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(7);
BENCHMARK(BM_GenerateVsRawPieces)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(7);
BENCHMARK(BM_SummaryOfFileVsRawPieces)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(7);
BENCHMARK(BM_GeneratePeakHeap)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(BM_Md5VsMd5sum)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(BM_IngestVsCp)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_FuCopyFileVsCp)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    files = std::make_unique<Files>();
    // One untimed pass so that every benchmark starts from the page cache.
    runProcess("cat", {files->hourWav, files->gigabyte});
    benchmark::RunSpecifiedBenchmarks();
    files.reset();
    return 0;
}
