#pragma once
// The asset inspector: the file's facts, its name, its type (six buttons), its gain and, for
// background music, where the music starts and how it loops and ducks. Changes wait until OK, which
// writes them to the asset and tells assetInspectorVCDone (the caller saves the record and the show);
// Cancel leaves the asset as it was. Main thread.

#include "project/model/AEAssetType.h"
#include "ui/ducking/AEBGMSettingsVC.h"

#include <QDialog>
#include <QPointer>
#include <functional>
#include <memory>

class AEAsset;
class AEBGMSettings;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class AssetTypeButtons;

class AEAssetVC : public QDialog, public AEBGMSettingsDone {
    Q_OBJECT
public:
    explicit AEAssetVC(std::shared_ptr<AEAsset> asset, QWidget* parent = nullptr);

    std::function<void(const std::shared_ptr<AEAsset>&, const QString& name, AEAssetType type)>
        assetInspectorVCDone;
    // Set before show() by a window that can clean this asset or look for its hesitations: the
    // inspector offers "Clean…" and "Probable Uhm…".
    std::function<void()> onClean;
    std::function<void()> onUhmAnalysis;

    void typePressed(AEAssetType type);
    void volumeGainSlider_modified(int tenthsOfDb);
    void autoGain();
    void ok_pressed();
    void aeBGMSettingsDone(const std::shared_ptr<AEBGMSettings>& bgmSettings) override;
    // The settings panel opened by the music button; null when closed.
    AEBGMSettingsVC* bgmSettingsPanel() const { return bgmPanel_; }
    // "+3.5 dB", "-2.0 dB", "0.0 dB".
    static QString gainText(double dB);

    std::shared_ptr<AEAsset> asset;
    QLineEdit* nameField;
    QLabel* duration;
    QLabel* fileSize;
    QLabel* frequency;
    QLabel* channels;
    QLabel* bitsPerSample;
    QLabel* ingested;
    QSlider* volumeGainSlider;
    QLabel* volumeGainValueLabel;
    AssetTypeButtons* typeButtons;
    QComboBox* bgmPopUp;
    QPushButton* bgmSettingsButton;
    QPushButton* relinkButton;
    QPushButton* cleanButton;
    QPushButton* uhmButton;
    QPushButton* okButton;
    AEAssetType assetType;
    double volumeGain;
    double bgmStart;
    QString bgmId;
    std::shared_ptr<AEBGMSettings> pendingBGMSettings;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void fill();
    void prepareBGMPopUp();
    void openBGMSettings();
    // Nulled by Qt when the panel goes, also while this inspector is being destroyed.
    QPointer<AEBGMSettingsVC> bgmPanel_;
};
