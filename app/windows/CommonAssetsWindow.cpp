#include "app/windows/CommonAssetsWindow.h"

#include "app/windows/AssetListWidget.h"
#include "foundation/Interaction.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "project/panels/AEAssetMiniInspectorVC.h"
#include "project/panels/AEAssetVC.h"

#include <QMenu>
#include <QVBoxLayout>

CommonAssetsWindow::CommonAssetsWindow(QWidget* parent)
    : QWidget(parent), list_(new AssetListWidget("commonAssetWindow", this)) {
    setWindowFlag(Qt::Window);
    setWindowTitle(tr("Common Assets"));
    setObjectName("commonAssetW");
    list_->setReorderable(true);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(list_);
    resize(320, 480);

    connect(list_, &AssetListWidget::filesDropped, this, [this](const QStringList& paths) {
        if (filesDropped) filesDropped(paths);
        reload();
    });
    connect(list_, &AssetListWidget::rowMoved, this, &CommonAssetsWindow::moveAsset);
    connect(list_, &QListWidget::itemDoubleClicked, this,
            [this](QListWidgetItem* item) { openInspector(list_->row(item)); });
    connect(list_, &QWidget::customContextMenuRequested, this, [this](QPoint pos) {
        const int row = list_->indexAt(pos).row();
        if (row < 0) return;
        auto* menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->addAction(tr("Inspector…"), this, [this, row] { openInspector(row); });
        menu->addAction(tr("Name and Type…"), this, [this, row] { openMiniInspector(row)->open(); });
        menu->addAction(tr("Type…"), this, [this, row] { chooseType(row); });
        menu->addAction(tr("Remove…"), this, [this, row] { removePressed(row); });
        menu->popup(list_->viewport()->mapToGlobal(pos));
    });
    reload();
}

void CommonAssetsWindow::reload() {
    list_->setAssets(AEAssetListVCGlobal);
}

void CommonAssetsWindow::changed() {
    if (zendrelShow) zendrelShow->commonAssets = AEAssetListVCGlobal;
    saveShow();
    mustUpdate = true;
    reload();
}

void CommonAssetsWindow::moveAsset(int from, int to) {
    auto& assets = AEAssetListVCGlobal;
    const int n = static_cast<int>(assets.size());
    if (from < 0 || from >= n || to < 0 || to >= n || from == to) return;
    auto moved = assets[static_cast<size_t>(from)];
    assets.erase(assets.begin() + from);
    assets.insert(assets.begin() + to, moved);
    changed();
}

bool CommonAssetsWindow::removePressed(int row) {
    const auto asset = list_->assetAt(row);
    if (!asset || !ih_alertOkCancel("Warning!", "You *really* want to remove this asset?")) return false;
    std::erase(AEAssetListVCGlobal, asset);
    changed();
    return true;
}

AEAssetMiniInspectorVC* CommonAssetsWindow::openMiniInspector(int row) {
    const auto asset = list_->assetAt(row);
    if (!asset) return nullptr;
    auto* panel = new AEAssetMiniInspectorVC(asset, this);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->delegate = [this, asset](const QString& name, AEAssetType type) {
        if (!name.isEmpty()) asset->name = name;
        asset->type = type;
        AEAssetDB::saveAsset(asset);
        changed();
    };
    return panel;
}

void CommonAssetsWindow::chooseType(int row) {
    const auto asset = list_->assetAt(row);
    if (!asset) return;
    auto* selector = new AEAssetTypeSelectorVIewController(asset->type, this);
    selector->setAttribute(Qt::WA_DeleteOnClose);
    connect(selector, &AEAssetTypeSelectorVIewController::assetTypeChosen, this,
            [this, asset](AEAssetType type) {
                asset->type = type;
                AEAssetDB::saveAsset(asset);
                changed();
            });
    selector->open();
}

void CommonAssetsWindow::openInspector(int row) {
    const auto asset = list_->assetAt(row);
    if (!asset) return;
    auto* panel = new AEAssetVC(asset, this);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->assetInspectorVCDone = [this](const std::shared_ptr<AEAsset>& edited, const QString&,
                                         AEAssetType) {
        AEAssetDB::saveAsset(edited);
        changed();
    };
    panel->open();
}
