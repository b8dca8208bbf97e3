#include "ui/ducking/AEBGMSettingsVC.h"

#include "project/model/AEBGMSettings.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace {

QString fadeText(int tenths) {
    return QObject::tr("Fade out: %1 s").arg(tenths / 10.0, 0, 'f', 1);
}

} // namespace

AEBGMSettingsVC::AEBGMSettingsVC(std::shared_ptr<AEBGMSettings> settings, AEBGMSettingsDone* delegate,
                                 QWidget* parent)
    : QDialog(parent), bgmSettings(settings ? std::move(settings) : std::make_shared<AEBGMSettings>()),
      delegate(delegate), check_loopable(new QCheckBox(tr("Loop to fill the item"), this)),
      chkAutoDuck(new QCheckBox(tr("Duck under speech when attached"), this)),
      slide_fadeOut(new QSlider(Qt::Horizontal, this)), label_fadeOut(new QLabel(this)) {
    setWindowTitle(tr("Background Music"));
    check_loopable->setChecked(bgmSettings->loopable);
    chkAutoDuck->setChecked(bgmSettings->autoduck.value_or(true));
    slide_fadeOut->setRange(0, 300);
    slide_fadeOut->setValue(static_cast<int>(std::lround(bgmSettings->fadeOut * 10)));
    label_fadeOut->setText(fadeText(slide_fadeOut->value()));
    connect(slide_fadeOut, &QSlider::valueChanged, this,
            [this](int v) { label_fadeOut->setText(fadeText(v)); });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &AEBGMSettingsVC::okPressed);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* fade = new QHBoxLayout;
    fade->addWidget(slide_fadeOut);
    fade->addWidget(label_fadeOut);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(check_loopable);
    layout->addWidget(chkAutoDuck);
    layout->addLayout(fade);
    layout->addWidget(buttons);
}

void AEBGMSettingsVC::okPressed() {
    bgmSettings->loopable = check_loopable->isChecked();
    bgmSettings->autoduck = chkAutoDuck->isChecked();
    bgmSettings->fadeOut = slide_fadeOut->value() / 10.0;
    if (delegate) delegate->aeBGMSettingsDone(bgmSettings);
    accept();
}
