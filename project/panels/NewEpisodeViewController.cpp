#include "project/panels/NewEpisodeViewController.h"

#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "project/panels/ArtworkCheck.h"
#include "ui/DragImageAreaView.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

NewEpisodeViewController::NewEpisodeViewController(QWidget* parent)
    : QDialog(parent), id_(new QLineEdit(this)), title_(new QLineEdit(this)),
      description_(new QPlainTextEdit(this)), dragArea_(new DragImageAreaView(this)),
      dragLabel_(new QLabel(tr("Drag an image here"), this)),
      choose_(new QPushButton(tr("Choose Image..."), this)), ok_(nullptr) {
    setWindowTitle(tr("New Episode"));
    // A sheet: blocks its own window only.
    setWindowModality(Qt::WindowModal);
    id_->setPlaceholderText(tr("e.g. 042"));
    title_->setPlaceholderText(tr("Episode title"));
    description_->setPlaceholderText(tr("Show notes"));
    description_->setTabChangesFocus(true);
    dragLabel_->setAlignment(Qt::AlignCenter);
    dragLabel_->setForegroundRole(QPalette::PlaceholderText);
    dragLabel_->setWordWrap(true);
    dragArea_->setFixedSize(160, 160);

    auto* form = new QFormLayout;
    form->addRow(tr("Episode ID"), id_);
    form->addRow(tr("Title"), title_);
    form->addRow(tr("Description"), description_);

    auto* top = imageBesideFields(dragArea_, dragLabel_, choose_, form);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    ok_ = buttons->button(QDialogButtonBox::Ok);
    ok_->setDefault(true);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    resize(560, 300);

    dragArea_->onDropped = [this](const QStringList& paths) { imageDropped(paths); };
    connect(choose_, &QPushButton::clicked, this, &NewEpisodeViewController::chooseImage);
    connect(buttons, &QDialogButtonBox::accepted, this, &NewEpisodeViewController::ok_pressed);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void NewEpisodeViewController::imageDropped(const QStringList& paths) {
    if (paths.isEmpty()) return;
    draggedImagePath_ = paths.front();
    ingestedPath_ = AEIngest::ingest(draggedImagePath_).value_or("");
    if (!ingestedPath_.isEmpty()) artwork_warnIfRejected(ingestedPath_);
    dragArea_->setImage(QImage(ingestedPath_.isEmpty() ? draggedImagePath_ : ingestedPath_));
    dragLabel_->setText(QFileInfo(draggedImagePath_).fileName());
}

void NewEpisodeViewController::chooseImage() {
    const QString chosen = fu_selectFile(tr("Choose Episode Image"), "",
                                         {"png", "jpg", "jpeg", "gif", "bmp", "tif", "tiff", "webp"},
                                         AEIngest::documentsFolder());
    if (!chosen.isEmpty()) imageDropped({chosen});
}

void NewEpisodeViewController::ok_pressed() {
    auto episode =
        std::make_shared<AEEpisode>(id_->text(), title_->text(), ingestedPath_, AEIngest::workFolder);
    episode->notes = description_->toPlainText();
    qxLog("New episode: " + episode->episodeId + " " + episode->id);
    if (zendrelShow) zendrelShow->episodes.push_back(episode);
    saveShow();
    if (openDelegate) openDelegate(episode);
    accept();
}
