#include "project/panels/AEShowVC.h"

#include "foundation/Interaction.h"
#include "foundation/Timecode.h"
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
#include <cmath>

AEShowVC::AEShowVC(std::shared_ptr<AEShow> showToEdit, QWidget* parent)
    : QDialog(parent), editedShow(std::move(showToEdit)), titleField(new QLineEdit(this)),
      imageArea(new DragImageAreaView(this)), imageLabel(new QLabel(tr("Drag the show's image here"), this)),
      descriptionField(new QPlainTextEdit(this)), nEpisodes(new QLabel(this)),
      averageLength(new QLabel(this)), totalLength(new QLabel(this)), urlField(new QLineEdit(this)),
      feedField(new QLineEdit(this)), notesSuffix(new QPlainTextEdit(this)) {
    setWindowTitle(tr("Show"));
    imageArea->setFixedSize(180, 180);
    imageLabel->setAlignment(Qt::AlignCenter);
    imageLabel->setWordWrap(true);
    descriptionField->setTabChangesFocus(true);
    notesSuffix->setTabChangesFocus(true);
    notesSuffix->setPlaceholderText(tr("Follows the notes of every episode"));
    urlField->setPlaceholderText("https://");
    feedField->setPlaceholderText("https://");
    auto* choose = new QPushButton(tr("Choose Image..."), this);

    auto* form = new QFormLayout;
    form->addRow(tr("Name"), titleField);
    form->addRow(tr("Description"), descriptionField);
    form->addRow(tr("Site"), urlField);
    form->addRow(tr("Feed"), feedField);
    form->addRow(tr("Notes suffix"), notesSuffix);
    form->addRow(tr("Episodes"), nEpisodes);
    form->addRow(tr("Average length"), averageLength);
    form->addRow(tr("Total length"), totalLength);
    auto* top = imageBesideFields(imageArea, imageLabel, choose, form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    okButton = buttons->button(QDialogButtonBox::Ok);
    okButton->setDefault(true);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    resize(680, 440);

    imageArea->onDropped = [this](const QStringList& paths) { dragged(paths); };
    connect(choose, &QPushButton::clicked, this, [this] {
        const QString chosen =
            fu_selectFile(tr("Choose Show Image"), "", {"png", "jpg", "jpeg"}, AEIngest::documentsFolder());
        if (!chosen.isEmpty()) dragged({chosen});
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &AEShowVC::ok_pressed);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    fill();
}

void AEShowVC::fill() {
    titleField->setText(editedShow->name);
    descriptionField->setPlainText(editedShow->notes);
    urlField->setText(editedShow->url);
    feedField->setText(editedShow->feed);
    notesSuffix->setPlainText(editedShow->notesSuffix);
    if (!editedShow->image.isNull()) imageArea->setImage(editedShow->image);
    if (!editedShow->imagePath.isEmpty()) imageLabel->setText(QFileInfo(editedShow->imagePath).fileName());
    int live = 0;
    for (const auto& episode : editedShow->episodes)
        live += episode && !episode->deleted ? 1 : 0;
    nEpisodes->setText(QString::number(live));
    const double average = editedShow->getAverageDuration();
    averageLength->setText(std::isnan(average) ? QString("-") : tc_getDurationShort(average));
    totalLength->setText(tc_getDurationShort(editedShow->getTotalDuration()));
}

void AEShowVC::dragged(const QStringList& paths) {
    if (paths.isEmpty()) return;
    const auto ingested = AEIngest::ingest(paths.front());
    if (!ingested) {
        Warning("Image", "Cannot read " + paths.front());
        return;
    }
    droppedImagePath = paths.front();
    tmpImagePath = *ingested;
    tmpImage = QImage(tmpImagePath);
    artwork_warnIfRejected(tmpImagePath);
    imageArea->setImage(tmpImage);
    imageLabel->setText(QFileInfo(droppedImagePath).fileName());
}

void AEShowVC::ok_pressed() {
    editedShow->name = titleField->text();
    editedShow->notes = descriptionField->toPlainText();
    editedShow->url = urlField->text();
    editedShow->feed = feedField->text();
    editedShow->notesSuffix = notesSuffix->toPlainText();
    if (!tmpImagePath.isEmpty()) {
        editedShow->imagePath = droppedImagePath;
        editedShow->ingestedImagePath = tmpImagePath;
        editedShow->image = tmpImage;
    }
    if (editedShow == zendrelShow)
        saveShow();
    else
        editedShow->save(AEIngest::workFolder + "show.AEShow");
    accept();
}
