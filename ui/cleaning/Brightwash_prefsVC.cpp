#include "ui/cleaning/Brightwash_prefsVC.h"

#include "cleaning/Brightwash.h"
#include "cleaning/BrightwashKeys.h"
#include "foundation/Prefs.h"
#include "render/tools/SoxFilters.h"
#include "ui/cleaning/UhmVC.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QStackedWidget>
#include <cmath>

namespace {

BrightwashSetting& g() {
    return globalBWSettings();
}

// Every panel change keeps the JSON form up to date.
void saveJson() {
    g().save();
}

QString environmentText(double level) {
    return level < 0.5 ? "Low" : level < 1.5 ? "Medium" : "High";
}

} // namespace

Brightwash_prefsVC::Brightwash_prefsVC(QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("Cleaning Settings"));
    if (const auto json = BrightwashSetting::load())
        g() = *json;
    else
        g() = Brightwash::loadSettings();

    auto* root = new QHBoxLayout(this);
    auto* buttons = new QVBoxLayout;
    root->addLayout(buttons);
    auto* right = new QVBoxLayout;
    root->addLayout(right, 1);
    containerTab = new QStackedWidget;
    right->addWidget(containerTab, 1);
    const QStringList names{tr("General"),   tr("Denoiser"), tr("Noise Gate"), tr("Compressor"),
                            tr("Equalizer"), tr("Pauses"),   tr("Hesitations")};
    for (int i = 0; i < names.size(); ++i) {
        auto* button = new QPushButton(names[i]);
        button->setCheckable(true);
        connect(button, &QPushButton::clicked, this, [this, i] { showPage(i); });
        buttons->addWidget(button);
        pageButtons.push_back(button);
    }
    buttons->addStretch();
    buildGeneral();
    buildDenoiser();
    buildGate();
    buildCompressor();
    buildEqualizer();
    buildPauses();
    buildUhm();

    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(box, &QDialogButtonBox::accepted, this, [this] { okPressed(); });
    right->addWidget(box);
    fillSwitches();
    showPage(0);
}

void Brightwash_prefsVC::displayPrefsPanel(QWidget* parent, std::function<void()> delegateReload) {
    Brightwash_prefsVC panel(parent);
    panel.delegateReload = std::move(delegateReload);
    panel.exec();
}

void Brightwash_prefsVC::showPage(int index) {
    containerTab->setCurrentIndex(index);
    for (size_t i = 0; i < pageButtons.size(); ++i)
        pageButtons[i]->setChecked(int(i) == index);
}

void Brightwash_prefsVC::okPressed() {
    Brightwash::saveSettings(g());
    if (delegateReload) delegateReload();
    accept();
}

void Brightwash_prefsVC::resetBWSettingsToDefault() {
    g() = BrightwashSetting();
    Brightwash::saveSettings(g());
    refillAll();
}

QSlider* Brightwash_prefsVC::slider(const QString& label) const {
    for (const Control& c : controls_)
        if (c.label == label) return c.slider;
    return nullptr;
}

QLabel* Brightwash_prefsVC::valueLabel(const QString& label) const {
    for (const Control& c : controls_)
        if (c.label == label) return c.value;
    return nullptr;
}

QWidget* Brightwash_prefsVC::page(const QString& title, int switchIndex) {
    auto* widget = new QWidget;
    auto* layout = new QVBoxLayout(widget);
    auto* header = new QHBoxLayout;
    header->addWidget(new QLabel("<b>" + title + "</b>"));
    if (switchIndex >= 0) {
        auto* onOff = new QCheckBox(tr("On"));
        header->addStretch();
        header->addWidget(onOff);
        switches.push_back(onOff);
    }
    layout->addLayout(header);
    containerTab->addWidget(widget);
    return widget;
}

QSlider* Brightwash_prefsVC::addSlider(QVBoxLayout* layout, const QString& label, double min, double max,
                                       double step, int decimals, std::function<double()> get,
                                       std::function<void(double)> set, const char* key) {
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(label), 1);
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(int(std::lround(min / step)), int(std::lround(max / step)));
    auto* value = new QLabel;
    value->setMinimumWidth(50);
    row->addWidget(slider, 2);
    row->addWidget(value);
    layout->addLayout(row);
    auto show = [value, decimals](double v) { value->setText(QString::number(v, 'f', decimals)); };
    auto refill = [slider, get, step, show] {
        const QSignalBlocker block(slider);
        slider->setValue(int(std::lround(get() / step)));
        show(get());
    };
    connect(slider, &QSlider::valueChanged, this, [=](int position) {
        const double v = position * step;
        set(v);
        if (key) prefs_setValueDouble(key, v);
        show(v);
        saveJson();
    });
    refill();
    controls_.push_back({label, slider, value, refill});
    refills_.push_back(refill);
    return slider;
}

QCheckBox* Brightwash_prefsVC::addCheck(QVBoxLayout* layout, const QString& label, std::function<bool()> get,
                                        std::function<void(bool)> set, const char* key) {
    auto* check = new QCheckBox(label);
    layout->addWidget(check);
    auto refill = [check, get] {
        const QSignalBlocker block(check);
        check->setChecked(get());
    };
    connect(check, &QCheckBox::toggled, this, [set, key](bool on) {
        set(on);
        prefs_setValueBool(key, on);
        saveJson();
    });
    refill();
    refills_.push_back(refill);
    return check;
}

void Brightwash_prefsVC::buildGeneral() {
    auto* layout = static_cast<QVBoxLayout*>(page(tr("General"), -1)->layout());
    auto* suffix = new QLineEdit;
    layout->addWidget(new QLabel(tr("Suffix of the cleaned file")));
    layout->addWidget(suffix);
    connect(suffix, &QLineEdit::textEdited, this, [](const QString& text) {
        g().suffix = text.isEmpty() ? "cln" : text;
        prefs_setValueString(bwKeys::cleanSuffix, g().suffix);
        saveJson();
    });
    auto* wave = new QRadioButton(tr("WAV"));
    auto* mp3 = new QRadioButton(tr("MP3"));
    auto* group = new QButtonGroup(this);
    group->addButton(wave);
    group->addButton(mp3);
    layout->addWidget(wave);
    layout->addWidget(mp3);
    connect(group, &QButtonGroup::buttonClicked, this, [mp3](QAbstractButton* b) {
        g().exportFormat = b == mp3 ? BWExportFormats::mp3 : BWExportFormats::wave;
        prefs_setValueString(bwKeys::cleanFormat, toString(g().exportFormat));
        saveJson();
    });
    auto* reset = new QPushButton(tr("Reset to Defaults"));
    connect(reset, &QPushButton::clicked, this, [this] { resetBWSettingsToDefault(); });
    layout->addWidget(reset);
    layout->addStretch();
    refills_.push_back([suffix, wave, mp3] {
        suffix->setText(g().suffix);
        (g().exportFormat == BWExportFormats::mp3 ? mp3 : wave)->setChecked(true);
    });
}

void Brightwash_prefsVC::buildDenoiser() {
    auto* layout = static_cast<QVBoxLayout*>(page(tr("Denoiser"), 0)->layout());
    // The slider shows ten times the level.
    addSlider(
        layout, tr("Amount"), 0, 10, 0.1, 1, [] { return g().denoiserLevel * 10.0; },
        [](double v) { g().denoiserLevel = v / 10.0; });
    layout->addStretch();
}

void Brightwash_prefsVC::buildGate() {
    using namespace bwKeys;
    auto* layout = static_cast<QVBoxLayout*>(page(tr("Noise Gate"), 1)->layout());
    BWGateSettings& gate = g().gate;
    auto* threshold = addSlider(
        layout, tr("Threshold"), -90, 0, 1, 0, [&gate] { return gate.threshold; },
        [&gate](double v) { gate.threshold = v; }, gateThreshold);
    auto* autoCheck = addCheck(
        layout, tr("Automatic threshold"), [&gate] { return gate.autoThreshold; },
        [&gate](bool on) { gate.autoThreshold = on; }, gateAutoThreshold);
    auto enableThreshold = [threshold, this](bool on) {
        threshold->setEnabled(!on);
        valueLabel(tr("Threshold"))->setEnabled(!on);
    };
    connect(autoCheck, &QCheckBox::toggled, this, enableThreshold);
    refills_.push_back([enableThreshold, &gate] { enableThreshold(gate.autoThreshold); });
    addSlider(
        layout, tr("Hysteresis"), 0, 30, 1, 0, [&gate] { return gate.hysteresis; },
        [&gate](double v) { gate.hysteresis = v; }, gateHysteresisRead);
    addSlider(
        layout, tr("Hold"), 0, 3, 0.1, 1, [&gate] { return gate.decay; },
        [&gate](double v) { gate.decay = v; }, gateDecay);
    addSlider(
        layout, tr("Shortest passage"), 0, 3, 0.1, 1, [&gate] { return gate.minDuration; },
        [&gate](double v) { gate.minDuration = v; }, gateMinDuration);
    addSlider(
        layout, tr("Fade in"), 0, 2, 0.1, 1, [&gate] { return gate.fadeInDuration; },
        [&gate](double v) { gate.fadeInDuration = v; }, gateFadeIn);
    addSlider(
        layout, tr("Fade out"), 0, 2, 0.1, 1, [&gate] { return gate.fadeOutDuration; },
        [&gate](double v) { gate.fadeOutDuration = v; }, gateFadeOut);
    addSlider(
        layout, tr("Pre-roll"), 0, 2, 0.1, 1, [&gate] { return gate.preRoll; },
        [&gate](double v) { gate.preRoll = v; }, gatePreRoll);
    auto* environment = addSlider(
        layout, tr("Room noise"), 0, 3, 0.1, 1, [&gate] { return gate.environmentNoiseLevel; },
        [&gate](double v) { gate.environmentNoiseLevel = v; }, gateNoiseLevel);
    auto* environmentLabel = new QLabel;
    layout->addWidget(environmentLabel);
    auto showEnvironment = [environmentLabel, &gate] {
        environmentLabel->setText(environmentText(gate.environmentNoiseLevel));
    };
    connect(environment, &QSlider::valueChanged, this, showEnvironment);
    refills_.push_back(showEnvironment);
    addCheck(
        layout, tr("Normalize each passage"), [&gate] { return gate.normalizeEachCluster; },
        [&gate](bool on) { gate.normalizeEachCluster = on; }, gateNormalize);
    layout->addStretch();
}

void Brightwash_prefsVC::buildCompressor() {
    auto* layout = static_cast<QVBoxLayout*>(page(tr("Compressor"), 2)->layout());
    BWCompressorSetings& c = g().compressor;
    addSlider(
        layout, tr("Ratio"), 1, 20, 0.1, 1, [&c] { return c.ratio; }, [&c](double v) { c.ratio = v; });
    addSlider(
        layout, tr("Gain"), -30, 10, 1, 0, [&c] { return c.gain; }, [&c](double v) { c.gain = v; });
    addSlider(
        layout, tr("Attack"), 0, 2, 0.1, 1, [&c] { return c.attack; }, [&c](double v) { c.attack = v; });
    addSlider(
        layout, tr("Decay"), 0, 3, 0.1, 1, [&c] { return c.decay; }, [&c](double v) { c.decay = v; },
        bwKeys::compDecayRead);
    layout->addStretch();
}

void Brightwash_prefsVC::buildEqualizer() {
    auto* layout = static_cast<QVBoxLayout*>(page(tr("Equalizer"), 3)->layout());
    const QStringList bands{"62", "125", "250", "500", "1k", "2k", "4k", "8k"};
    for (int i = 0; i < bands.size(); ++i) {
        addSlider(
            layout, bands[i] + " Hz", -12, 12, 1, 0, [i] { return g().equalizer[size_t(i)].gain; },
            [i](double v) {
                // Each change writes all eight keys and rebuilds the bands.
                std::vector<double> gains;
                for (const BWEqBandSettings& band : g().equalizer)
                    gains.push_back(band.gain);
                gains[size_t(i)] = v;
                for (size_t k = 0; k < 8; ++k)
                    prefs_setValueDouble(bwKeys::eqBands[k], gains[k]);
                g().equalizer = soxUt_getStandardEq(gains);
            });
    }
    addCheck(
        layout, tr("Remove 50 Hz hum"), [] { return g().doRemoveHum; }, [](bool on) { g().doRemoveHum = on; },
        bwKeys::doRemoveHum);
    layout->addStretch();
}

void Brightwash_prefsVC::buildPauses() {
    auto* widget = page(tr("Pauses"), 4);
    auto* layout = static_cast<QVBoxLayout*>(widget->layout());
    addSlider(
        layout, tr("Longest pause"), 0.05, 2, 0.01, 2, [] { return g().pauseLength; },
        [](double v) { g().pauseLength = v; });
    addSlider(
        layout, tr("Silence below"), -80, 0, 1, 0, [] { return g().pausesThreshold; },
        [](double v) { g().pausesThreshold = v; });
    layout->addStretch();
    removeSilencePane = widget;
}

void Brightwash_prefsVC::buildUhm() {
    auto* widget = page(tr("Hesitations"), 5);
    auto* uhm = new UhmVC([] { saveJson(); }, widget);
    static_cast<QVBoxLayout*>(widget->layout())->addWidget(uhm, 1);
    refills_.push_back([uhm] { uhm->refill(); });
    indecisionEraserPane = widget;
}

void Brightwash_prefsVC::fillSwitches() {
    using namespace bwKeys;
    struct Switch {
        bool BrightwashSetting::*field;
        const char* key;
    };
    const std::vector<Switch> fields{
        {&BrightwashSetting::doDenoiser, doDenoise},          {&BrightwashSetting::doNoiseGate, doGate},
        {&BrightwashSetting::doCompressor, doCompressor},     {&BrightwashSetting::doEqualizer, doEq},
        {&BrightwashSetting::doRemovePauses, doRemovePauses}, {&BrightwashSetting::doEraseUhm, doEraseUhm}};
    for (size_t i = 0; i < fields.size(); ++i) {
        QCheckBox* s = switches[i];
        const Switch f = fields[i];
        connect(s, &QCheckBox::toggled, this, [f](bool on) {
            g().*f.field = on;
            prefs_setValueBool(f.key, on);
            saveJson();
        });
        refills_.push_back([s, f] {
            const QSignalBlocker block(s);
            s->setChecked(g().*f.field);
        });
    }
    // Hidden stages keep their pages and switches but cannot be used.
    const bool pauses = prefs_getValueBool(showRemovePauses, true);
    const bool uhm = prefs_getValueBool(showUhmEraser, true);
    removeSilencePane->setEnabled(pauses);
    switches[4]->setEnabled(pauses);
    indecisionEraserPane->setEnabled(uhm);
    switches[5]->setEnabled(uhm);
    refillAll();
}

void Brightwash_prefsVC::refillAll() {
    for (const auto& refill : refills_)
        refill();
}
