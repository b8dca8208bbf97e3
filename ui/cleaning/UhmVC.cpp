#include "ui/cleaning/UhmVC.h"

#include "cleaning/BrightwashSetting.h"
#include "ui/cleaning/UhmSliders.h"

#include <QAbstractButton>
#include <QSignalBlocker>

namespace {

BWUhmSettings& u() {
    return globalBWSettings().uhmPrefs;
}

} // namespace

UhmVC::UhmVC(std::function<void()> changed, QWidget* parent) : QWidget(parent), changed_(std::move(changed)) {
    setObjectName("UhmVC");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto tell = [this] {
        if (changed_) changed_();
    };
    rates_ = uhmPanels::addRates(this, layout, u().analisysInterval, [tell](int rate) {
        u().analisysInterval = rate;
        tell();
    });
    minimumLength_ = uhmPanels::addSlider(this, layout, tr("Shortest hesitation (s)"), "minimumLength", 0.1,
                                          3.0, 0.1, 1, u().minimumLength, [tell](double v) {
                                              u().minimumLength = v;
                                              tell();
                                          });
    threshold_ = uhmPanels::addSlider(this, layout, tr("Steadiness threshold"), "threshold", 0.0, 0.2, 0.005,
                                      3, u().threshold, [tell](double v) {
                                          u().threshold = float(v);
                                          tell();
                                      });
    crossDissolve_ = uhmPanels::addSlider(this, layout, tr("Cross dissolve (ms)"), "crossDissolve", 0, 100, 1,
                                          0, u().crossDissolveMS, [tell](double v) {
                                              u().crossDissolveMS = int(std::lround(v));
                                              tell();
                                          });
    layout->addStretch();
}

void UhmVC::refill() {
    for (QAbstractButton* b : rates_->buttons()) {
        const QSignalBlocker block(b);
        b->setChecked(rates_->id(b) == u().analisysInterval);
    }
    const auto set = [](QSlider* slider, double v, double step) {
        slider->setValue(int(std::lround(v / step))); // the slider's own handler stores the same value back
    };
    set(minimumLength_, u().minimumLength, 0.1);
    set(threshold_, u().threshold, 0.005);
    set(crossDissolve_, u().crossDissolveMS, 1);
}
