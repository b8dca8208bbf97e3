#include "project/panels/AEAssetMiniInspectorVC.h"

#include "project/model/AEAsset.h"
#include "project/panels/AssetTypeButtons.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

AEAssetTypeSelectorVIewController::AEAssetTypeSelectorVIewController(AEAssetType current, QWidget* parent)
    : QDialog(parent), buttons(new AssetTypeButtons(current, this)) {
    setWindowTitle(tr("Asset Type"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buttons);
    connect(buttons, &AssetTypeButtons::typePressed, this, [this](AEAssetType type) {
        emit assetTypeChosen(type);
        accept();
    });
}

AEAssetMiniInspectorVC::AEAssetMiniInspectorVC(const std::shared_ptr<AEAsset>& asset, QWidget* parent)
    : QDialog(parent), assetName(new QLineEdit(asset->name, this)),
      buttons(new AssetTypeButtons(asset->type, this)), assetType(asset->type) {
    setWindowTitle(asset->name);
    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    okButton = box->button(QDialogButtonBox::Ok);
    okButton->setDefault(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(assetName);
    layout->addWidget(buttons);
    layout->addWidget(box);
    connect(buttons, &AssetTypeButtons::typePressed, this, [this](AEAssetType type) { assetType = type; });
    connect(box, &QDialogButtonBox::accepted, this, [this] {
        if (delegate) delegate(assetName->text().trimmed(), assetType);
        accept();
    });
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
}
