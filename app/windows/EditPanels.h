#pragma once
// The editing window's small panels: statistics, an asset's volume, selection to asset, insert
// silence. Each is a plain dialog that reports through a callback. Main thread.

#include "app/core/TimelineCommands.h"
#include "project/model/AEAssetType.h"
#include "render/SelectionToAsset.h"

#include <QDialog>
#include <functional>
#include <memory>

class AEAsset;
class QButtonGroup;
class QComboBox;
class QLabel;
class QLineEdit;
class QSlider;
class QPushButton;

class TimeLineStatsVC : public QDialog {
    Q_OBJECT
public:
    explicit TimeLineStatsVC(QWidget* parent = nullptr);
    void update(const AETimelineStats& stats);
    QLabel* labels[4];
};

// Bound to AEAsset.volumeGain; Auto brings the asset's RMS to −12 dB. `changed` after each change.
class VolumeSliderVC : public QDialog {
    Q_OBJECT
public:
    VolumeSliderVC(const std::shared_ptr<AEAsset>& asset, std::function<void()> changed,
                   QWidget* parent = nullptr);
    QSlider* sldVolume;
    QLabel* lblSlider;
    QPushButton* btnAuto;

private:
    void showGain();
    std::shared_ptr<AEAsset> asset_;
    std::function<void()> changed_;
};

class AESelectionToAssetVC : public QDialog {
    Q_OBJECT
public:
    using Done = std::function<void(const QString& name, AEAssetType type, AESelectionToAssetWhere where)>;
    AESelectionToAssetVC(const QString& suggestedName, Done done, QWidget* parent = nullptr);
    QLineEdit* name;
    QComboBox* assetType;
    QButtonGroup* radio;
};

class AEInsertSilenceVC : public QDialog {
    Q_OBJECT
public:
    AEInsertSilenceVC(std::function<void(double)> okPressed, QWidget* parent = nullptr);
    QLineEdit* fldDuration;
};
