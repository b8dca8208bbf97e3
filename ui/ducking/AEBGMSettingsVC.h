#pragma once
// How an asset behaves as background music: loops, ducks when attached, fade-out length. Edits the
// given AEBGMSettings (a default one when there is none); OK writes the controls to it, tells the
// delegate and closes.

#include <QDialog>
#include <memory>

class AEBGMSettings;
class QCheckBox;
class QLabel;
class QSlider;

class AEBGMSettingsDone {
public:
    virtual ~AEBGMSettingsDone() = default;
    virtual void aeBGMSettingsDone(const std::shared_ptr<AEBGMSettings>& bgmSettings) = 0;
};

class AEBGMSettingsVC : public QDialog {
    Q_OBJECT
public:
    AEBGMSettingsVC(std::shared_ptr<AEBGMSettings> settings, AEBGMSettingsDone* delegate,
                    QWidget* parent = nullptr);

    std::shared_ptr<AEBGMSettings> bgmSettings;
    AEBGMSettingsDone* delegate; // not owned
    QCheckBox* check_loopable;
    QCheckBox* chkAutoDuck;
    // Tenths of a second.
    QSlider* slide_fadeOut;
    QLabel* label_fadeOut;

private:
    void okPressed();
};
