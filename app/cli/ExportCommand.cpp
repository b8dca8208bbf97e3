#include "app/cli/ExportCommand.h"

#include "app/cli/CommandLine.h"
#include "foundation/ETA.h"
#include "foundation/Execution.h"
#include "foundation/LogOutput.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "render/EpisodeExport.h"
#include "render/Mp3.h"
#include "timeline/model/AETimeLine.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <cmath>
#include <mutex>

namespace {

const QString kCommand = "export";

struct Request {
    QString workFolder; // with a trailing "/"
    QString episode;
    QString dest;
    ExportOptions options;
};

std::shared_ptr<AEEpisode> findEpisode(const AEShow& show, const QString& key) {
    for (const auto& episode : show.episodes)
        if (episode && !episode->deleted && (episode->episodeId == key || episode->id == key)) return episode;
    return nullptr;
}

// Prints a line when the phase changes or the whole percent moves; called from the render's threads.
class ProgressPrinter {
public:
    void operator()(const QString& phase, double percent) {
        std::lock_guard lock(mutex_);
        const int whole = static_cast<int>(std::floor(percent));
        if (phase == phase_ && whole == percent_) return;
        phase_ = phase;
        percent_ = whole;
        const QString left = percent > 0 && percent < 100
                                 ? ", " + ETA::getRemaining(start_, percent / 100.0) + " left"
                                 : QString();
        cli_print(QString("%1 %2%%3").arg(phase.leftJustified(12)).arg(whole, 3).arg(left));
    }

private:
    std::mutex mutex_;
    QDateTime start_ = QDateTime::currentDateTime();
    QString phase_;
    int percent_ = -1;
};

} // namespace

int runExportCommand(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Render an episode and export it as an MP3 (tagged, with chapters) or a WAV "
        "file, with no window.");
    const QCommandLineOption workFolder("work-folder", "The working folder holding show.AEShow.", "DIR");
    const QCommandLineOption episodeOption("episode", "The episode, by its code (e.g. E07) or its id.", "ID");
    const QCommandLineOption noNormalise("no-normalise", "Leave the loudness of the mix as it is.");
    const QCommandLineOption normalise("normalise", "Normalise the loudness (the default for MP3).");
    const QCommandLineOption target("target",
                                    "Integrated loudness to reach, in LUFS (default -16 stereo, -19 mono); "
                                    "implies --normalise.",
                                    "LUFS");
    const QCommandLineOption ceiling("true-peak", "True-peak ceiling in dBTP (default -1.0).", "DBTP");
    const QCommandLineOption reportOption("report", "Write the export report as JSON to FILE.", "FILE");
    const QCommandLineOption chaptersJson("chapters-json", "Write Podcasting 2.0 JSON chapters to FILE.",
                                          "FILE");
    const QCommandLineOption podlove("podlove-chapters", "Write Podlove Simple Chapters (XML) to FILE.",
                                     "FILE");
    const QCommandLineOption verbose("verbose", "Print the log as well.");
    parser.addOptions({workFolder, episodeOption, noNormalise, normalise, target, ceiling, reportOption,
                       chaptersJson, podlove, verbose});
    parser.addPositionalArgument("OUT", "The file to make; its extension, .mp3 or .wav, decides the format.",
                                 "OUT.(mp3|wav)");
    if (const int status = cli_parse(parser, kCommand, arguments); status >= 0) return status;
    setLogToStandardOutput(parser.isSet(verbose));
    cli_showToolOutput(parser.isSet(verbose));

    if (!parser.isSet(workFolder)) return cli_fail(kCommand, "--work-folder is required", kCliUsage);
    if (!parser.isSet(episodeOption)) return cli_fail(kCommand, "--episode is required", kCliUsage);
    if (parser.positionalArguments().size() != 1)
        return cli_fail(kCommand, "give exactly one destination file", kCliUsage);
    Request request;
    request.dest = QFileInfo(parser.positionalArguments().front()).absoluteFilePath();
    const QString extension = QFileInfo(request.dest).suffix().toLower();
    if (extension != "mp3" && extension != "wav")
        return cli_fail(kCommand, "the destination must end in .mp3 or .wav: " + request.dest, kCliUsage);
    if (parser.isSet(noNormalise) && (parser.isSet(normalise) || parser.isSet(target)))
        return cli_fail(kCommand, "--no-normalise contradicts --normalise and --target", kCliUsage);
    bool numberOk = true;
    const double targetValue = parser.isSet(target) ? parser.value(target).toDouble(&numberOk) : 0;
    if (!numberOk || targetValue > 0 || targetValue < -70)
        return cli_fail(kCommand, "--target takes a loudness in LUFS between -70 and 0", kCliUsage);
    const double ceilingValue = parser.isSet(ceiling) ? parser.value(ceiling).toDouble(&numberOk) : 0;
    if (!numberOk || ceilingValue > 0 || ceilingValue < -20)
        return cli_fail(kCommand, "--true-peak takes a ceiling in dBTP between -20 and 0", kCliUsage);

    // The show.
    request.workFolder = QDir(parser.value(workFolder)).absolutePath() + "/";
    const QString showPath = request.workFolder + "show.AEShow";
    if (!QFileInfo(showPath).isFile()) return cli_fail(kCommand, "no show in " + request.workFolder);
    AEIngest::workFolder = request.workFolder;
    AEIngest ingest(request.workFolder + "AssetIngests");
    const auto show = AEShow::load(showPath);
    if (!show || (show->name.isEmpty() && show->episodes.empty()))
        return cli_fail(kCommand, "cannot read the show " + showPath);
    const auto episode = findEpisode(*show, parser.value(episodeOption));
    if (!episode)
        return cli_fail(kCommand, "no episode \"" + parser.value(episodeOption) + "\" in " + showPath);
    episode->loadTimeline();
    if (!episode->timeline) return cli_fail(kCommand, "cannot read the timeline of " + episode->episodeId);

    // The destination.
    const QFileInfo destFolder(QFileInfo(request.dest).absolutePath());
    if (!destFolder.isDir() || !destFolder.isWritable())
        return cli_fail(kCommand, "cannot write in " + destFolder.absoluteFilePath());

    Mp3::loadSettings();
    request.options = EpisodeExport::defaultOptions(request.dest, static_cast<int>(episode->nChannels));
    if (parser.isSet(noNormalise)) request.options.loudness.normalise = false;
    if (parser.isSet(normalise) || parser.isSet(target)) request.options.loudness.normalise = true;
    if (parser.isSet(target)) request.options.loudness.target = targetValue;
    if (parser.isSet(ceiling)) request.options.loudness.truePeakCeiling = ceilingValue;
    request.options.reportPath = parser.value(reportOption);
    request.options.chaptersJsonPath = parser.value(chaptersJson);
    request.options.podloveChaptersPath = parser.value(podlove);

    auto printer = std::make_shared<ProgressPrinter>();
    const auto job =
        EpisodeExport::make(episode->timeline, episode, show, request.options,
                            [printer](const QString& phase, double percent) { (*printer)(phase, percent); });
    if (!job->missingMedia().isEmpty())
        return cli_fail(kCommand, "missing media: " + job->missingMedia().join(", "));

    // The render runs on a worker while this thread turns the event loop its timers need.
    QEventLoop loop;
    ExportOutcome outcome;
    Queue::execute([&] {
        outcome = job->perform();
        QMetaObject::invokeMethod(
            &loop, [&loop] { loop.quit(); }, Qt::QueuedConnection);
    });
    loop.exec();
    if (!outcome.done) return cli_fail(kCommand, outcome.error);
    cli_print(outcome.report.toText());
    return kCliOk;
}
