#include "project/panels/AEAssetVC.h"

#include "foundation/FileUtils.h"
#include "foundation/Timecode.h"
#include "project/model/AEAsset.h"
#include "project/model/AEBGMSettings.h"
#include "project/model/AEMarker.h"
#include "project/model/AssetColors.h"
#include "project/panels/AEAssetNameVC.h"
#include "project/panels/AssetTypeButtons.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/SimpleRound.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace {

constexpr int kNotSet = 0;

} // namespace

AEAssetVC::AEAssetVC(std::shared_ptr<AEAsset> assetToEdit, QWidget* parent)
    : QDialog(parent), asset(std::move(assetToEdit)), nameField(new QLineEdit(this)),
      duration(new QLabel(this)), fileSize(new QLabel(this)), frequency(new QLabel(this)),
      channels(new QLabel(this)), bitsPerSample(new QLabel(this)), ingested(new QLabel(this)),
      volumeGainSlider(new QSlider(Qt::Horizontal, this)), volumeGainValueLabel(new QLabel(this)),
      bgmPopUp(new QComboBox(this)), bgmSettingsButton(new QPushButton(tr("Music Settings..."), this)),
      bgmAtPlayheadButton(new QPushButton(tr("At Playhead"), this)),
      relinkButton(new QPushButton(tr("Relink..."), this)), assetType(asset->type),
      volumeGain(asset->volumeGain), originalVolumeGain(asset->volumeGain), bgmStart(asset->bgmStart),
      bgmId(asset->bgmId) {
    setWindowTitle(asset->name.isEmpty() ? tr("Asset Inspector") : tr("Asset Inspector: ") + asset->name);
    // Tenths of a dB, -40...+20.
    volumeGainSlider->setRange(-400, 200);
    volumeGainValueLabel->setMinimumWidth(70);

    auto* types = new AssetTypeButtons(assetType, this);
    connect(types, &AssetTypeButtons::typePressed, this, &AEAssetVC::typePressed);
    typeButtons = types;
    auto* autoButton = new QPushButton(tr("Auto"), this);
    auto* nameButton = new QPushButton(tr("Rename..."), this);
    auto* name = new QHBoxLayout;
    name->addWidget(nameField, 1);
    name->addWidget(nameButton);
    auto* gain = new QHBoxLayout;
    gain->addWidget(volumeGainSlider, 1);
    gain->addWidget(volumeGainValueLabel);
    gain->addWidget(autoButton);
    auto* music = new QHBoxLayout;
    music->addWidget(bgmPopUp, 1);
    music->addWidget(bgmAtPlayheadButton);
    music->addWidget(bgmSettingsButton);

    auto* form = new QFormLayout;
    form->addRow(tr("Name"), name);
    form->addRow(tr("Type"), types);
    form->addRow(tr("Gain"), gain);
    form->addRow(tr("Music starts at"), music);
    form->addRow(tr("Duration"), duration);
    form->addRow(tr("File size"), fileSize);
    form->addRow(tr("Frequency"), frequency);
    form->addRow(tr("Channels"), channels);
    form->addRow(tr("Bits per sample"), bitsPerSample);
    form->addRow(tr("Ingested"), ingested);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    okButton = buttons->button(QDialogButtonBox::Ok);
    okButton->setDefault(true);
    buttons->addButton(relinkButton, QDialogButtonBox::ActionRole);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(makePlayer(), 1);
    layout->addLayout(form);
    layout->addWidget(buttons);
    resize(760, 640);

    connect(volumeGainSlider, &QSlider::valueChanged, this, &AEAssetVC::volumeGainSlider_modified);
    connect(autoButton, &QPushButton::clicked, this, &AEAssetVC::autoGain);
    connect(nameButton, &QPushButton::clicked, this, [this] {
        auto* panel = new AEAssetNameVC(nameField->text(), this);
        panel->setAttribute(Qt::WA_DeleteOnClose);
        panel->delegate = [this](const QString& chosen) { nameField->setText(chosen); };
        panel->open();
    });
    connect(bgmSettingsButton, &QPushButton::clicked, this, &AEAssetVC::openBGMSettings);
    connect(bgmAtPlayheadButton, &QPushButton::clicked, this, &AEAssetVC::setBGMMarker);
    connect(bgmPopUp, &QComboBox::activated, this, [this](int index) {
        if (index == kNotSet) {
            bgmStart = 0;
            bgmId.clear();
        } else if (const QString id = bgmPopUp->itemData(index).toString(); !id.isEmpty()) {
            for (const auto& marker : bgmCandidates())
                if (marker->id == id) {
                    bgmStart = marker->inTime;
                    bgmId = id;
                    assetTimeline->setPlayheadTime(bgmStart, true);
                }
        }
    });
    connect(relinkButton, &QPushButton::clicked, this, [this] {
        asset->chooseAndRelink();
        fill();
        placeAsset();
    });
    cleanButton = buttons->addButton(tr("Clean…"), QDialogButtonBox::ActionRole);
    connect(cleanButton, &QPushButton::clicked, this, [this] {
        if (onClean) onClean();
    });
    uhmButton = buttons->addButton(tr("Probable Uhm…"), QDialogButtonBox::ActionRole);
    connect(uhmButton, &QPushButton::clicked, this, [this] {
        if (onUhmAnalysis) onUhmAnalysis();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &AEAssetVC::ok_pressed);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    fill();
}

AEAssetVC::~AEAssetVC() {
    // Gone with its owner before an answer: as Cancel.
    if (!playerClosed_) asset->volumeGain = originalVolumeGain;
    closePlayer();
}

void AEAssetVC::done(int result) {
    if (result != Accepted) asset->volumeGain = originalVolumeGain;
    closePlayer();
    QDialog::done(result);
}

void AEAssetVC::showEvent(QShowEvent* event) {
    // Known only once the owner has had its say, after the constructor.
    cleanButton->setVisible(static_cast<bool>(onClean));
    uhmButton->setVisible(static_cast<bool>(onUhmAnalysis));
    QDialog::showEvent(event);
}

void AEAssetVC::fill() {
    nameField->setText(asset->name);
    duration->setText(tc_getFloatTimecode(asset->duration));
    fileSize->setText(fu_getReadableFileSizeBySize(asset->fileSize));
    frequency->setText(QString::number(asset->frequency) + " Hz");
    channels->setText(QString::number(asset->nChannels));
    bitsPerSample->setText(QString::number(asset->bitDepth));
    ingested->setText(asset->ingested ? "YES" : "NO");
    typeButtons->setChecked(assetType);
    {
        // Showing the gain is not choosing it: a gain between slider steps stays as it is.
        const QSignalBlocker quiet(volumeGainSlider);
        volumeGainSlider->setValue(static_cast<int>(std::lround(volumeGain * 10)));
    }
    volumeGainValueLabel->setText(gainText(volumeGain));
    prepareBGMPopUp();
}

void AEAssetVC::prepareBGMPopUp() {
    bgmPopUp->clear();
    bgmPopUp->addItem(tr("Not Set"));
    bgmPopUp->insertSeparator(1);
    for (const auto& marker : bgmCandidates())
        bgmPopUp->addItem(tc_getFloatTimecode(marker->inTime) + "  " + marker->notes, marker->id);
    const int at = bgmPopUp->findData(bgmId);
    bgmPopUp->setCurrentIndex(at >= 0 ? at : kNotSet);
    const bool isMusic = assetType == AEAssetType::bgm;
    bgmPopUp->setEnabled(isMusic);
    bgmSettingsButton->setEnabled(isMusic);
    bgmAtPlayheadButton->setEnabled(isMusic);
}

std::vector<std::shared_ptr<AEMarker>> AEAssetVC::bgmCandidates() const {
    auto markers = asset->markers;
    if (pendingMarker_) markers.push_back(pendingMarker_);
    return markers;
}

void AEAssetVC::setBGMMarker() {
    // The one item starts at 0 with the whole file: timeline time is asset time.
    const double at = simpleRound(assetTimeline->getPlayHeadTime());
    std::shared_ptr<AEMarker> marker;
    for (const auto& candidate : asset->markers)
        if (simpleRound(candidate->inTime) == at) marker = candidate;
    if (!marker) {
        pendingMarker_ =
            std::make_shared<AEMarker>(at, std::nullopt, AEMarkerType::bgmStart, tr("BGM Start"));
        marker = pendingMarker_;
    }
    bgmStart = at;
    bgmId = marker->id;
    prepareBGMPopUp();
}

QString AEAssetVC::gainText(double dB) {
    return (dB > 0 ? "+" : "") + QString::number(dB, 'f', 1) + " dB";
}

void AEAssetVC::typePressed(AEAssetType type) {
    assetType = type;
    typeButtons->setChecked(type);
    prepareBGMPopUp();
    if (type == AEAssetType::bgm) openBGMSettings();
}

void AEAssetVC::volumeGainSlider_modified(int tenthsOfDb) {
    volumeGain = tenthsOfDb / 10.0;
    volumeGainValueLabel->setText(gainText(volumeGain));
    // Heard at once; done() puts the original back unless OK.
    asset->volumeGain = volumeGain;
    assetTimeline->updateVolumeFromOutside();
}

void AEAssetVC::autoGain() {
    asset->autoGain(false);
    {
        const QSignalBlocker quiet(volumeGainSlider);
        volumeGainSlider->setValue(static_cast<int>(std::lround(asset->volumeGain * 10)));
    }
    volumeGainSlider_modified(volumeGainSlider->value());
}

void AEAssetVC::openBGMSettings() {
    const auto current = pendingBGMSettings ? pendingBGMSettings : asset->bgmSettings;
    // A copy: the asset keeps its settings until the inspector's OK.
    auto copy = current
                    ? std::make_shared<AEBGMSettings>(current->loopable, current->fadeOut, current->autoduck)
                    : std::make_shared<AEBGMSettings>();
    bgmPanel_ = new AEBGMSettingsVC(copy, this, this);
    bgmPanel_->setAttribute(Qt::WA_DeleteOnClose);
    bgmPanel_->open();
}

void AEAssetVC::aeBGMSettingsDone(const std::shared_ptr<AEBGMSettings>& bgmSettings) {
    pendingBGMSettings = bgmSettings;
}

void AEAssetVC::ok_pressed() {
    asset->name = nameField->text();
    asset->type = assetType;
    asset->volumeGain = volumeGain;
    asset->bgmStart = bgmStart;
    asset->bgmId = bgmId;
    if (pendingBGMSettings) asset->bgmSettings = pendingBGMSettings;
    if (pendingMarker_ && pendingMarker_->id == bgmId) asset->markers.push_back(pendingMarker_);
    if (assetInspectorVCDone) assetInspectorVCDone(asset, asset->name, asset->type);
    accept();
}
