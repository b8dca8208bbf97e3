#pragma once
// Test audio in a temporary folder that goes with its maker: made by the real tools (sox, ffmpeg,
// espeak-ng) or written sample by sample through libsndfile, and read back with libsndfile.

#include "dsp/AUAudio.h"
#include "dsp/SndFile.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <sndfile.h>
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

    // The largest difference of any sample from the same sample of another decode of equal length.
    double largestDifference(const Decoded& other) const {
        double worst = 0.0;
        for (size_t i = 0; i < std::min(samples.size(), other.samples.size()); ++i)
            worst = std::max(worst, static_cast<double>(std::fabs(samples[i] - other.samples[i])));
        return worst;
    }

private:
    std::pair<int64_t, int64_t> span(double from, double to) const {
        const auto clampFrame = [&](double t) {
            return std::clamp(static_cast<int64_t>(t * rate), int64_t{0}, frames);
        };
        return {clampFrame(from), clampFrame(to)};
    }
};

class TestAudio {
public:
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
        return synth(name, rate, channels, {"synth", n(seconds), "sine", n(frequency), "vol", n(amplitude)});
    }

    QString silence(const QString& name, double seconds, int rate = 44100, int channels = 1) const {
        return synth(name, rate, channels, {"trim", "0", n(seconds)});
    }

    // `seconds` long, a 2 ms burst of 1 kHz at its start, silence after.
    QString click(const QString& name, double seconds, int channels = 1) const {
        return synth(name, 44100, channels,
                     {"synth", "0.002", "sine", "1000", "pad", "0", n(seconds - 0.002)});
    }

    // Every sample `value` (of full scale), 16-bit mono.
    QString level(const QString& name, double seconds, float value) const {
        AUAudio::saveArrayIntoAudioFile16(std::vector<float>(static_cast<size_t>(seconds * 44100), value),
                                          44100, path(name));
        return path(name);
    }

    // Pieces one after the other (they must share the format).
    QString join(const QString& name, const QStringList& pieces) const {
        return made(name, "/usr/bin/sox", pieces + QStringList{path(name)});
    }

    QString noise(const QString& name, double seconds, double amplitude, int rate = 44100) const {
        return synth(name, rate, 1, {"synth", n(seconds), "whitenoise", "vol", n(amplitude)});
    }

    // Sources summed sample by sample, not scaled.
    QString mix(const QString& name, const QStringList& sources) const {
        QStringList arguments{"-m"};
        for (const QString& source : sources)
            arguments << "-v"
                      << "1" << source;
        return made(name, "/usr/bin/sox", arguments << path(name));
    }

    // Mono sources side by side as channels.
    QString channels(const QString& name, const QStringList& sources) const {
        return made(name, "/usr/bin/sox", QStringList{"-M"} + sources + QStringList{path(name)});
    }

    QString speech(const QString& name, const QString& text) const {
        return made(name, "/usr/bin/espeak-ng", {"-w", path(name), text});
    }

    QString mp3From(const QString& wav, const QString& name) const {
        return made(name, "/usr/bin/ffmpeg",
                    {"-nostdin", "-v", "error", "-y", "-i", wav, "-b:a", "128k", path(name)});
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

    // The path of the output when the tool made it, "" otherwise.
    QString run(const QString& program, const QStringList& arguments, const QString& name) const {
        const QString out = path(name);
        QProcess process;
        process.start(program, arguments);
        process.waitForFinished(60000);
        return QFileInfo::exists(out) ? out : QString();
    }

    // A 440 Hz sine: sox -n -r <rate> -c <channels> -b <bits> [-e floating-point] <name> synth <s> sine 440
    QString sine(const QString& name, int rate, int channels, int bits, double seconds, double gainDb = -6.0,
                 bool floatingPoint = false) const {
        QStringList args = {"-n", "-r", n(rate), "-c", n(channels), "-b", n(bits)};
        if (floatingPoint)
            args << "-e"
                 << "floating-point";
        return run("sox",
                   args << path(name) << "synth" << n(seconds) << "sine"
                        << "440"
                        << "gain" << n(gainDb),
                   name);
    }

    // ffmpeg -i <source> <extra arguments> <name>
    QString convert(const QString& source, const QStringList& extra, const QString& name) const {
        return run("ffmpeg", QStringList{"-nostdin", "-v", "error", "-y", "-i", source} + extra << path(name),
                   name);
    }

    // `frames` frames of float WAV whose sample of channel c at frame i is value(i, c).
    QString floatWav(const QString& name, int rate, int channels, int64_t frames,
                     const std::function<float(int64_t, int)>& value) const {
        SF_INFO info{};
        info.samplerate = rate;
        info.channels = channels;
        info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        SNDFILE* file = sf_open(QFile::encodeName(path(name)).constData(), SFM_WRITE, &info);
        if (!file) return QString();
        std::vector<float> interleaved(static_cast<size_t>(frames * channels));
        for (int64_t i = 0; i < frames; ++i) {
            for (int c = 0; c < channels; ++c)
                interleaved[static_cast<size_t>(i * channels + c)] = value(i, c);
        }
        sf_writef_float(file, interleaved.data(), frames);
        sf_close(file);
        return path(name);
    }

    QString bytes(const QString& name, const QByteArray& content) const {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly)) return QString();
        file.write(content);
        return path(name);
    }

    // The first `count` bytes of another file.
    QString head(const QString& source, qint64 count, const QString& name) const {
        QFile in(source);
        if (!in.open(QIODevice::ReadOnly)) return QString();
        return bytes(name, in.read(count));
    }

    // The canonical 44-byte header of a 16-bit PCM WAV with these fields, then `frames` of silence.
    static QByteArray wavBytes(quint16 formatTag, quint16 channels, quint32 rate, int frames) {
        const quint32 dataBytes = static_cast<quint32>(frames) * 2u * std::max<quint16>(channels, 1);
        QByteArray b;
        auto u32 = [&b](quint32 v) { b.append(reinterpret_cast<const char*>(&v), 4); };
        auto u16 = [&b](quint16 v) { b.append(reinterpret_cast<const char*>(&v), 2); };
        b.append("RIFF");
        u32(36 + dataBytes);
        b.append("WAVEfmt ");
        u32(16);
        u16(formatTag);
        u16(channels);
        u32(rate);
        u32(rate * 2u * channels);
        u16(static_cast<quint16>(2 * channels));
        u16(16);
        b.append("data");
        u32(dataBytes);
        b.append(QByteArray(static_cast<qsizetype>(dataBytes), '\0'));
        return b;
    }

    QTemporaryDir dir;

private:
    static QString n(double value) { return QString::number(value); }
    // `program` run to make `name`, which the test needs: a failed run fails the test.
    QString made(const QString& name, const QString& program, const QStringList& arguments) const {
        run(program, arguments);
        return path(name);
    }
    // 16-bit sox output from nothing: sox -n -r <rate> -c <channels> -b 16 <name> <effects>
    QString synth(const QString& name, int rate, int channels, const QStringList& effects) const {
        return made(name, "/usr/bin/sox",
                    QStringList{"-n", "-r", n(rate), "-c", n(channels), "-b", "16", path(name)} + effects);
    }
};
