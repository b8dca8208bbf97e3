#pragma once
// The hesitation page of the cleaning settings: how often the file is analysed, the shortest held
// sound that counts, how alike neighbouring spectra must be, and the cross-fade of each cut. It edits
// globalBWSettings().uhmPrefs and tells `changed` after each edit. Main thread.

#include <QWidget>
#include <functional>

class QButtonGroup;
class QSlider;

class UhmVC : public QWidget {
public:
    explicit UhmVC(std::function<void()> changed, QWidget* parent = nullptr);
    // The controls again from the settings (after a reset).
    void refill();

private:
    std::function<void()> changed_;
    QButtonGroup* rates_ = nullptr;
    QSlider* minimumLength_ = nullptr;
    QSlider* threshold_ = nullptr;
    QSlider* crossDissolve_ = nullptr;
};
