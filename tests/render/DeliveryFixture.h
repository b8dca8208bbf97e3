#pragma once
// Exports of real timelines through EpisodeExport, checked by readers other than our own: ffmpeg's
// ebur128 filter for loudness, Python's mutagen for the ID3 tag.

#include "Mp3Fixture.h"
#include "foundation/Execution.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "recording/AudioProbes.h"
#include "render/EpisodeExport.h"
#include "support/EventWait.h"
#include "timeline/model/TimelineFixture.h"

#include <QRegularExpression>
#include <atomic>

// What ffmpeg's own R128 meter reads in a file.
struct Metered {
    double integrated = NAN;
    double truePeak = NAN;
};

class DeliveryFixture : public Mp3Fixture {
protected:
    // A file that is already its own usable copy, so reading it starts no ingest.
    static std::shared_ptr<AEAsset> fileAsset(const QString& file) {
        auto a = tlfixture::asset(QFileInfo(file).completeBaseName(), aUt_getAudioDuration(file));
        a->originalFilePath = file;
        a->ingestedFilePath = file;
        a->ingested = true;
        return a;
    }

    // `seconds` of pink noise whose integrated loudness is `lufs`; above about -12 LUFS its peaks
    // clip at full scale.
    QString noiseAt(const QString& name, int channels, double lufs, double seconds = 20.0) const {
        const QString raw = path(name + ".raw.wav");
        run("/usr/bin/sox", {"-n", "-r", "44100", "-c", QString::number(channels), "-b", "16", raw, "synth",
                             QString::number(seconds), "pinknoise", "gain", "-n", "-20"});
        const auto measured = loudness_measure(raw);
        EXPECT_TRUE(measured.has_value());
        const QString out = path(name);
        run("/usr/bin/sox", {"-D", raw, out, "gain", QString::number(lufs - measured->integrated, 'f', 2)});
        return out;
    }

    static Metered meter(const QString& file) {
        QProcess process;
        process.start("/usr/bin/ffmpeg",
                      {"-nostdin", "-nostats", "-i", file, "-af", "ebur128=peak=true", "-f", "null", "-"});
        process.waitForFinished(120000);
        const QString text = QString::fromUtf8(process.readAllStandardError());
        // The summary is last: "I: -16.0 LUFS" and, under "True peak:", "Peak: -1.2 dBFS".
        const qsizetype summary = text.lastIndexOf("Summary:");
        const QString tail = summary >= 0 ? text.mid(summary) : QString();
        Metered out;
        static const QRegularExpression integrated("I:\\s+(-?[0-9.]+) LUFS");
        static const QRegularExpression peak("Peak:\\s+(-?[0-9.]+|-inf) dBFS");
        if (const auto m = integrated.match(tail); m.hasMatch()) out.integrated = m.captured(1).toDouble();
        if (const auto m = peak.match(tail); m.hasMatch()) out.truePeak = m.captured(1).toDouble();
        return out;
    }

    // The ID3 tag as mutagen reads it.
    static QJsonObject mutagenRead(const QString& file) {
        static const char* script = R"(
import sys, json
from mutagen.id3 import ID3
t = ID3(sys.argv[1], translate=False)
out = {"version": t.version[1], "frames": sorted(t.keys()), "chapters": [],
       "comments": [f.text[0] for f in t.getall("COMM")], "lyrics": [f.text for f in t.getall("USLT")]}
for c in sorted(t.getall("CHAP"), key=lambda c: c.start_time):
    out["chapters"].append({"start": c.start_time, "end": c.end_time, "title": c.sub_frames["TIT2"].text[0]})
with open(sys.argv[1], "rb") as f:
    f.seek(-128, 2)
    out["id3v1"] = f.read(3) == b"TAG"
print(json.dumps(out))
)";
        QProcess process;
        process.start("/usr/bin/python3", {"-c", script, file});
        process.waitForFinished(30000);
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        return QJsonDocument::fromJson(process.readAllStandardOutput()).object();
    }

    // make() here, perform() on the pool, as the window does.
    static ExportOutcome exportTimeline(const std::shared_ptr<AETimeLine>& timeline,
                                        const std::shared_ptr<AEEpisode>& episode,
                                        const ExportOptions& options,
                                        const std::shared_ptr<AEShow>& show = nullptr) {
        const auto job = EpisodeExport::make(timeline, episode, show, options);
        auto outcome = std::make_shared<ExportOutcome>();
        auto finished = std::make_shared<std::atomic<bool>>(false);
        Queue::execute([job, outcome, finished] {
            *outcome = job->perform();
            *finished = true;
        });
        EXPECT_TRUE(testenv::waitUntil([&] { return finished->load(); }, 180000));
        return *outcome;
    }

    std::shared_ptr<AEEpisode> episodeOf(int channels, const QString& title = "Episode") const {
        auto episode = std::make_shared<AEEpisode>("E01", title, "", dir.path() + "/");
        episode->nChannels = channels == 1 ? AENChannels::mono : AENChannels::stereo;
        return episode;
    }
};
