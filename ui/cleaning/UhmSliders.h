#pragma once
// The controls both hesitation panels share: a choice of 32, 16 or 8 analyses a second and labelled
// sliders whose position maps linearly onto a value. Main thread.

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>
#include <functional>

namespace uhmPanels {

inline constexpr int kRates[] = {32, 16, 8};

// Radio buttons named "rate32", "rate16", "rate8"; `chosen` hears the rate picked.
inline QButtonGroup* addRates(QWidget* owner, QVBoxLayout* layout, int current,
                              std::function<void(int)> chosen) {
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(QObject::tr("Analyses a second")), 1);
    auto* group = new QButtonGroup(owner);
    for (int rate : kRates) {
        auto* button = new QRadioButton(QString::number(rate));
        button->setObjectName(QString("rate%1").arg(rate));
        button->setChecked(rate == current);
        group->addButton(button, rate);
        row->addWidget(button);
    }
    QObject::connect(group, &QButtonGroup::idClicked, owner, [chosen](int rate) { chosen(rate); });
    layout->addLayout(row);
    return group;
}

// A slider over [min, max] in steps of `step`, named `name`, showing its value with `decimals`.
inline QSlider* addSlider(QWidget* owner, QVBoxLayout* layout, const QString& label, const QString& name,
                          double min, double max, double step, int decimals, double current,
                          std::function<void(double)> set) {
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(label), 1);
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(name);
    slider->setRange(int(std::lround(min / step)), int(std::lround(max / step)));
    slider->setValue(int(std::lround(current / step)));
    auto* value = new QLabel(QString::number(current, 'f', decimals));
    value->setMinimumWidth(50);
    row->addWidget(slider, 2);
    row->addWidget(value);
    layout->addLayout(row);
    QObject::connect(slider, &QSlider::valueChanged, owner, [=](int position) {
        const double v = position * step;
        value->setText(QString::number(v, 'f', decimals));
        set(v);
    });
    return slider;
}

} // namespace uhmPanels
