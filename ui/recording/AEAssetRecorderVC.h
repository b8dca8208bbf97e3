#pragma once
// The sheet in which a take is recorded straight into a new asset of the episode. Takes go into the
// ingest folder as "recording_<date>.wav"; while one runs, its item grows on the sheet's own small
// timeline (the last 30 seconds, with the live waveform), and markers may be set with the button or
// the M key. Stop makes the asset, adds it to the episode and prepares the next take: several takes
// follow one another without closing the sheet. Closing ends a running take and keeps it.
//
// Main thread only.

#include "project/model/AEAssetType.h"
#include "recording/AudioRecorderSettings.h"
#include "ui/recording/AudioRecorderSetupVC.h"

#include <QDialog>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AEAsset;
class AEEpisode;
class AEMarker;
class AEShow;
class AETimeLine;
class GrowingTakeView;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;
class QXTimer;
class Recorder;

enum class AEMarkerVCDoneAction;

class AEAssetRecorderVC : public QDialog, public AudioRecorderSetupDelegate {
public:
    static constexpr const char* kUpdateTimerName = "AEAssetRecorderVC.update";
    static constexpr double kUpdateInterval = 0.1;
    static constexpr double kVisibleSeconds = 30.0;

    // assetAdded runs for each finished take, after the asset is in the episode's list: the window
    // refreshes its asset list and redraws its timeline there.
    AEAssetRecorderVC(QWidget* parent, std::shared_ptr<AEShow> show, std::shared_ptr<AEEpisode> episode,
                      std::function<void(const std::shared_ptr<AEAsset>&)> assetAdded = {});
    ~AEAssetRecorderVC() override;

    std::shared_ptr<AETimeLine> assetTimeline;
    AEAssetType assetType = AEAssetType::speech;
    int currentAssetN = 0;
    std::shared_ptr<Recorder> audioRecorder;
    std::vector<AudioDeviceMetadata> availableDevices;
    std::shared_ptr<AEAsset> recordingAsset;
    QString recordingName;
    QString recordingPath;
    bool recording = false;
    std::optional<double> t;
    std::shared_ptr<QXTimer> timer;
    std::shared_ptr<AEMarker> actualMarker;

    QPushButton* recordButton = nullptr;
    QPushButton* pauseButton = nullptr;
    QPushButton* markerButton = nullptr;
    QPushButton* setupButton = nullptr;
    QLineEdit* nameField = nullptr;

    void startupRecorder();
    void record_pressed();
    void pause_pressed();
    void recordingSetup_pressed();
    void audioRecordingSetupUpdate(const std::shared_ptr<AudioRecorderSettings>& recorderSettings) override;
    // A new marker at the current time of the take, on the growing item.
    void openMarkerVC();
    // The marker inspector's answer: notes and type go to actualMarker.
    void markerVCDone(const std::shared_ptr<AEMarker>& marker, AEMarkerVCDoneAction action);
    void globalStop(bool doSave);
    void setAssetType(AEAssetType type);
    // The take's markers so far, in take time.
    const std::vector<std::shared_ptr<AEMarker>>& takeMarkers() const { return takeMarkers_; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void done(int result) override;

private:
    void update();
    void updateLables();
    void displayIcons();
    QString newRecordingName() const;
    void prepareRecordingAsset();
    void showRange(double i, double o);
    // The take's file under the asset's final name: the name given, or the recording name.
    QString finalPathFor(const QString& finishedPath) const;

    std::shared_ptr<AEShow> show_;
    std::shared_ptr<AEEpisode> episode_;
    std::function<void(const std::shared_ptr<AEAsset>&)> assetAdded_;
    std::vector<std::shared_ptr<AEMarker>> takeMarkers_;
    std::vector<std::pair<AEAssetType, QToolButton*>> typeButtons_;
    GrowingTakeView* takeView_ = nullptr;
    QLabel* name_ = nullptr;
    QLabel* timecode_ = nullptr;
    QLabel* fileSize_ = nullptr;
    QLabel* duration_ = nullptr;
    QLabel* frequency_ = nullptr;
    QLabel* channels_ = nullptr;
    QLabel* bitsPerSample_ = nullptr;
    QLabel* level_ = nullptr;
};
