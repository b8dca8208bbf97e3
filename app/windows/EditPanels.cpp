#include "app/windows/EditPanels.h"

#include "foundation/Timecode.h"
#include "project/model/AEAsset.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleValidator>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace {
QDialogButtonBox* okCancel(QDialog* dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}
} // namespace

TimeLineStatsVC::TimeLineStatsVC(QWidget* parent) : QDialog(parent) {
    setObjectName("TimeLineStatsVC");
    setWindowTitle(tr("Statistics"));
    auto* form = new QFormLayout(this);
    const char* names[] = {"Duration:", "Common assets used:", "Episode assets used:", "Items:"};
    for (int i = 0; i < 4; ++i) {
        labels[i] = new QLabel(this);
        form->addRow(tr(names[i]), labels[i]);
    }
}

void TimeLineStatsVC::update(const AETimelineStats& stats) {
    labels[0]->setText(tc_getFloatTimecode(stats.duration));
    labels[1]->setText(QString::number(stats.commonAssetUsed));
    labels[2]->setText(QString::number(stats.episodeAssetUsed));
    labels[3]->setText(QString::number(stats.totalItems));
}

VolumeSliderVC::VolumeSliderVC(const std::shared_ptr<AEAsset>& asset, std::function<void()> changed,
                               QWidget* parent)
    : QDialog(parent), sldVolume(new QSlider(Qt::Horizontal, this)), lblSlider(new QLabel(this)),
      btnAuto(new QPushButton(tr("Auto"), this)), asset_(asset), changed_(std::move(changed)) {
    setObjectName("VolumeSliderVC");
    setWindowTitle(tr("Volume of %1").arg(asset->name));
    setAttribute(Qt::WA_DeleteOnClose);
    sldVolume->setRange(-300, 300); // tenths of a dB
    sldVolume->setValue(int(std::lround(asset->volumeGain * 10)));
    btnAuto->setToolTip(tr("Bring the asset's RMS level to -12 dB"));
    auto* row = new QHBoxLayout(this);
    row->addWidget(sldVolume, 1);
    row->addWidget(lblSlider);
    row->addWidget(btnAuto);
    showGain();
    connect(sldVolume, &QSlider::valueChanged, this, [this](int tenths) {
        asset_->volumeGain = tenths / 10.0;
        showGain();
        if (changed_) changed_();
    });
    connect(btnAuto, &QPushButton::clicked, this, [this] {
        if (!TimelineCommands::autoVolume(asset_)) return;
        const QSignalBlocker block(sldVolume);
        sldVolume->setValue(int(std::lround(asset_->volumeGain * 10)));
        showGain();
        if (changed_) changed_();
    });
}

void VolumeSliderVC::showGain() {
    lblSlider->setText(QString::number(asset_->volumeGain, 'f', 1) + " dB");
}

AESelectionToAssetVC::AESelectionToAssetVC(const QString& suggestedName, Done done, QWidget* parent)
    : QDialog(parent), name(new QLineEdit(suggestedName, this)), assetType(new QComboBox(this)),
      radio(new QButtonGroup(this)) {
    setObjectName("AESelectionToAssetVC");
    setWindowTitle(tr("Selection to Asset"));
    for (const auto& [label, type] :
         {std::pair{tr("Speech"), AEAssetType::speech}, std::pair{tr("Jingle"), AEAssetType::jingle},
          std::pair{tr("Music"), AEAssetType::music}, std::pair{tr("Background music"), AEAssetType::bgm},
          std::pair{tr("Advertising"), AEAssetType::ad}, std::pair{tr("Sound effect"), AEAssetType::effect}})
        assetType->addItem(label, int(type));
    auto* common = new QRadioButton(tr("Common"), this);
    auto* episode = new QRadioButton(tr("Episode"), this);
    radio->addButton(common, int(AESelectionToAssetWhere::common));
    radio->addButton(episode, int(AESelectionToAssetWhere::episode));
    common->setChecked(true);
    auto* where = new QHBoxLayout;
    where->addWidget(common);
    where->addWidget(episode);
    auto* buttons = okCancel(this);
    auto* form = new QFormLayout(this);
    form->addRow(tr("Name:"), name);
    form->addRow(tr("Type:"), assetType);
    form->addRow(tr("Add to:"), where);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, done] {
        if (name->text().trimmed().isEmpty()) return;
        accept();
        if (done)
            done(name->text().trimmed(), AEAssetType(assetType->currentData().toInt()),
                 AESelectionToAssetWhere(radio->checkedId()));
    });
}

AEInsertSilenceVC::AEInsertSilenceVC(std::function<void(double)> okPressed, QWidget* parent)
    : QDialog(parent), fldDuration(new QLineEdit("1.0", this)) {
    setObjectName("AEInsertSilenceVC");
    setWindowTitle(tr("Insert Silence"));
    auto* validator = new QDoubleValidator(0.01, 3600, 3, this);
    validator->setLocale(QLocale::c());
    fldDuration->setValidator(validator);
    auto* buttons = okCancel(this);
    auto* form = new QFormLayout(this);
    form->addRow(tr("Seconds:"), fldDuration);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, okPressed] {
        bool ok = false;
        const double seconds = QLocale::c().toDouble(fldDuration->text(), &ok);
        if (!ok || seconds <= 0) return;
        accept();
        if (okPressed) okPressed(seconds);
    });
}
