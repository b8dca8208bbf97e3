#include "ui/cleaning/BrightwashAssetAlertVC.h"

#include "cleaning/Brightwash.h"
#include "foundation/Interaction.h"
#include "project/model/AEAsset.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

BrightwashAssetAlertVC::BrightwashAssetAlertVC(std::shared_ptr<AEAsset> asset, int assetRow,
                                               std::function<void(int, bool)> delegate, QWidget* parent)
    : QDialog(parent), delegate(std::move(delegate)), asset(std::move(asset)), assetRow(assetRow) {
    setWindowTitle(tr("Clean"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        new QLabel(tr("Create a cleaned version of \"%1\"").arg(this->asset ? this->asset->name : "")));
    radioLeave = new QRadioButton(tr("Leave the original in the list"));
    radioRemove = new QRadioButton(tr("Remove the original from the list"));
    radioLeave->setChecked(true);
    layout->addWidget(radioLeave);
    layout->addWidget(radioRemove);
    connect(radioLeave, &QRadioButton::clicked, this, [this] { radio = "Leave"; });
    connect(radioRemove, &QRadioButton::clicked, this, [this] { radio = "remove"; });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { okPressed(); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { forgetIt_pressed(); });
    layout->addWidget(buttons);
}

void BrightwashAssetAlertVC::okPressed() {
    const BrightwashSetting settings = Brightwash::loadSettings();
    const bool hasMarkers = asset && !asset->markers.empty();
    if (!hasMarkers || !settings.doRemovePauses ||
        ih_alertOkCancel("Warning",
                         "You are about to Brightwash a file reducing the pauses. This asset contains "
                         "markers and thy will be lost. Are you sure to continue?"))
        doBrightwash();
    accept();
}

void BrightwashAssetAlertVC::forgetIt_pressed() {
    reject();
}

void BrightwashAssetAlertVC::doBrightwash() {
    if (delegate) delegate(assetRow, radio != "Leave");
}
