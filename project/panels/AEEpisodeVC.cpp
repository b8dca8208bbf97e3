#include "project/panels/AEEpisodeVC.h"

#include "foundation/DateText.h"
#include "foundation/Execution.h"
#include "foundation/Interaction.h"
#include "foundation/QXTimer.h"
#include "foundation/Timecode.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "project/panels/ArtworkCheck.h"
#include "ui/DragImageAreaView.h"
#include "ui/LoadingWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

AEEpisodeVC::AEEpisodeVC(std::shared_ptr<AEEpisode> episodeToEdit, QWidget* parent)
    : QDialog(parent), episode(std::move(episodeToEdit)), titleF(new QLineEdit(this)),
      id(new QLineEdit(this)), lenght(new QLabel(this)), created(new QLabel(this)),
      modified(new QLabel(this)), url(new QLineEdit(this)),
      dragImageLabel(new QLabel(tr("Drag an image here"), this)), image(new DragImageAreaView(this)),
      publicationDate(new QDateTimeEdit(this)), chkReady(new QCheckBox(tr("Ready"), this)),
      notes(new QPlainTextEdit(this)), mono(new QRadioButton(tr("Mono"), this)),
      stereo(new QRadioButton(tr("Stereo"), this)) {
    setWindowTitle(tr("Episode"));
    publicationDate->setCalendarPopup(true);
    publicationDate->setDisplayFormat("dd.MM.yyyy HH:mm");
    notes->setTabChangesFocus(true);
    image->setFixedSize(160, 160);
    dragImageLabel->setAlignment(Qt::AlignCenter);
    dragImageLabel->setWordWrap(true);
    auto* choose = new QPushButton(tr("Choose Image..."), this);

    auto* channels = new QHBoxLayout;
    channels->addWidget(mono);
    channels->addWidget(stereo);
    channels->addStretch();
    auto* form = new QFormLayout;
    form->addRow(tr("Episode ID"), id);
    form->addRow(tr("Title"), titleF);
    form->addRow(tr("Show notes"), notes);
    form->addRow(tr("Address"), url);
    form->addRow(tr("Publication"), publicationDate);
    form->addRow(QString(), chkReady);
    form->addRow(tr("Channels"), channels);
    form->addRow(tr("Length"), lenght);
    form->addRow(tr("Created"), created);
    form->addRow(tr("Modified"), modified);

    auto* top = imageBesideFields(image, dragImageLabel, choose, form);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    okButton = buttons->button(QDialogButtonBox::Ok);
    okButton->setDefault(true);
    exportButton = buttons->addButton(tr("Export Bundle..."), QDialogButtonBox::ActionRole);
    auto* copyNotes = buttons->addButton(tr("Copy Show Notes"), QDialogButtonBox::ActionRole);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    resize(640, 420);

    image->onDropped = [this](const QStringList& paths) { dragged(paths); };
    connect(choose, &QPushButton::clicked, this, [this] {
        const QString chosen = fu_selectFile(tr("Choose Episode Image"), "", {"png", "jpg", "jpeg"},
                                             AEIngest::documentsFolder());
        if (!chosen.isEmpty()) dragged({chosen});
    });
    connect(exportButton, &QPushButton::clicked, this, &AEEpisodeVC::exportEpisode);
    connect(copyNotes, &QPushButton::clicked, this, &AEEpisodeVC::showNotesCopy_pressed);
    connect(buttons, &QDialogButtonBox::accepted, this, &AEEpisodeVC::ok_pressed);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    fill();
    t = QXTimer::loop("AEEpisodeVC", 1.0, false, [this] { updateDate(); });
}

AEEpisodeVC::~AEEpisodeVC() {
    if (t) t->stop();
}

void AEEpisodeVC::fill() {
    titleF->setText(episode->title);
    id->setText(episode->episodeId);
    notes->setPlainText(episode->notes);
    url->setText(episode->url);
    publicationDate->setDateTime(episode->publicationDate);
    chkReady->setChecked(episode->status != AEEpisodeStatus::notReady);
    (episode->nChannels == AENChannels::mono ? mono : stereo)->setChecked(true);
    lenght->setText(tc_getDurationShort(episode->duration));
    if (!episode->image.isNull()) image->setImage(episode->image);
    if (!episode->imagePath.isEmpty()) dragImageLabel->setText(QFileInfo(episode->imagePath).fileName());
    setWindowTitle(tr("Episode: ") + episode->episodeId + " " + episode->title);
    updateDate();
}

void AEEpisodeVC::updateDate() {
    created->setText(du_getSimpleDate(episode->creationDate, true));
    modified->setText(du_getSimpleDate(episode->modificationDate, true));
}

void AEEpisodeVC::dragged(const QStringList& paths) {
    if (paths.isEmpty()) return;
    draggedImagePath = paths.front();
    ingestedImagePath = AEIngest::ingest(draggedImagePath).value_or("");
    if (ingestedImagePath.isEmpty()) {
        Warning("Image", "Cannot read " + draggedImagePath);
        return;
    }
    artwork_warnIfRejected(ingestedImagePath);
    image->setImage(QImage(ingestedImagePath));
    dragImageLabel->setText(QFileInfo(draggedImagePath).fileName());
}

void AEEpisodeVC::showNotesCopy_pressed() {
    const QString suffix = zendrelShow ? zendrelShow->notesSuffix : QString();
    QApplication::clipboard()->setText(notes->toPlainText() + "\n\n" + suffix);
}

void AEEpisodeVC::exportEpisode() {
    const QString path = QFileDialog::getSaveFileName(
        this, tr("Export Episode"), AEIngest::documentsFolder() + "/" + episode->episodeId + ".zendepisode",
        tr("Episode bundles (*.zendepisode)"));
    if (!path.isEmpty()) doExport(path);
}

void AEEpisodeVC::doExport(const QString& path, std::function<void(const QString&)> done) {
    auto target = episode;
    auto window = std::make_shared<std::shared_ptr<LoadingWindow>>();
    *window = LoadingWindow::make(
        "Exporting", "Exporting " + target->title, "Please wait just a little...",
        [target, path, window, done] {
            Queue::execute([target, path, window, done] {
                const QString error =
                    target->exportEpisode(path, true, [window](double f) { (*window)->setPercentage(f); });
                XMain::execute(
                    [window, error, done] {
                        (*window)->dismiss();
                        window->reset();
                        if (!error.isEmpty()) Warning("Export", "The episode was not exported: " + error);
                        if (done) done(error);
                    },
                    true);
            });
        },
        "Zendrel_rolling_v2_");
}

void AEEpisodeVC::ok_pressed() {
    episode->title = titleF->text();
    episode->episodeId = id->text();
    episode->notes = notes->toPlainText();
    episode->url = url->text();
    episode->publicationDate = publicationDate->dateTime();
    // Ready means published once its date has come.
    if (!chkReady->isChecked())
        episode->status = AEEpisodeStatus::notReady;
    else
        episode->status = episode->publicationDate <= QDateTime::currentDateTime()
                              ? AEEpisodeStatus::published
                              : AEEpisodeStatus::ready;
    episode->nChannels = mono->isChecked() ? AENChannels::mono : AENChannels::stereo;
    if (!ingestedImagePath.isEmpty()) {
        episode->imagePath = ingestedImagePath;
        episode->image = QImage(ingestedImagePath);
    }
    episode->modified();
    if (episodeVCDone) episodeVCDone(episode);
    accept();
}
