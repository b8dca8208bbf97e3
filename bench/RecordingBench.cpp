// The recorder's costs, through a private PulseAudio server whose default input hears its default
// output (the test recipe):
//   - RecordingCpu: CPU of this process per second while it records stereo 48 kHz 24-bit with its
//     meters and labels running, as a fraction of one core (counter core_fraction). The sound comes
//     from a paplay process, so the figure is the recorder's own. Baseline, in the same run: the same
//     process idle for as long (counter idle_core_fraction).
//   - RampContinuity: a take of RECORDING_BENCH_SECONDS (default 600) of a 16-bit ramp played by paplay,
//     recorded at the server's rate while the main thread repaints an image 60 times a second and a
//     sox render runs alongside. Counters: dropouts (jumps in the ramp), frames_dropped (frames the
//     full ring refused), seconds. A jump is a frame whose step from the one before is neither the
//     ramp's rise nor its fall.
//
// Run with stdout to /dev/null, e.g.
// RecordingBench >/dev/null --benchmark_out=recording.txt --benchmark_out_format=console
#include "BenchMain.h"
#include "dsp/SndFile.h"
#include "recording/Recorder.h"
#include "support/EventWait.h"
#include "support/PulseNullSink.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QMediaDevices>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <cmath>
#include <ctime>
#include <memory>
#include <sndfile.h>
#include <vector>

using testenv::PulseNullSink;

namespace {

double processCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + ts.tv_nsec / 1e9;
}

PulseNullSink& server() {
    static PulseNullSink pulse;
    static const bool listed = testenv::waitUntil(
        [] {
            for (const QAudioDevice& d : QMediaDevices::audioInputs())
                if (d.id() == PulseNullSink::kSource) return true;
            return false;
        },
        8000);
    (void)listed;
    return pulse;
}

// paplay playing a file into the default output; killed with the object.
std::unique_ptr<QProcess> play(const QString& path) {
    auto p = std::make_unique<QProcess>();
    p->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    p->start("paplay", {"--device=" + QString(PulseNullSink::kSink), path});
    p->waitForStarted(5000);
    testenv::pumpEventsFor(300);
    return p;
}

constexpr int kRampPeriod = 4410;
constexpr int kRampStep = 14; // 16-bit units a frame

// A 16-bit stereo ramp rising kRampStep a frame and falling back every kRampPeriod frames: exact in
// the server's 16-bit format, so every frame of the take can be checked.
QString writeRamp(const QString& path, int seconds) {
    SF_INFO info{};
    info.samplerate = PulseNullSink::kRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(path.toUtf8().constData(), SFM_WRITE, &info);
    std::vector<short> frames(2 * PulseNullSink::kRate);
    for (int i = 0; i < PulseNullSink::kRate; ++i)
        frames[size_t(2 * i)] = frames[size_t(2 * i + 1)] = short((i % kRampPeriod) * kRampStep - 30870);
    for (int s = 0; s < seconds; ++s)
        sf_writef_short(f, frames.data(), PulseNullSink::kRate);
    sf_close(f);
    return path;
}

std::shared_ptr<Recorder> recorderInto(const QString& path, int rate, int bits) {
    auto r = std::make_shared<Recorder>();
    r->setDeviceV2(AudioDeviceMetadata(PulseNullSink::kSource));
    r->setFrequency(rate);
    r->setBitDepth(bits);
    r->setNChannels(2);
    r->setRecordingFile(path);
    return r;
}

void RecordingCpu(benchmark::State& state) {
    if (!server().available()) {
        state.SkipWithError("no private PulseAudio daemon");
        return;
    }
    QTemporaryDir dir;
    const auto sound = play(writeRamp(dir.filePath("sound.wav"), 40));
    constexpr int kMs = 10000;
    for (auto _ : state) {
        double before = processCpuSeconds();
        testenv::pumpEventsFor(kMs);
        const double idle = processCpuSeconds() - before;
        auto recorder = recorderInto(dir.filePath("cpu.wav"), 48000, 24);
        recorder->setMetering([](double) {}, 0, 1, Recorder::kLabelInterval);
        recorder->setRecordingTimeLabel([](const QString&) {});
        recorder->setfileSizeLabel([](const QString&) {});
        if (!recorder->record()) {
            state.SkipWithError("the recorder did not start");
            return;
        }
        before = processCpuSeconds();
        testenv::pumpEventsFor(kMs);
        const double busy = processCpuSeconds() - before;
        recorder->stop();
        state.counters["core_fraction"] = busy / (kMs / 1000.0);
        state.counters["idle_core_fraction"] = idle / (kMs / 1000.0);
    }
}
BENCHMARK(RecordingCpu)->Iterations(1)->Unit(benchmark::kSecond);

void RampContinuity(benchmark::State& state) {
    if (!server().available()) {
        state.SkipWithError("no private PulseAudio daemon");
        return;
    }
    const int seconds = qEnvironmentVariableIntValue("RECORDING_BENCH_SECONDS") > 0
                            ? qEnvironmentVariableIntValue("RECORDING_BENCH_SECONDS")
                            : 600;
    QTemporaryDir dir;
    const auto ramp = play(writeRamp(dir.filePath("ramp.wav"), seconds + 10));
    for (auto _ : state) {
        auto recorder = recorderInto(dir.filePath("take.wav"), PulseNullSink::kRate, 24);
        // The window's repaint, on the main thread.
        QImage canvas(1600, 400, QImage::Format_ARGB32_Premultiplied);
        QTimer redraw;
        int frame = 0;
        QObject::connect(&redraw, &QTimer::timeout, [&] {
            QPainter p(&canvas);
            p.fillRect(canvas.rect(), Qt::white);
            for (int x = 0; x < canvas.width(); x += 2)
                p.drawLine(x, 200, x, 200 + int(150 * std::sin((x + frame) * 0.05)));
            ++frame;
        });
        redraw.start(16);
        // A render alongside: sox mixing and filtering into a file, again and again (niced, as the
        // machine is shared).
        QProcess render;
        QObject::connect(&render, &QProcess::finished, [&] {
            render.start("nice",
                         {"-n", "10", "sox", "-n", "-r", "48000", "-c", "2", dir.filePath("render.wav"),
                          "synth", "120", "pinknoise", "reverb", "gain", "-3"});
        });
        render.start("nice", {"-n", "10", "sox", "-n", "-r", "48000", "-c", "2", dir.filePath("render.wav"),
                              "synth", "120", "pinknoise", "reverb", "gain", "-3"});
        if (!recorder->record()) {
            state.SkipWithError("the recorder did not start");
            return;
        }
        testenv::pumpEventsFor(seconds * 1000);
        const int64_t refused = recorder->droppedFrames();
        recorder->stop();
        redraw.stop();
        QObject::disconnect(&render, nullptr, nullptr, nullptr);
        render.kill();
        render.waitForFinished();

        // RECORDING_BENCH_KEEP names a path for the take, to look at a failed run.
        if (qEnvironmentVariableIsSet("RECORDING_BENCH_KEEP"))
            QFile::copy(dir.filePath("take.wav"), qEnvironmentVariable("RECORDING_BENCH_KEEP"));
        SndFile file(dir.filePath("take.wav"));
        std::vector<float> all(static_cast<size_t>(file.frames() * file.channels()));
        const int64_t frames = file.readFrames(all.data(), file.frames());
        const double step = kRampStep / 32768.0;
        const double fall = -(kRampPeriod - 1) * step;
        int64_t dropouts = 0;
        // The first second may be before the ramp reached the input.
        for (int64_t i = PulseNullSink::kRate; i < frames; ++i) {
            const double d = all[size_t(2 * i)] - all[size_t(2 * (i - 1))];
            if (std::abs(d - step) > step * 0.25 && std::abs(d - fall) > step * 0.25) ++dropouts;
        }
        state.counters["dropouts"] = double(dropouts);
        state.counters["frames_dropped"] = double(refused);
        state.counters["seconds"] = double(frames) / PulseNullSink::kRate;
    }
}
BENCHMARK(RampContinuity)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv);
}
