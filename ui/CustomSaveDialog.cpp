#include "ui/CustomSaveDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
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
    form_ = new QFormLayout;
    form_->addRow(tr("Save as:"), nameField);
    form_->addRow(tr("Where:"), folderRow);
    form_->addRow(tr("Format:"), formatPopup);
    form_->addRow(tr("Expected size:"), sizeLabel);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form_);
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

namespace {

QDoubleSpinBox* decibelField(QWidget* parent, double from, double to, const QString& unit) {
    auto* field = new QDoubleSpinBox(parent);
    field->setRange(from, to);
    field->setDecimals(1);
    field->setSingleStep(0.5);
    field->setSuffix(" " + unit);
    return field;
}

} // namespace

void CustomSaveDialog::offerLoudness(int channels) {
    if (normaliseBox) return;
    channels_ = channels;
    normaliseBox = new QCheckBox(tr("Normalise loudness"), this);
    targetField = decibelField(this, -40.0, -5.0, "LUFS");
    ceilingField = decibelField(this, -9.0, 0.0, "dBTP");
    sideFilesBox = new QCheckBox(tr("Write the report and chapter files beside it"), this);
    form_->addRow(QString(), normaliseBox);
    form_->addRow(tr("Target:"), targetField);
    form_->addRow(tr("True peak at most:"), ceilingField);
    form_->addRow(QString(), sideFilesBox);
    connect(normaliseBox, &QCheckBox::toggled, this, [this](bool on) {
        targetField->setEnabled(on);
        ceilingField->setEnabled(on);
    });
    formatChanged(formatPopup->currentIndex());
}

void CustomSaveDialog::showLoudness(const LoudnessSettings& settings) {
    normaliseBox->setChecked(settings.normalise);
    targetField->setValue(settings.target);
    ceilingField->setValue(settings.truePeakCeiling);
    targetField->setEnabled(settings.normalise);
    ceilingField->setEnabled(settings.normalise);
}

std::optional<LoudnessSettings> CustomSaveDialog::loudness() const {
    if (!normaliseBox) return std::nullopt;
    LoudnessSettings settings;
    settings.normalise = normaliseBox->isChecked();
    settings.target = targetField->value();
    settings.truePeakCeiling = ceilingField->value();
    return settings;
}

bool CustomSaveDialog::sideFilesWanted() const {
    return sideFilesBox && sideFilesBox->isChecked();
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
    if (normaliseBox) showLoudness(loudness_settings(availableExtensions_[index] == "mp3", channels_));
}

QString CustomSaveDialog::selectedPath() const {
    return QDir(folderField->text()).filePath(nameField->text().trimmed());
}
