#include "ui/recording/RecorderEntryPoints.h"

#include "foundation/Prefs.h"
#include "project/model/AEShow.h"
#include "ui/recording/AEAssetRecorderVC.h"
#include "ui/recording/AudioRecorderSetupVC.h"

namespace {

// Lives as long as its panel.
class ShowSettingsUpdate : public QObject, public AudioRecorderSetupDelegate {
public:
    ShowSettingsUpdate(QObject* panel, std::shared_ptr<AEShow> show, std::function<void()> saveShow)
        : QObject(panel), show_(std::move(show)), saveShow_(std::move(saveShow)) {}
    void audioRecordingSetupUpdate(const std::shared_ptr<AudioRecorderSettings>& recorderSettings) override {
        show_->recorderSettings = recorderSettings;
        if (saveShow_) saveShow_();
    }

private:
    std::shared_ptr<AEShow> show_;
    std::function<void()> saveShow_;
};

} // namespace

AudioRecorderSetupVC* menu_recorderSettings(QWidget* window, const std::shared_ptr<AEShow>& show,
                                            std::function<void()> saveShow) {
    auto* panel = AudioRecorderSetupVC::showPanel(window, nullptr, show->recorderSettings);
    panel->setDelegate(new ShowSettingsUpdate(panel, show, std::move(saveShow)));
    return panel;
}

AEAssetRecorderVC* openAssetRecorder(QWidget* window, const std::shared_ptr<AEShow>& show,
                                     const std::shared_ptr<AEEpisode>& episode,
                                     std::function<void(const std::shared_ptr<AEAsset>&)> assetAdded) {
    auto* sheet = new AEAssetRecorderVC(window, show, episode, std::move(assetAdded));
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
    return sheet;
}

bool recButtonInEpisodeAssetsArea() {
    return prefs_getValueBool("AEPreferences.recButtonInEpisodeAssetsArea", true);
}
