#include "app/windows/SettingsPanels.h"

#include "app/core/AEPreferences.h"
#include "foundation/Prefs.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/DeviceOutput.h"
#include "playback/engine/SharedAudioEngine.h"
#include "render/Loudness.h"
#include "render/Mp3.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "ui/IHImages.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {
QDialogButtonBox* okCancel(QDialog* dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}
} // namespace

const QList<int> Mp3EncodingSettingsVC::kBitrates = {64, 96, 112, 128, 160, 192, 256, 320};

Mp3EncodingSettingsVC::Mp3EncodingSettingsVC(QWidget* parent)
    : QDialog(parent), channels(new QButtonGroup(this)), bitrate(new QComboBox(this)),
      normalise(new QCheckBox(tr("Normalise loudness"), this)), target(new QDoubleSpinBox(this)),
      ceiling(new QDoubleSpinBox(this)) {
    setObjectName("Mp3EncodingSettingsVC");
    setWindowTitle(tr("MP3 Encoding"));
    const Mp3EncodingSettings current = Mp3::encodingSettings();
    auto* mono = new QRadioButton(tr("Mono"), this);
    auto* stereo = new QRadioButton(tr("Stereo"), this);
    channels->addButton(mono, int(Mp3Channels::mono));
    channels->addButton(stereo, int(Mp3Channels::stereo));
    (current.channels == Mp3Channels::mono ? mono : stereo)->setChecked(true);
    for (int rate : kBitrates)
        bitrate->addItem(QString::number(rate) + " kbps", rate);
    const int index = bitrate->findData(current.bitrate);
    bitrate->setCurrentIndex(index >= 0 ? index : bitrate->findData(128));
    auto* row = new QHBoxLayout;
    row->addWidget(mono);
    row->addWidget(stereo);
    auto* form = new QFormLayout(this);
    form->addRow(tr("Channels:"), row);
    form->addRow(tr("Bit rate:"), bitrate);
    target->setRange(-40.0, -5.0);
    target->setSuffix(" LUFS");
    ceiling->setRange(-9.0, 0.0);
    ceiling->setSuffix(" dBTP");
    for (QDoubleSpinBox* field : {target, ceiling}) {
        field->setDecimals(1);
        field->setSingleStep(0.5);
    }
    showLoudness();
    form->addRow(QString(), normalise);
    form->addRow(tr("Target:"), target);
    form->addRow(tr("True peak at most:"), ceiling);
    form->addRow(okCancel(this));
    connect(channels, &QButtonGroup::idClicked, this, [this] { showLoudness(); });
    // Each change goes to the settings at once; OK keeps them.
    const auto store = [this] {
        Mp3::setEncodingSettings({Mp3Channels(channels->checkedId()), bitrate->currentData().toInt()});
    };
    connect(channels, &QButtonGroup::idClicked, this, store);
    connect(bitrate, &QComboBox::currentIndexChanged, this, store);
    connect(this, &QDialog::accepted, this, [this] {
        Mp3::saveSettings();
        loudness_saveSettings(true, channelCount(),
                              {normalise->isChecked(), target->value(), ceiling->value()});
    });
    connect(this, &QDialog::rejected, this, [current] { Mp3::setEncodingSettings(current); });
}

int Mp3EncodingSettingsVC::channelCount() const {
    return channels->checkedId() == int(Mp3Channels::mono) ? 1 : 2;
}

void Mp3EncodingSettingsVC::showLoudness() {
    const LoudnessSettings stored = loudness_settings(true, channelCount());
    normalise->setChecked(stored.normalise);
    target->setValue(stored.target);
    ceiling->setValue(stored.truePeakCeiling);
}

BasePrefsVC::BasePrefsVC(QWidget* parent)
    : QDialog(parent), autoScroll(new QCheckBox(tr("Follow the playhead while playing"), this)),
      waveFormType(new QComboBox(this)),
      ingestDontAsk(new QCheckBox(tr("Don't ask when files are dropped"), this)),
      ingestNormalize(new QCheckBox(tr("Normalize dropped files"), this)),
      ingestBrightwash(new QCheckBox(tr("Clean dropped speech"), this)), lanesMode(new QComboBox(this)),
      outputDevice(new QComboBox(this)) {
    setObjectName("BasePrefsVC");
    setWindowTitle(tr("Preferences"));
    AEPreferences::load();
    autoScroll->setChecked(AEPreferences::timelineAutoScroll);
    waveFormType->addItems({"Single", "Double"});
    waveFormType->setCurrentText(prefs_getValueString("AEWaveFormType", "Single"));
    ingestDontAsk->setChecked(prefs_getValueBool("AEIngest.DontAskAtDrag", false));
    ingestNormalize->setChecked(prefs_getValueBool("AEIngest.Normalize", true));
    ingestBrightwash->setChecked(prefs_getValueBool("AEIngest.Brightwash", false));
    lanesMode->addItem(tr("Main lane first"), 0);
    lanesMode->addItem(tr("Main lane and music"), 1);
    lanesMode->addItem(tr("All lanes equal"), 3);
    lanesMode->setCurrentIndex(std::max(0, lanesMode->findData(int(prefs_getValueInt("LanesMode", 0)))));
    outputDevice->addItem(tr("System default"), QByteArray());
    for (const auto& [id, description] : outputDevices())
        outputDevice->addItem(description, id);
    const int device = outputDevice->findData(prefs_getValueString(kOutputDeviceKey, "").toUtf8());
    outputDevice->setCurrentIndex(std::max(0, device));
    auto* mp3 = new QPushButton(tr("MP3 Encoding..."), this);
    connect(mp3, &QPushButton::clicked, this, [this] { Mp3EncodingSettingsVC(this).exec(); });

    auto* form = new QFormLayout(this);
    form->addRow(tr("Timeline:"), autoScroll);
    form->addRow(tr("Waveform:"), waveFormType);
    form->addRow(tr("Lanes:"), lanesMode);
    form->addRow(tr("Dropped files:"), ingestDontAsk);
    form->addRow(QString(), ingestNormalize);
    form->addRow(QString(), ingestBrightwash);
    form->addRow(tr("Output device:"), outputDevice);
    form->addRow(tr("Export:"), mp3);
    form->addRow(okCancel(this));
    connect(this, &QDialog::accepted, this, &BasePrefsVC::save);
}

void BasePrefsVC::save() {
    AEPreferences::timelineAutoScroll = autoScroll->isChecked();
    AEPreferences::save();
    prefs_setValueString("AEWaveFormType", waveFormType->currentText());
    prefs_setValueBool("AEIngest.DontAskAtDrag", ingestDontAsk->isChecked());
    prefs_setValueBool("AEIngest.Normalize", ingestNormalize->isChecked());
    prefs_setValueBool("AEIngest.Brightwash", ingestBrightwash->isChecked());
    const int lanes = lanesMode->currentData().toInt();
    AETimeLineLanesHelper::setSetup(lanes == 1   ? AETimeLineLanesViewSetup::bgm
                                    : lanes == 3 ? AETimeLineLanesViewSetup::allEquals
                                                 : AETimeLineLanesViewSetup::normal);
    const QByteArray device = outputDevice->currentData().toByteArray();
    if (device != prefs_getValueString(kOutputDeviceKey, "").toUtf8()) {
        prefs_setValueString(kOutputDeviceKey, QString::fromUtf8(device));
        sharedAudioEngine().startDeviceOutput(device);
    }
}

QString AboutPanel::versionLine() {
    return QString("Version %VERSION%")
        .replace("%VERSION%", QString(ZENDREL_VERSION) + " (build " ZENDREL_BUILD ")");
}

AboutPanel::AboutPanel(QWidget* parent) : QDialog(parent) {
    setObjectName("AboutPanel");
    setWindowTitle(tr("About Zendrel"));
    auto* icon = new QLabel(this);
    icon->setPixmap(ih_icon("ZendrelAppIcon").pixmap(96, 96));
    auto* name = new QLabel("<h2>Zendrel</h2>", this);
    auto* version = new QLabel(versionLine(), this);
    version->setObjectName("versionLine");
    auto* credits = new QLabel(
        tr("Made with open-source software:<br>SoX, FFmpeg, kid3, Qt, libsndfile, TagLib, SoundTouch."),
        this);
    credits->setObjectName("credits");
    credits->setWordWrap(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(icon, 0, Qt::AlignHCenter);
    layout->addWidget(name, 0, Qt::AlignHCenter);
    layout->addWidget(version, 0, Qt::AlignHCenter);
    layout->addWidget(credits);
    layout->addWidget(buttons);
}
