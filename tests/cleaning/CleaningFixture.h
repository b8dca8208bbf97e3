#pragma once
// Speech made by espeak-ng with pauses of known length, and the noisy recording made of it: pink noise
// at −50 dBFS RMS and a 50 Hz hum at −48 dBFS RMS mixed in by SoX.

#include "cleaning/Brightwash.h"
#include "render/tools/ToolFixture.h"

#include <QCryptographicHash>
#include <QDir>

struct SpeechSpan {
    double from = 0;
    double to = 0;
};

class CleaningFixture : public ToolFixture {
protected:
    static constexpr int kRate = 22050; // espeak-ng's own
    std::vector<SpeechSpan> spans;      // where the sentences are
    std::vector<SpeechSpan> pauses;     // the long pauses between them

    // lead, sentence, 2 s, sentence, 3 s, sentence, tail.
    QString cleanSpeech() {
        const QStringList sentences{"Hello there.",
                                    "Cleaning speech turns a raw home recording into clean and even speech.",
                                    "The dead air is gone now."};
        const QList<double> gaps{1.0, 2.0, 3.0, 1.5};
        QStringList pieces;
        double t = 0;
        for (int i = 0; i < sentences.size(); ++i) {
            pieces << silence(QString("gap%1.wav").arg(i), gaps[i], kRate);
            t += gaps[i];
            if (i > 0) pauses.push_back({spans.back().to, t});
            const QString s = speech(QString("s%1.wav").arg(i), sentences[i]);
            pieces << s;
            const double d = decode(s).seconds();
            spans.push_back({t, t + d});
            t += d;
        }
        pieces << silence("tail.wav", gaps[3], kRate);
        return join("clean.wav", pieces);
    }

    // A copy of `source` with noise and hum; `dir` is where it goes.
    QString noisy(const QString& clean, const QString& name) {
        const double seconds = decode(clean).seconds();
        const QString pink = path("pink_raw.wav");
        // -R: the same noise at every run, so a measurement cannot pass or fail by the draw.
        run("/usr/bin/sox", {"-R", "-n", "-r", QString::number(kRate), "-c", "1", "-b", "16", pink, "synth",
                             QString::number(seconds), "pinknoise", "vol", "0.5"});
        const double pinkRms = decode(pink).rmsDb(0, 0, seconds);
        const QString pinkAt = path("pink.wav");
        run("/usr/bin/sox", {pink, pinkAt, "gain", QString::number(-50.0 - pinkRms)});
        const double humAmplitude = std::pow(10.0, -48.0 / 20.0) * std::sqrt(2.0);
        const QString hum = path("hum.wav");
        run("/usr/bin/sox", {"-n", "-r", QString::number(kRate), "-c", "1", "-b", "16", hum, "synth",
                             QString::number(seconds), "sine", "50", "vol", QString::number(humAmplitude)});
        return mix(name, {clean, pinkAt, hum});
    }

    // A held, vowel-like sound (a buzz through a low-pass), as a hesitation sounds.
    QString heldSound(const QString& name, double seconds) {
        const QString out = path(name);
        const QStringList effects{"sawtooth", "125",  "lowpass", "900", "vol",
                                  "0.5",      "fade", "0.01",    "0",   "0.01"};
        run("/usr/bin/sox", QStringList{"-n", "-r", QString::number(kRate), "-c", "1", "-b", "16", out,
                                        "synth", QString::number(seconds)} +
                                effects);
        return out;
    }

    // The level in dBFS (RMS) of the 50 Hz hum: the file through a steep band-pass of 45...55 Hz.
    double humDb(const QString& file) {
        const QString band = path("band.wav");
        run("/usr/bin/sox", {file, "-b", "32", "-e", "float", band, "sinc", "-n", "32767", "45-55"});
        const Decoded d = decode(band);
        return d.rmsDb(0, 0, d.seconds());
    }

    static double rmsOver(const Decoded& d, const std::vector<SpeechSpan>& where, double inset = 0) {
        double sum = 0, n = 0;
        for (const SpeechSpan& s : where) {
            const double from = s.from + inset, to = s.to - inset;
            const double r = d.rmsDb(0, from, to);
            const double len = to - from;
            sum += std::pow(10.0, r / 10.0) * len;
            n += len;
        }
        return 10.0 * std::log10(sum / n);
    }

    static QByteArray digest(const QString& file) {
        QFile f(file);
        f.open(QIODevice::ReadOnly);
        return QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256);
    }

    // Files in the test folder that a run must not leave.
    QStringList leftovers() const {
        QStringList found;
        for (const QString& name : QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot))
            if (name.startsWith("temp_") || name.contains("_ingest") || name.startsWith("cluster_temp") ||
                name.endsWith(".part") || name.endsWith(".noiseprofile") || name.contains("_bandpass"))
                found << name;
        return found;
    }

    static BrightwashSetting allOff() {
        BrightwashSetting s = Brightwash::loadSettings();
        s.doDenoiser = s.doNoiseGate = s.doCompressor = s.doEqualizer = s.doRemoveHum = false;
        s.doRemovePauses = s.doEraseUhm = false;
        return s;
    }

    // The run's error ("" when it left its result).
    static QString clean(const QString& source, const BrightwashSetting& settings) {
        auto run = Brightwash::make(source, settings, nullptr, {});
        run->start();
        return run->error();
    }
};
