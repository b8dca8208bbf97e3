#include "ui/ducking/AEAutoDuckingVC.h"

#include "project/model/DuckingSettings.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QVBoxLayout>

AEAutoDuckingVC::AEAutoDuckingVC(QWidget* parent)
    : QDialog(parent), chkDuckToSpeech(new QCheckBox(tr("Duck under speech"), this)),
      chkDuckToSFX(new QCheckBox(tr("Duck under sound effects"), this)),
      chkDuckToJingles(new QCheckBox(tr("Duck under jingles"), this)),
      chkDeleteKFs(new QCheckBox(tr("Delete existing keyframes first"), this)) {
    setWindowTitle(tr("Automatic Ducking"));
    setModal(true);
    const AEDuckingSettings settings;
    chkDuckToSpeech->setChecked(settings.duckToSpeech);
    chkDuckToSFX->setChecked(settings.duckToSFX);
    chkDuckToJingles->setChecked(settings.duckToJingles);
    chkDeleteKFs->setChecked(settings.deleteKF);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &AEAutoDuckingVC::okPressed);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    for (QWidget* w : {static_cast<QWidget*>(chkDuckToSpeech), static_cast<QWidget*>(chkDuckToSFX),
                       static_cast<QWidget*>(chkDuckToJingles), static_cast<QWidget*>(chkDeleteKFs),
                       static_cast<QWidget*>(buttons)})
        layout->addWidget(w);
}

void AEAutoDuckingVC::okPressed() {
    // The advertisements' choice has no box here and keeps its saved value.
    AEDuckingSettings settings;
    settings.duckToSpeech = chkDuckToSpeech->isChecked();
    settings.duckToSFX = chkDuckToSFX->isChecked();
    settings.duckToJingles = chkDuckToJingles->isChecked();
    settings.deleteKF = chkDeleteKFs->isChecked();
    settings.save();
    accept();
    if (okCallback) okCallback();
}
