#pragma once
// Small panels for a list row. AEAssetTypeSelectorVIewController: the six types, a press chooses and
// closes (assetTypeChosen). AEAssetMiniInspectorVC: the same choice plus the name; OK hands both to
// the delegate, Cancel nothing. Main thread.

#include "project/model/AEAssetType.h"

#include <QDialog>
#include <functional>
#include <memory>

class AEAsset;
class AssetTypeButtons;
class QLineEdit;
class QPushButton;

class AEAssetTypeSelectorVIewController : public QDialog {
    Q_OBJECT
public:
    explicit AEAssetTypeSelectorVIewController(AEAssetType current, QWidget* parent = nullptr);
    AssetTypeButtons* buttons;

signals:
    void assetTypeChosen(AEAssetType type);
};

class AEAssetMiniInspectorVC : public QDialog {
    Q_OBJECT
public:
    explicit AEAssetMiniInspectorVC(const std::shared_ptr<AEAsset>& asset, QWidget* parent = nullptr);

    std::function<void(const QString& name, AEAssetType type)> delegate;
    QLineEdit* assetName;
    AssetTypeButtons* buttons;
    QPushButton* okButton;
    AEAssetType assetType;
};
