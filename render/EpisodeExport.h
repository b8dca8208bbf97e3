#pragma once
// One export as a podcaster publishes it: the timeline's mix (SoXer), brought to the loudness target
// by one gain and a true-peak limiter when asked, encoded and tagged (title, notes, picture, ID3
// chapters) for an MP3, then read back into an ExportReport, with the JSON report and the chapter
// files beside it on request. The window's export and `zendrel export` both go through here. The mix
// is streamed, never kept as a file of its own: to normalise, a first pass measures it and a trial on an
// excerpt finds what the limiter and the encoder take from it; the last pass is piped into the encoder
// (or ffmpeg's normalising run) or written as the WAV.
//
// make() on the main thread (the timeline is duplicated there, as for every render); perform() on any
// other thread. Progress is reported from the performing thread.

#include "render/ExportReport.h"
#include "render/Loudness.h"
#include "render/QXMp3Tags.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AEEpisode;
class AEShow;
class AETimeLine;
class SoXer;
class TimelineMix;
struct ExportScratch;

struct ExportOptions {
    QString destPath; // ".mp3" or ".wav"
    LoudnessSettings loudness;
    QString reportPath;          // JSON report; "" for none
    QString chaptersJsonPath;    // Podcasting 2.0 chapters; "" for none
    QString podloveChaptersPath; // Podlove Simple Chapters; "" for none
};

struct ExportOutcome {
    bool done = false;
    QString error; // one line when not done
    ExportReport report;
};

class EpisodeExport {
public:
    // phase ("Rendering", "Measuring", "Normalising" (WAV), "Encoding", "Tagging", "Checking") and the whole
    // export's percent.
    using Progress = std::function<void(const QString& phase, double percent)>;

    // The options a fresh export of this destination starts with: the stored loudness settings.
    static ExportOptions defaultOptions(const QString& destPath, int channels);
    // Main thread. show may be null.
    static std::shared_ptr<EpisodeExport> make(const std::shared_ptr<AETimeLine>& timeline,
                                               const std::shared_ptr<AEEpisode>& episode,
                                               const std::shared_ptr<AEShow>& show,
                                               const ExportOptions& options, Progress progress = {});
    // Source files of the timeline's items that are not there.
    const QStringList& missingMedia() const { return missing_; }

    // Blocking; not on the main thread.
    ExportOutcome perform();

    // Seconds spent in each stage of the last perform.
    struct StageTimes {
        double render = 0;
        double measure = 0;
        double normalise = 0;
        double encode = 0;
        double tag = 0;
        double check = 0;
    };
    StageTimes stageTimes;

private:
    EpisodeExport() = default;
    void report(const QString& phase, double percent) const;
    QString deliverMp3(TimelineMix& mix, const QString& filter);
    // The next block for a tool's standard input, with the progress of the pass.
    QByteArray streamed(TimelineMix& mix, const QString& phase) const;
    void reportStreamed(const TimelineMix& mix, const QString& phase) const;
    // One pass over the mix, keeping the excerpt.
    std::optional<LoudnessMeasure> measureMix(TimelineMix& mix);
    // LU the gain, limiter and encoder take from the excerpt beyond the gain itself.
    double chainLoss() const;
    QString writeSideFiles(const ExportReport& report) const;

    std::shared_ptr<AETimeLine> timeline_;
    std::shared_ptr<AEEpisode> episode_;
    std::shared_ptr<AEShow> show_;
    ExportOptions options_;
    Progress progress_;
    std::shared_ptr<ExportScratch> scratch_;
    std::shared_ptr<SoXer> soxer_;
    std::vector<QXMp3Chapter> chapters_;
    QStringList missing_;
    int channels_ = 2;
    bool mp3_ = true;
    double gain_ = 0;
    std::vector<int16_t> excerpt_;
};
