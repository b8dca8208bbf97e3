#pragma once
// Test audio made by the real tools (sox, ffmpeg, espeak-ng) or written sample by sample through
// libsndfile, inside a temporary folder that goes with the maker.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <sndfile.h>
#include <vector>

class AudioFileMaker {
public:
    QString path(const QString& name) const { return dir_.filePath(name); }

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
        QStringList args = {
            "-n", "-r", QString::number(rate), "-c", QString::number(channels), "-b", QString::number(bits)};
        if (floatingPoint)
            args << "-e"
                 << "floating-point";
        args << path(name) << "synth" << QString::number(seconds) << "sine"
             << "440"
             << "gain" << QString::number(gainDb);
        return run("sox", args, name);
    }

    // ffmpeg -i <source> <extra arguments> <name>
    QString convert(const QString& source, const QStringList& extra, const QString& name) const {
        QStringList args = {"-nostdin", "-v", "error", "-y", "-i", source};
        args << extra << path(name);
        return run("ffmpeg", args, name);
    }

    QString speech(const QString& name, const QString& text) const {
        return run("espeak-ng", {"-w", path(name), text}, name);
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

private:
    QTemporaryDir dir_;
};
