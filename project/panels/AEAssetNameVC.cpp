#include "project/panels/AEAssetNameVC.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

AEAssetNameVC::AEAssetNameVC(const QString& current, QWidget* parent)
    : QDialog(parent), assetName(new QLineEdit(current, this)) {
    setWindowTitle(tr("Asset Name"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(assetName);
    layout->addWidget(buttons);
    assetName->selectAll();
    resize(360, 90);
    connect(buttons, &QDialogButtonBox::accepted, this, &AEAssetNameVC::ok_pressed);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void AEAssetNameVC::ok_pressed() {
    const QString name = assetName->text().trimmed();
    if (delegate) delegate(name);
    emit assetNameChosen(name, returnTo);
    accept();
}
