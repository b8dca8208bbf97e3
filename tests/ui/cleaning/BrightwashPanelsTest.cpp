#include "cleaning/Brightwash.h"
#include "foundation/Prefs.h"
#include "project/model/AEAsset.h"
#include "project/model/AEMarker.h"
#include "support/ScriptedSession.h"
#include "ui/cleaning/BrightwashAssetAlertVC.h"
#include "ui/cleaning/Brightwash_prefsVC.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QSlider>
#include <gtest/gtest.h>

namespace {

class BrightwashPanels : public ::testing::Test, protected ScriptedSession {
protected:
    void SetUp() override {
        for (const char* key : {"BrightwashSettings", "doRemovePauses", "doDenoise", "compressor.ratio",
                                "BrightwashSettings.compressor.ratio", "denoiseAmount"})
            prefs_removeKey(key);
    }
};

} // namespace

TEST_F(BrightwashPanels, SlidersEditTheGlobalAndOkWritesThePerKeyForm) {
    Brightwash_prefsVC panel;
    // No JSON stored: the panel starts from the per-key form.
    EXPECT_DOUBLE_EQ(globalBWSettings().compressor.ratio, 5.0);
    EXPECT_EQ(panel.valueLabel("Ratio")->text(), "5.0");
    panel.slider("Ratio")->setValue(80); // 8.0
    EXPECT_DOUBLE_EQ(globalBWSettings().compressor.ratio, 8.0);
    EXPECT_DOUBLE_EQ(BrightwashSetting::load()->compressor.ratio, 8.0); // the JSON form at once

    panel.slider("Amount")->setValue(25); // shown ×10
    EXPECT_DOUBLE_EQ(globalBWSettings().denoiserLevel, 0.25);
    EXPECT_EQ(panel.valueLabel("Amount")->text(), "2.5");

    panel.switches[0]->setChecked(true); // the denoiser's switch writes its key at once
    EXPECT_TRUE(prefs_getValueBool("doDenoise", false));

    EXPECT_FALSE(panel.slider("Threshold")->isEnabled()); // automatic threshold on
    panel.okPressed();
    // The ratio goes out under a key the next run does not read.
    EXPECT_DOUBLE_EQ(prefs_getValueDouble("BrightwashSettings.compressor.ratio", 0), 8.0);
    EXPECT_DOUBLE_EQ(Brightwash::loadSettings().compressor.ratio, 5.0);
    EXPECT_DOUBLE_EQ(Brightwash::loadSettings().denoiserLevel, 0.25);
}

TEST_F(BrightwashPanels, AlertAsksOnlyWhenMarkersWouldBeLost) {
    auto asset = AEAsset::makePlaceholder();
    asset->name = "talk";
    std::vector<std::pair<int, bool>> calls;
    auto delegate = [&](int row, bool remove) { calls.emplace_back(row, remove); };

    BrightwashAssetAlertVC plain(asset, 3, delegate);
    plain.radioRemove->click();
    EXPECT_EQ(plain.radio, "remove");
    plain.okPressed();
    EXPECT_EQ(calls, (std::vector<std::pair<int, bool>>{{3, true}}));
    EXPECT_TRUE(door->transcript().empty());

    asset->markers.push_back(
        std::make_shared<AEMarker>(1.0, std::nullopt, AEMarkerType::normal, "m", std::nullopt));
    prefs_setValueBool("doRemovePauses", true);
    door->queueConfirm(false); // Cancel
    BrightwashAssetAlertVC marked(asset, 4, delegate);
    marked.okPressed();
    EXPECT_EQ(calls.size(), 1u);
    ASSERT_EQ(door->transcript().size(), 1u);
    EXPECT_TRUE(door->transcript().front().contains("thy will be lost"));

    BrightwashAssetAlertVC forgotten(asset, 5, delegate);
    forgotten.forgetIt_pressed();
    EXPECT_EQ(calls.size(), 1u);
}
