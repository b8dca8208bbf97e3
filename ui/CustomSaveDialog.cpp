#include "ui/CustomSaveDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

CustomSaveDialog::CustomSaveDialog(const QString& title, const QString& name, const QString& folder,
                                   const QStringList& availableExtensions,
                                   std::optional<std::vector<int64_t>> sizes, QWidget* parent)
    : QDialog(parent), nameField(new QLineEdit(name, this)), folderField(new QLineEdit(folder, this)),
      formatPopup(new QComboBox(this)), sizeLabel(new QLabel(this)),
      browseButton(new QPushButton(tr("Browse..."), this)), availableExtensions_(availableExtensions),
      sizes_(std::move(sizes)) {
    setObjectName("CustomSaveDialog");
    setWindowTitle(title);
    // Each format names its expected size, so the choice is made knowing it.
    for (int i = 0; i < availableExtensions_.size(); ++i) {
        QString label = availableExtensions_[i].toUpper();
        if (sizes_ && i < int(sizes_->size())) label += "  (" + sizeText((*sizes_)[size_t(i)]) + ")";
        formatPopup->addItem(label, availableExtensions_[i]);
    }
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(folderField, 1);
    folderRow->addWidget(browseButton);
    auto* form = new QFormLayout;
    form->addRow(tr("Save as:"), nameField);
    form->addRow(tr("Where:"), folderRow);
    form->addRow(tr("Format:"), formatPopup);
    form->addRow(tr("Expected size:"), sizeLabel);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    setMinimumWidth(460);

    connect(formatPopup, &QComboBox::currentIndexChanged, this, &CustomSaveDialog::formatChanged);
    connect(browseButton, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getExistingDirectory(this, tr("Export to"), folderField->text());
        if (!chosen.isEmpty()) folderField->setText(chosen);
    });
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (!nameField->text().trimmed().isEmpty()) accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    formatChanged(0);
}

void CustomSaveDialog::selectExtension(int index) {
    formatPopup->setCurrentIndex(index);
}

QString CustomSaveDialog::sizeText(int64_t bytes) {
    if (bytes >= 1000 * 1000) return QString::number(double(bytes) / 1e6, 'f', 1) + " MB";
    return QString::number(double(bytes) / 1e3, 'f', 0) + " KB";
}

void CustomSaveDialog::formatChanged(int index) {
    if (index < 0 || index >= availableExtensions_.size()) return;
    QString name = nameField->text().trimmed();
    const QString suffix = QFileInfo(name).suffix().toLower();
    if (availableExtensions_.contains(suffix)) name.chop(suffix.size() + 1);
    nameField->setText(name + "." + availableExtensions_[index]);
    if (sizes_ && index < int(sizes_->size()))
        sizeLabel->setText(sizeText((*sizes_)[size_t(index)]));
    else
        sizeLabel->clear();
}

QString CustomSaveDialog::selectedPath() const {
    return QDir(folderField->text()).filePath(nameField->text().trimmed());
}
