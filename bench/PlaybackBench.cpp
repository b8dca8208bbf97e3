// The playback engine's costs:
//   - MixerCpu/<voices>: the audio thread's CPU time per second of sound, as a fraction of one core
//     (counter core_fraction), for 1, 8 and 32 voices. The voices play from memory, so the figure is
//     the mixer's own work (pull, gain ramp, fade, meters) and not the decoding threads'.
//   - StreamThreeHourFile: a 3-hour mono 16-bit file streamed from its first frame to its last; the
//     counters are the peak resident memory above what the process used before (MB) and, as the
//     baseline, the file's size (MB), which a player that loads the file would hold.
//   - PlayToFirstSound: from RPlayer::play to the first non-silent sample the offline engine renders
//     (wall time per iteration; counter frames_before_sound).
//
// Run with stdout to /dev/null and the report in a file, e.g.
// PlaybackBench >/dev/null --benchmark_out=playback.txt --benchmark_out_format=console
#include "BenchMain.h"
#include "playback/RPlayer.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/Mixer.h"
#include "playback/engine/SharedAudioEngine.h"
#include "playback/engine/StreamingFile.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <ctime>
#include <fstream>
#include <numbers>
#include <string>
#include <thread>

namespace {

// A second of a tone, played round and round from memory.
class MemorySource : public VoiceSource {
public:
    explicit MemorySource(double frequency) : samples_(AudioEngine::kRate * 2) {
        for (size_t i = 0; i < samples_.size() / 2; ++i) {
            const auto v = static_cast<float>(0.1 * std::sin(2 * std::numbers::pi * frequency *
                                                             static_cast<double>(i) / AudioEngine::kRate));
            samples_[2 * i] = v;
            samples_[2 * i + 1] = v;
        }
    }
    int64_t pull(float* stereo, int64_t frames) noexcept override {
        const auto total = static_cast<int64_t>(samples_.size() / 2);
        for (int64_t done = 0; done < frames;) {
            const int64_t n = std::min(frames - done, total - at_);
            std::copy_n(samples_.data() + 2 * at_, 2 * n, stereo + 2 * done);
            done += n;
            at_ = (at_ + n) % total;
        }
        return frames;
    }

private:
    std::vector<float> samples_;
    int64_t at_ = 0;
};

double threadCpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

double residentMb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0) return std::stod(line.substr(6)) / 1024.0;
    return 0;
}

bool runSox(const QStringList& arguments) {
    QProcess process;
    process.start("/usr/bin/sox", arguments);
    return process.waitForFinished(-1) && process.exitCode() == 0;
}

void MixerCpu(benchmark::State& state) {
    Mixer mixer;
    const auto voices = static_cast<int>(state.range(0));
    for (int v = 0; v < voices; ++v) {
        const int slot = mixer.addVoice(std::make_shared<MemorySource>(220.0 + 10 * v), 0.5f);
        mixer.setGain(slot, 0.4f, AudioEngine::kRate); // a ramp under way, as when a fade runs
    }
    // A device asks for a few hundred frames at a time.
    constexpr int64_t kCallbackFrames = 512;
    std::vector<float> out(kCallbackFrames * Mixer::kChannels);
    double cpu = 0;
    int64_t frames = 0;
    for (auto _ : state) {
        const double before = threadCpuSeconds();
        for (int64_t done = 0; done < AudioEngine::kRate; done += kCallbackFrames)
            mixer.render(out.data(), kCallbackFrames);
        cpu += threadCpuSeconds() - before;
        frames += AudioEngine::kRate;
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["core_fraction"] = cpu / (static_cast<double>(frames) / AudioEngine::kRate);
}
BENCHMARK(MixerCpu)->Arg(1)->Arg(8)->Arg(32)->Unit(benchmark::kMillisecond);

void StreamThreeHourFile(benchmark::State& state) {
    QTemporaryDir dir;
    const QString file = dir.filePath("three-hours.wav");
    if (!runSox({"-n", "-r", "44100", "-c", "1", "-b", "16", file, "synth", "10800", "sine", "440", "vol",
                 "0.3"})) {
        state.SkipWithError("sox could not make the file");
        return;
    }
    const double fileMb = static_cast<double>(QFileInfo(file).size()) / (1024.0 * 1024.0);
    const double idle = residentMb();
    double peak = idle;
    for (auto _ : state) {
        auto stream = StreamingFile::open(file, {});
        if (!stream) {
            state.SkipWithError("the file cannot be streamed");
            return;
        }
        std::vector<float> block(AudioEngine::kRate / 10 * 2);
        for (int64_t blocks = 0;; ++blocks) {
            const int64_t before = stream->underrunFrames();
            const int64_t got = stream->pull(block.data(), AudioEngine::kRate / 10);
            if (got < AudioEngine::kRate / 10) break;
            // Faster than real time: when the decoder falls behind, give it the CPU.
            if (stream->underrunFrames() != before) std::this_thread::yield();
            if (blocks % 600 == 0) peak = std::max(peak, residentMb());
        }
        peak = std::max(peak, residentMb());
    }
    state.counters["peak_above_idle_MB"] = peak - idle;
    state.counters["file_MB"] = fileMb;
}
BENCHMARK(StreamThreeHourFile)->Iterations(1)->Unit(benchmark::kSecond);

void PlayToFirstSound(benchmark::State& state) {
    QTemporaryDir dir;
    const QString file = dir.filePath("tone.wav");
    if (!runSox(
            {"-n", "-r", "44100", "-c", "2", "-b", "16", file, "synth", "5", "sine", "440", "vol", "0.5"})) {
        state.SkipWithError("sox could not make the file");
        return;
    }
    AudioEngine& engine = sharedAudioEngine();
    engine.startOffline();
    auto player = std::make_shared<RPlayer>("bench", file);
    int64_t silentFrames = 0;
    for (auto _ : state) {
        player->setCurrentTime(1.013); // not on a zero crossing
        player->play(1.0, false);
        if (!player->playing()) {
            state.SkipWithError("the player did not start");
            return;
        }
        for (bool heard = false; !heard;) {
            const auto out = engine.renderOffline(64);
            for (size_t i = 0; i < out.size() && !heard; i += 2) {
                heard = out[i] != 0.0f;
                if (!heard) ++silentFrames;
            }
        }
        state.PauseTiming();
        player->pause();
        state.ResumeTiming();
    }
    state.counters["frames_before_sound"] =
        benchmark::Counter(static_cast<double>(silentFrames), benchmark::Counter::kAvgIterations);
    engine.startNullOutput();
}
BENCHMARK(PlayToFirstSound)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv);
}
