#include "render/EpisodeExport.h"

#include "dsp/SndFileWriter.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "render/ChapterFiles.h"
#include "render/ExportDone.h"
#include "render/Mp3.h"
#include "render/SoXer.h"
#include "render/TimelineMix.h"
#include "render/tools/ProcessRunner.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolPaths.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>

namespace {

constexpr int kRate = 44100;
constexpr int kBits = 16;

// Shares of the whole bar: the render is most of the work.
constexpr double kRenderShare = 50;
// LU off target above which an MP3 is encoded again.
constexpr double kRetryAbove = 0.3;
// Frames handed to the encoder at a time.
constexpr int64_t kPipeBlock = 65536;
// The trial of the loudness chain: three slices of this length, run at most this often, until it
// misses by less than this; a loss beyond the limit is not believed.
constexpr int64_t kExcerptSeconds = 10;
constexpr int kTrials = 3;
constexpr double kCloseEnough = 0.05;
constexpr double kMostLoss = 6.0;

QStringList missingSources(const AETimeLine& timeline) {
    QStringList missing;
    for (const auto* items : {&timeline.mainLane, &timeline.attachedItems})
        for (const auto& item : *items) {
            const auto& asset = item->asset;
            if (!asset || asset->type == AEAssetType::silence) continue;
            const QString path = asset->getUsableFilePath().value_or(asset->originalFilePath);
            if (!QFileInfo(path).isFile() && !missing.contains(path)) missing << path;
        }
    return missing;
}

double timedSeconds(const QElapsedTimer& clock) {
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

} // namespace

// The scratch folder beside the destination, so the mix and the result share one volume.
struct ExportScratch {
    explicit ExportScratch(const QString& destFolder) : dir(destFolder + "/.zendrel-export-XXXXXX") {}
    QTemporaryDir dir;
};

ExportOptions EpisodeExport::defaultOptions(const QString& destPath, int channels) {
    ExportOptions options;
    options.destPath = destPath;
    options.loudness = loudness_settings(QFileInfo(destPath).suffix().toLower() == "mp3", channels);
    return options;
}

std::shared_ptr<EpisodeExport> EpisodeExport::make(const std::shared_ptr<AETimeLine>& timeline,
                                                   const std::shared_ptr<AEEpisode>& episode,
                                                   const std::shared_ptr<AEShow>& show,
                                                   const ExportOptions& options, Progress progress) {
    std::shared_ptr<EpisodeExport> out(new EpisodeExport());
    out->options_ = options;
    out->progress_ = std::move(progress);
    out->episode_ = episode;
    out->show_ = show;
    out->mp3_ = QFileInfo(options.destPath).suffix().toLower() == "mp3";
    out->channels_ = episode ? static_cast<int>(episode->nChannels) : 2;
    out->missing_ = missingSources(*timeline);
    out->scratch_ = std::make_shared<ExportScratch>(QFileInfo(options.destPath).absolutePath());
    if (out->scratch_->dir.isValid()) {
        std::weak_ptr<EpisodeExport> weak = out;
        out->soxer_ = SoXer::make(out->scratch_->dir.filePath("mix.wav"), kRate, out->channels_, kBits,
                                  timeline, {}, {}, {}, [weak](double percent) {
                                      if (auto self = weak.lock())
                                          self->report("Rendering", percent * kRenderShare / 100.0);
                                  });
        out->timeline_ = out->soxer_->timeline;
        // The duplicate's item list, which the chapter markers are read from, is gathered here.
        out->timeline_->getCollectedItems();
        out->chapters_ = exportChapters(out->timeline_);
    }
    return out;
}

void EpisodeExport::report(const QString& phase, double percent) const {
    if (progress_) progress_(phase, std::clamp(percent, 0.0, 100.0));
}

ExportOutcome EpisodeExport::perform() {
    ExportOutcome outcome;
    const auto fail = [&outcome](const QString& error) {
        qxLog("EpisodeExport: " + error);
        outcome.error = error;
        return outcome;
    };
    const QString dest = options_.destPath;
    const QString folder = QFileInfo(dest).absolutePath();
    if (!soxer_) return fail("cannot write in " + folder);
    stageTimes = {};
    QElapsedTimer clock;
    clock.start();

    report("Rendering", 0);
    const auto mix = soxer_->openMix();
    if (!mix) return fail("the mix could not be rendered");
    stageTimes.render = timedSeconds(clock);

    QString filter;
    if (options_.loudness.normalise) {
        clock.restart();
        report("Measuring", kRenderShare / 2);
        const auto measured = measureMix(*mix);
        if (!measured) return fail("cannot measure the loudness of the mix");
        gain_ = loudness_gainTo(*measured, options_.loudness.target);
        gain_ += chainLoss();
        filter = loudness_filter(gain_, options_.loudness.truePeakCeiling, kRate);
        stageTimes.measure = timedSeconds(clock);
        mix->rewind();
    }

    if (mp3_) {
        // The gain and the limiter run inside the encoder's own read of the mix.
        const QString error = deliverMp3(*mix, filter);
        if (!error.isEmpty()) return fail(error);
    } else {
        clock.restart();
        report(filter.isEmpty() ? "Rendering" : "Normalising", kRenderShare);
        const QString made = scratch_->dir.filePath("made.wav");
        if (filter.isEmpty()) {
            if (!mix->writeWav(made, [this, &mix] { reportStreamed(*mix, "Rendering"); }))
                return fail("cannot write " + made);
        } else {
            ProcessRequest request{
                soxUt_getFFMpegPath(),
                loudness_normalisePipeArgs(channels_, made, gain_, options_.loudness.truePeakCeiling, kRate)};
            request.keepOutput = false;
            request.input = [this, &mix] { return streamed(*mix, "Normalising"); };
            runProcess(request);
            if (!fu_fileExists(made)) return fail("the loudness could not be normalised");
        }
        if (QFileInfo::exists(dest) && !QFile::remove(dest)) return fail("cannot replace " + dest);
        if (!QFile::rename(made, dest)) return fail("cannot write " + dest);
        stageTimes.normalise = timedSeconds(clock);
    }

    clock.restart();
    report("Checking", 95);
    const int bitRate = mp3_ ? Mp3::encodingSettings().bitrate : kRate * channels_ * kBits / 1000;
    auto read = exportReport_read(dest, bitRate, static_cast<int>(chapters_.size()), options_.loudness,
                                  options_.loudness.normalise, gain_);
    if (!read) return fail("cannot read back " + dest);
    // The encoder's low-pass takes some loudness with it (most with bright material): when the file
    // misses the target and has the headroom, it is made once more with the gain corrected.
    const double missed = options_.loudness.target - read->integratedLoudness;
    // Not when the limiter holds it down: more gain would only be limited away.
    const bool room = read->truePeak + missed <= options_.loudness.truePeakCeiling;
    if (mp3_ && options_.loudness.normalise && std::isfinite(missed) && std::fabs(missed) > kRetryAbove &&
        room) {
        gain_ += missed;
        // The encoder's last step will not overwrite a file.
        if (!QFile::remove(dest)) return fail("cannot replace " + dest);
        mix->rewind();
        const QString error =
            deliverMp3(*mix, loudness_filter(gain_, options_.loudness.truePeakCeiling, kRate));
        if (!error.isEmpty()) return fail(error);
        read = exportReport_read(dest, bitRate, static_cast<int>(chapters_.size()), options_.loudness, true,
                                 gain_);
        if (!read) return fail("cannot read back " + dest);
    }
    outcome.report = *read;
    const QString sideError = writeSideFiles(outcome.report);
    if (!sideError.isEmpty()) return fail(sideError);
    stageTimes.check = timedSeconds(clock);
    report("Done", 100);
    outcome.done = true;
    return outcome;
}

QString EpisodeExport::deliverMp3(TimelineMix& mix, const QString& filter) {
    QElapsedTimer clock;
    clock.start();
    report("Encoding", 70);
    const QString dest = options_.destPath;
    const QString title = episode_ ? episode_->title : QString();
    const QString notes =
        episode_ ? exportNotes(episode_->notes, show_ ? show_->notes : QString()) : QString();
    const double seconds = static_cast<double>(mix.frames()) / mix.rate;
    if (!Mp3::encodeStreamWithTags([&mix] { return mix.readBytes(kPipeBlock); }, mix.rate, mix.channels,
                                   seconds, dest, title, notes, chapters_, filter))
        return "cannot write " + dest;
    stageTimes.encode = timedSeconds(clock);
    clock.restart();
    report("Tagging", 90);
    // The picture, the notes and ID3v2.3 go in place; without an episode the encoder's tags stand.
    if (episode_ && !exportDone(dest, timeline_, episode_, show_)) return "cannot write the tags of " + dest;
    stageTimes.tag = timedSeconds(clock);
    return {};
}

void EpisodeExport::reportStreamed(const TimelineMix& mix, const QString& phase) const {
    const double share =
        static_cast<double>(mix.framesRead()) / static_cast<double>(std::max<int64_t>(mix.frames(), 1));
    report(phase, kRenderShare + (90 - kRenderShare) * share);
}

QByteArray EpisodeExport::streamed(TimelineMix& mix, const QString& phase) const {
    QByteArray block = mix.readBytes(kPipeBlock);
    reportStreamed(mix, phase);
    return block;
}

std::optional<LoudnessMeasure> EpisodeExport::measureMix(TimelineMix& mix) {
    // The gain needs the integrated loudness only; the report measures the file in full.
    LoudnessMeter meter(mix.rate, mix.channels, false);
    // A few slices from across the episode, for the trial of the chain.
    const int64_t total = mix.frames();
    const int64_t slice = kExcerptSeconds * mix.rate;
    std::vector<std::pair<int64_t, int64_t>> slices;
    if (total <= 3 * slice) {
        slices.push_back({0, total});
    } else {
        for (const double at : {0.2, 0.5, 0.8}) {
            const auto first = static_cast<int64_t>(at * static_cast<double>(total));
            slices.push_back({first, first + slice});
        }
    }
    excerpt_.clear();
    std::vector<int16_t> block(static_cast<size_t>(kPipeBlock * mix.channels));
    int64_t position = 0;
    for (;;) {
        const int64_t got = mix.read(block.data(), kPipeBlock);
        if (got <= 0) break;
        meter.add(block.data(), got);
        for (const auto& [first, last] : slices) {
            const int64_t from = std::max(first, position);
            const int64_t to = std::min(last, position + got);
            if (from < to)
                excerpt_.insert(excerpt_.end(), block.begin() + (from - position) * mix.channels,
                                block.begin() + (to - position) * mix.channels);
        }
        position += got;
        report("Measuring",
               kRenderShare / 2 * (1.0 + static_cast<double>(position) / std::max<int64_t>(total, 1)));
    }
    return meter.result();
}

double EpisodeExport::chainLoss() const {
    // The encoder, and the limiter on a hot mix, take some loudness with them that the gain measured
    // before them cannot see: a trial run of the same chain on the excerpt measures how much.
    const QString probe = scratch_->dir.filePath("probe.wav");
    {
        SndFileWriter out(probe, kRate, channels_, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        if (!out.isOpen() || excerpt_.empty() ||
            !out.writeFrames(excerpt_.data(), static_cast<int64_t>(excerpt_.size()) / channels_))
            return 0;
    }
    const auto before = loudness_measure(probe);
    if (!before || !std::isfinite(before->integrated)) return 0;
    const QString trial = scratch_->dir.filePath(mp3_ ? "probe.mp3" : "probe-out.wav");
    double loss = 0;
    for (int attempt = 0; attempt < kTrials; ++attempt) {
        QFile::remove(trial);
        const double gain = gain_ + loss;
        const QString filter = loudness_filter(gain, options_.loudness.truePeakCeiling, kRate);
        soxUt_runFFMpeg(
            mp3_ ? ffArgs::encodeMp3Filtered(probe, trial, Mp3::encodingSettings().bitrate, filter)
                 : loudness_normaliseArgs(probe, trial, gain, options_.loudness.truePeakCeiling, kRate));
        const auto after = loudness_measure(trial);
        if (!after || !std::isfinite(after->integrated)) break;
        const double missed = before->integrated + gain_ - after->integrated;
        loss += missed;
        if (std::fabs(missed) < kCloseEnough) break;
    }
    QFile::remove(probe);
    QFile::remove(trial);
    qxLog(QString("EpisodeExport: the chain takes %1 LU").arg(loss, 0, 'f', 2));
    return std::clamp(loss, -kMostLoss, kMostLoss);
}

QString EpisodeExport::writeSideFiles(const ExportReport& report) const {
    if (!options_.reportPath.isEmpty() && !report.write(options_.reportPath))
        return "cannot write the report " + options_.reportPath;
    const auto entries = chapters_entries(chapters_);
    if (!options_.chaptersJsonPath.isEmpty() &&
        !chapters_write(options_.chaptersJsonPath, chapters_podcastJson(entries)))
        return "cannot write the chapters file " + options_.chaptersJsonPath;
    if (!options_.podloveChaptersPath.isEmpty() &&
        !chapters_write(options_.podloveChaptersPath, chapters_podloveXml(entries)))
        return "cannot write the chapters file " + options_.podloveChaptersPath;
    return {};
}
