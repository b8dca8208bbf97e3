#include "ui/ducking/AEAutoDuckSettingsVC.h"

#include "project/model/DuckingSettings.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <cmath>

namespace {

// Seconds go through the sliders in hundredths, levels in whole dB.
int centi(double seconds) {
    return static_cast<int>(std::lround(seconds * 100));
}

} // namespace

AEAutoDuckSettingsVC* AEAutoDuckSettingsVC::show(QWidget* parent) {
    if (!vc) {
        vc = new AEAutoDuckSettingsVC(parent);
        vc->setAttribute(Qt::WA_DeleteOnClose);
    }
    vc->QDialog::show();
    vc->raise();
    vc->activateWindow();
    return vc;
}

AEAutoDuckSettingsVC::AEAutoDuckSettingsVC(QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("Automatic Ducking Settings"));
    setObjectName("AEAutoDuckSettingsWC");
    auto* form = new QFormLayout(this);
    const QXDuckingSettings s;
    thresholdSlider = addSlider(tr("Speech threshold"), -60, 0, static_cast<int>(std::lround(s.threshold)));
    attackWindowSlider = addSlider(tr("Attack"), 5, 300, centi(s.attackWindow));
    attackPreRollSlider = addSlider(tr("Attack pre-roll"), 0, 200, centi(s.attackPreRoll));
    releaseWindowSlider = addSlider(tr("Release"), 5, 500, centi(s.releaseWindow));
    releasePreRollSlider = addSlider(tr("Release pre-roll"), 0, 200, centi(s.releasePreRoll));
    decreaseSlider = addSlider(tr("Dip depth"), -40, 0, static_cast<int>(std::lround(s.decrease)));
    for (const auto& [slider, label] : labels_) {
        auto* row = new QHBoxLayout;
        row->addWidget(slider);
        row->addWidget(label);
        form->addRow(slider->objectName(), row);
        connect(slider, &QSlider::valueChanged, this, &AEAutoDuckSettingsVC::slidersChanged);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        slidersChanged();
        close();
    });
    form->addRow(buttons);
    refreshLabels();
}

QSlider* AEAutoDuckSettingsVC::addSlider(const QString& title, int min, int max, int value) {
    auto* slider = new QSlider(Qt::Horizontal, this);
    slider->setObjectName(title);
    slider->setRange(min, max);
    slider->setValue(value);
    labels_.append({slider, new QLabel(this)});
    return slider;
}

QString AEAutoDuckSettingsVC::labelText(const QSlider* slider) const {
    if (slider == thresholdSlider || slider == decreaseSlider)
        return QString::number(slider->value()) + " dB";
    return QString::number(slider->value() / 100.0, 'f', 2) + " s";
}

void AEAutoDuckSettingsVC::slidersChanged() {
    QXDuckingSettings s;
    s.threshold = static_cast<float>(thresholdSlider->value());
    s.attackWindow = attackWindowSlider->value() / 100.0;
    s.attackPreRoll = attackPreRollSlider->value() / 100.0;
    s.releaseWindow = releaseWindowSlider->value() / 100.0;
    s.releasePreRoll = releasePreRollSlider->value() / 100.0;
    s.decrease = static_cast<float>(decreaseSlider->value());
    s.save();
    refreshLabels();
}

void AEAutoDuckSettingsVC::refreshLabels() {
    for (const auto& [slider, label] : labels_)
        label->setText(labelText(slider));
}
