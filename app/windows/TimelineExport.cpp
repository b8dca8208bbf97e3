#include "app/windows/TimelineExport.h"

#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "render/ExportDone.h"
#include "render/Mp3.h"
#include "render/SoXer.h"
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

constexpr int kFrequency = 44100;
constexpr int kBitsPerSample = 16;
// The share of the bar the lanes take before the encoder starts (SoXer's split).
constexpr double kLanesShare = 30.0;

std::atomic<bool> exporting{false};
QPointer<QMessageBox> lastDoneAlert;

int channelsOf(const std::shared_ptr<AEEpisode>& episode) {
    return episode ? static_cast<int>(episode->nChannels) : 2;
}

QString phaseFor(double percent, bool mp3) {
    if (percent < kLanesShare || !mp3) return "Rendering items and lanes...";
    return "Encoding MP3...";
}

void showDone(const QString& path, QWidget* parent) {
    auto* box =
        new QMessageBox(QMessageBox::Information, "Done",
                        "Successfully Exported " + QFileInfo(path).fileName() + ".", QMessageBox::Ok, parent);
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
    QObject::connect(dialog, &QDialog::accepted, dialog, [dialog, timeline, episode, parent] {
        const QString path = dialog->selectedPath();
        prefs_setValueString("TimelineExport.folder", QFileInfo(path).absolutePath());
        exportTo(path, timeline, episode, parent);
    });
    dialog->open();
}

void TimelineExport::exportTo(const QString& path, const std::shared_ptr<AETimeLine>& timeline,
                              const std::shared_ptr<AEEpisode>& episode, QWidget* parent,
                              std::function<void(bool)> finished) {
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
    const bool mp3 = QFileInfo(path).suffix().toLower() == "mp3";
    const QString title = episode ? episode->title : QString();
    const QString notes = episode ? episode->notes : QString();
    auto loading = LoadingWindow::make("Export", "Exporting " + QFileInfo(path).fileName(), phaseFor(0, mp3),
                                       {}, "Zendrel_rolling_v2_", false);
    const std::weak_ptr<LoadingWindow> weakLoading = loading;
    auto soxer = SoXer::make(path, kFrequency, channelsOf(episode), kBitsPerSample, timeline, title, notes,
                             QString(), [weakLoading, mp3](double percent) {
                                 if (auto window = weakLoading.lock()) {
                                     window->setDescription(phaseFor(percent, mp3));
                                     window->setPercentage(percent / 100.0);
                                 }
                             });
    soxer->timeline->getCollectedItems(); // the snapshot's marker list reads them
    soxer->chapters = exportChapters(soxer->timeline);
    const QPointer<QWidget> guardedParent(parent);
    const auto show = zendrelShow;
    soxer->performAsync(
        false, [soxer, loading, path, mp3, episode, show, guardedParent, finished](bool done) {
            // The tags go in on the render thread too; only the alerts come back.
            const bool rendered = done && QFileInfo::exists(path);
            bool ok = rendered;
            if (ok && mp3) {
                loading->setDescription("Writing tags, picture and chapters...");
                ok = exportDone(path, soxer->timeline, episode, show); // alerts on its own failure
            }
            loading->setPercentage(1.0);
            loading->dismiss();
            XMain::execute([ok, rendered, path, guardedParent, finished] {
                exporting = false;
                if (ok)
                    showDone(path, guardedParent);
                else if (!rendered)
                    userInteraction()->alert("Error", "The export to " + path + " failed.");
                if (finished) finished(ok);
            });
        });
}
