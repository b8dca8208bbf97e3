#include "app/windows/TimelineExport.h"

#include "foundation/Execution.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "render/EpisodeExport.h"
#include "render/Mp3.h"
#include "render/tools/ToolFilePaths.h"
#include "timeline/model/AETimeLine.h"
#include "ui/CustomSaveDialog.h"
#include "ui/LoadingWindow.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <QUrl>
#include <atomic>

namespace {

constexpr int kFrequency = 44100; // of the sizes foreseen
constexpr int kBitsPerSample = 16;

std::atomic<bool> exporting{false};
QPointer<QMessageBox> lastDoneAlert;

int channelsOf(const std::shared_ptr<AEEpisode>& episode) {
    return episode ? static_cast<int>(episode->nChannels) : 2;
}

QString phaseText(const QString& phase) {
    if (phase == "Rendering") return "Rendering items and lanes...";
    if (phase == "Measuring") return "Measuring the loudness...";
    if (phase == "Normalising") return "Normalising the loudness...";
    if (phase == "Encoding") return "Encoding MP3...";
    if (phase == "Tagging") return "Writing tags, picture and chapters...";
    return "Checking the result...";
}

void showDone(const QString& path, const ExportReport& report, QWidget* parent) {
    auto* box =
        new QMessageBox(QMessageBox::Information, "Done",
                        "Successfully Exported " + QFileInfo(path).fileName() + ".", QMessageBox::Ok, parent);
    box->setInformativeText(report.toText());
    box->setObjectName("exportDoneAlert");
    box->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* reveal = box->addButton("Show in Folder", QMessageBox::ActionRole);
    QObject::connect(reveal, &QPushButton::clicked, box, [path] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
    });
    lastDoneAlert = box;
    box->open();
}

QString writeProblem(const QString& path) {
    const QFileInfo folder(QFileInfo(path).absolutePath());
    if (!folder.isDir()) return "The folder " + folder.absoluteFilePath() + " does not exist.";
    // A real file tells what permission bits do not (read-only mounts, root).
    QTemporaryFile probe(folder.absoluteFilePath() + "/.zendrel-export-XXXXXX");
    if (!folder.isWritable() || !probe.open())
        return "Cannot write into the folder " + folder.absoluteFilePath() + ".";
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix != "mp3" && suffix != "wav") return "Only MP3 and WAV files can be exported.";
    return QString();
}

} // namespace

std::vector<int64_t> TimelineExport::expectedSizes(double duration, int nChannels) {
    return {Mp3::fileSizeByDuration(duration),
            static_cast<int64_t>(duration * kFrequency * nChannels * (kBitsPerSample / 8))};
}

bool TimelineExport::running() {
    return exporting;
}

QMessageBox* TimelineExport::doneAlert() {
    return lastDoneAlert;
}

void TimelineExport::export_pressed(const std::shared_ptr<AETimeLine>& timeline,
                                    const std::shared_ptr<AEEpisode>& episode, QWidget* parent) {
    if (!timeline) return;
    timeline->pause();
    if (exporting) {
        userInteraction()->alert("Export", "An export is already running. Please wait until it ends.");
        return;
    }
    const QString name =
        episode && !episode->title.trimmed().isEmpty() ? episode->title.trimmed() : "Untitled";
    const QString folder = prefs_getValueString(
        "TimelineExport.folder", QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
    auto* dialog =
        new CustomSaveDialog("Export", name, folder, {"mp3", "wav"},
                             expectedSizes(timeline->getTimelineOutTime(), channelsOf(episode)), parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->offerLoudness(channelsOf(episode));
    QObject::connect(dialog, &QDialog::accepted, dialog, [dialog, timeline, episode, parent] {
        const QString path = dialog->selectedPath();
        prefs_setValueString("TimelineExport.folder", QFileInfo(path).absolutePath());
        const auto loudness = dialog->loudness();
        const bool mp3 = QFileInfo(path).suffix().toLower() == "mp3";
        // What was chosen is what the next export of this format starts with.
        if (loudness) loudness_saveSettings(mp3, channelsOf(episode), *loudness);
        exportTo(path, timeline, episode, parent, {},
                 ExportChoice{loudness.value_or(loudness_settings(mp3, channelsOf(episode))),
                              dialog->sideFilesWanted()});
    });
    dialog->open();
}

void TimelineExport::exportTo(const QString& path, const std::shared_ptr<AETimeLine>& timeline,
                              const std::shared_ptr<AEEpisode>& episode, QWidget* parent,
                              std::function<void(bool)> finished, const std::optional<ExportChoice>& choice) {
    if (!timeline) return;
    if (exporting.exchange(true)) {
        userInteraction()->alert("Export", "An export is already running. Please wait until it ends.");
        return;
    }
    if (const QString problem = writeProblem(path); !problem.isEmpty()) {
        exporting = false;
        userInteraction()->alert("Error", problem);
        if (finished) finished(false);
        return;
    }
    qxLog("TimelineExport " + path);
    ExportOptions options = EpisodeExport::defaultOptions(path, channelsOf(episode));
    if (choice) {
        options.loudness = choice->loudness;
        if (choice->sideFiles) {
            const QString base = toolFilePaths::withoutExtension(path);
            options.reportPath = base + "_report.json";
            if (QFileInfo(path).suffix().toLower() == "mp3") {
                options.chaptersJsonPath = base + "_chapters.json";
                options.podloveChaptersPath = base + "_chapters.xml";
            }
        }
    }
    auto loading = LoadingWindow::make("Export", "Exporting " + QFileInfo(path).fileName(),
                                       phaseText("Rendering"), {}, "Zendrel_rolling_v2_", false);
    const std::weak_ptr<LoadingWindow> weakLoading = loading;
    auto job = EpisodeExport::make(timeline, episode, zendrelShow, options,
                                   [weakLoading](const QString& phase, double percent) {
                                       if (auto window = weakLoading.lock()) {
                                           window->setDescription(phaseText(phase));
                                           window->setPercentage(percent / 100.0);
                                       }
                                   });
    const QPointer<QWidget> guardedParent(parent);
    Queue::execute([job, loading, path, guardedParent, finished] {
        const ExportOutcome outcome = job->perform();
        loading->setPercentage(1.0);
        loading->dismiss();
        XMain::execute([outcome, path, guardedParent, finished] {
            exporting = false;
            if (outcome.done)
                showDone(path, outcome.report, guardedParent);
            else
                userInteraction()->alert("Error",
                                         "The export to " + path + " failed: " + outcome.error + ".");
            if (finished) finished(outcome.done);
        });
    });
}
