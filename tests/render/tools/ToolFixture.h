#pragma once
// Shared set-up for tests that run the real sound tools: a scratch folder, a scripted door, a copy of
// the log, inputs made with the installed sox / ffmpeg / espeak-ng, and outputs read back with
// libsndfile.

#include "dsp/SndFile.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"

#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <vector>

// A decoded file: interleaved samples at full scale ±1.
struct Decoded {
    bool open = false;
    int rate = 0;
    int channels = 0;
    int subFormat = 0;
    int64_t frames = 0;
    std::vector<float> samples;

    double seconds() const { return rate > 0 ? static_cast<double>(frames) / rate : 0.0; }

    // RMS in dB of one channel (0-based) between two times; -inf for digital silence.
    double rmsDb(int channel, double from, double to) const {
        const auto [first, last] = span(from, to);
        double sum = 0.0;
        for (int64_t i = first; i < last; ++i) {
            const double v = samples[static_cast<size_t>(i * channels + channel)];
            sum += v * v;
        }
        const int64_t n = last - first;
        return n > 0 ? 10.0 * std::log10(sum / static_cast<double>(n)) : -INFINITY;
    }

    double peak(int channel, double from, double to) const {
        const auto [first, last] = span(from, to);
        double p = 0.0;
        for (int64_t i = first; i < last; ++i)
            p = std::max(
                p, static_cast<double>(std::fabs(samples[static_cast<size_t>(i * channels + channel)])));
        return p;
    }

private:
    std::pair<int64_t, int64_t> span(double from, double to) const {
        const auto clampFrame = [&](double t) {
            return std::clamp(static_cast<int64_t>(t * rate), int64_t{0}, frames);
        };
        return {clampFrame(from), clampFrame(to)};
    }
};

class ToolFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        door = std::make_shared<ScriptedInteraction>();
        setUserInteraction(door);
        logToken = addLogSink([this](const QString& line) {
            std::lock_guard lock(logMutex);
            logLines << line;
        });
    }

    void TearDown() override {
        removeLogSink(logToken);
        setUserInteraction(nullptr);
    }

    QString path(const QString& name) const { return dir.path() + "/" + name; }

    // Runs an installed tool directly; the test fails when it does not exit with 0.
    static void run(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        ASSERT_TRUE(process.waitForFinished(60000)) << program.toStdString();
        ASSERT_EQ(process.exitCode(), 0) << program.toStdString() << ": " << process.readAll().toStdString();
    }

    // A 16-bit sine at `amplitude` of full scale, the same on every channel.
    QString tone(const QString& name, double seconds, double frequency = 440.0, int rate = 44100,
                 int channels = 1, double amplitude = 0.5) const {
        const QString out = path(name);
        run("/usr/bin/sox", {"-n", "-r", QString::number(rate), "-c", QString::number(channels), "-b", "16",
                             out, "synth", QString::number(seconds), "sine", QString::number(frequency),
                             "vol", QString::number(amplitude)});
        return out;
    }

    QString silence(const QString& name, double seconds, int rate = 44100, int channels = 1) const {
        const QString out = path(name);
        run("/usr/bin/sox", {"-n", "-r", QString::number(rate), "-c", QString::number(channels), "-b", "16",
                             out, "trim", "0", QString::number(seconds)});
        return out;
    }

    // Pieces one after the other (they must share the format).
    QString join(const QString& name, const QStringList& pieces) const {
        const QString out = path(name);
        run("/usr/bin/sox", pieces + QStringList{out});
        return out;
    }

    QString noise(const QString& name, double seconds, double amplitude, int rate = 44100) const {
        const QString out = path(name);
        run("/usr/bin/sox", {"-n", "-r", QString::number(rate), "-c", "1", "-b", "16", out, "synth",
                             QString::number(seconds), "whitenoise", "vol", QString::number(amplitude)});
        return out;
    }

    // Sources summed sample by sample, not scaled.
    QString mix(const QString& name, const QStringList& sources) const {
        const QString out = path(name);
        QStringList arguments{"-m"};
        for (const QString& source : sources)
            arguments << "-v"
                      << "1" << source;
        run("/usr/bin/sox", arguments + QStringList{out});
        return out;
    }

    // Mono sources side by side as channels.
    QString channels(const QString& name, const QStringList& sources) const {
        const QString out = path(name);
        run("/usr/bin/sox", QStringList{"-M"} + sources + QStringList{out});
        return out;
    }

    QString speech(const QString& name, const QString& text) const {
        const QString out = path(name);
        run("/usr/bin/espeak-ng", {"-w", out, text});
        return out;
    }

    QString mp3From(const QString& wav, const QString& name) const {
        const QString out = path(name);
        run("/usr/bin/ffmpeg", {"-nostdin", "-v", "error", "-y", "-i", wav, "-b:a", "128k", out});
        return out;
    }

    static Decoded decode(const QString& file) {
        Decoded d;
        SndFile sf(file);
        if (!sf.isOpen()) return d;
        d.open = true;
        d.rate = sf.sampleRate();
        d.channels = sf.channels();
        d.subFormat = sf.subFormat();
        d.frames = sf.frames();
        d.samples.resize(static_cast<size_t>(d.frames * d.channels));
        d.frames = sf.readFrames(d.samples.data(), d.frames);
        return d;
    }

    // What ffprobe says of the first audio stream, e.g. "codec_name" -> "aac".
    static QString probe(const QString& file, const QString& entry) {
        QProcess process;
        process.start("/usr/bin/ffprobe", {"-v", "error", "-select_streams", "a:0", "-show_entries",
                                           "stream=" + entry, "-of", "default=nw=1:nk=1", file});
        process.waitForFinished(30000);
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    QStringList logged() {
        std::lock_guard lock(logMutex);
        return logLines;
    }

    QStringList transcript() const {
        QStringList lines;
        for (const QString& line : door->transcript())
            lines << line;
        return lines;
    }

    QTemporaryDir dir;
    std::shared_ptr<ScriptedInteraction> door;

private:
    int logToken = 0;
    std::mutex logMutex;
    QStringList logLines;
};
