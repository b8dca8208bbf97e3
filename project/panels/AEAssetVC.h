#pragma once
// The asset inspector: the file's facts, its name, its type (six buttons), its gain and, for
// background music, where the music starts and how it loops and ducks. The asset plays, zooms and
// scrolls on a one-item timeline of its own, with the gain heard as the slider moves. Changes wait
// until OK, which writes them to the asset and tells assetInspectorVCDone (the caller saves the
// record and the show); Cancel leaves the asset as it was. Closing stops the playback and frees the
// player. Main thread.

#include "project/model/AEAssetType.h"
#include "ui/ducking/AEBGMSettingsVC.h"

#include <QDialog>
#include <QPointer>
#include <functional>
#include <memory>
#include <vector>

class AEAsset;
class AEBGMSettings;
class AEMarker;
class AETimeLine;
class TimelineWidget;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QTimer;
class QToolButton;
class AssetTypeButtons;

class AEAssetVC : public QDialog, public AEBGMSettingsDone {
    Q_OBJECT
public:
    explicit AEAssetVC(std::shared_ptr<AEAsset> asset, QWidget* parent = nullptr);
    ~AEAssetVC() override;

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
    void zoomIn_pressed();
    void zoomOut_pressed();
    void zoomAll_pressed();
    void goBegin_pressed();
    void goEnd_pressed();
    void pausePlayPressed();
    // The music starts at the playhead: on the asset's marker there, or on a new start marker that
    // joins the asset's markers on OK.
    void setBGMMarker();
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
    QPushButton* bgmAtPlayheadButton;
    QPushButton* relinkButton;
    QPushButton* cleanButton;
    QPushButton* uhmButton;
    QPushButton* okButton;
    std::shared_ptr<AETimeLine> assetTimeline;
    TimelineWidget* timelineView;
    QLabel* timecode;
    QToolButton* playButton;
    AEAssetType assetType;
    double volumeGain;
    const double originalVolumeGain;
    double bgmStart;
    QString bgmId;
    std::shared_ptr<AEBGMSettings> pendingBGMSettings;

protected:
    void showEvent(QShowEvent* event) override;
    void done(int result) override;

private:
    void fill();
    void prepareBGMPopUp();
    void openBGMSettings();
    QWidget* makePlayer();
    // The asset as the one item, from its start to its end (again after a relink).
    void placeAsset();
    void playerIdle();
    // Pauses, stops the ticks, frees the player and gives the shared lane height back; once.
    void closePlayer();
    std::vector<std::shared_ptr<AEMarker>> bgmCandidates() const;

    QTimer* playerTimer_ = nullptr;
    bool playerClosed_ = false;
    int shownLanesHeight_ = 0;
    std::weak_ptr<AETimeLine> shownTimeline_;
    std::shared_ptr<AEMarker> pendingMarker_;
    // Nulled by Qt when the panel goes, also while this inspector is being destroyed.
    QPointer<AEBGMSettingsVC> bgmPanel_;
};
