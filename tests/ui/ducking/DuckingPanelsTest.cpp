// The ducking panels and commands, driven as a person would: boxes, sliders, OK and Cancel.

#include "../../timeline/model/TimelineFixture.h"
#include "foundation/Prefs.h"
#include "project/model/DuckingSettings.h"
#include "ui/ducking/AEAutoDuckSettingsVC.h"
#include "ui/ducking/AEAutoDuckingVC.h"
#include "ui/ducking/AEBGMSettingsVC.h"
#include "ui/ducking/DuckingCommands.h"

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QWidget>
#include <gtest/gtest.h>

namespace {

void press(QDialog& dialog, QDialogButtonBox::StandardButton which) {
    dialog.findChild<QDialogButtonBox*>()->button(which)->click();
}

class DuckingPanelsTest : public ::testing::Test {
protected:
    void TearDown() override {
        prefs_removeKey(QXDuckingSettings::kLabel);
        prefs_removeKey(AEDuckingSettings::kLabel);
        if (AEAutoDuckSettingsVC::vc) delete AEAutoDuckSettingsVC::vc.data();
    }
};

TEST_F(DuckingPanelsTest, AutoDuckingBoxesAreSavedOnOkOnly) {
    AEDuckingSettings saved;
    saved.duckToSFX = true;
    saved.save();
    for (const auto button : {QDialogButtonBox::Cancel, QDialogButtonBox::Ok}) {
        AEAutoDuckingVC vc;
        EXPECT_TRUE(vc.chkDuckToSpeech->isChecked());
        EXPECT_TRUE(vc.chkDuckToSFX->isChecked());
        EXPECT_TRUE(vc.chkDeleteKFs->isChecked());
        int called = 0;
        vc.okCallback = [&] { ++called; };
        vc.chkDuckToSpeech->setChecked(false);
        vc.chkDeleteKFs->setChecked(false);
        press(vc, button);
        const AEDuckingSettings after;
        const bool ok = button == QDialogButtonBox::Ok;
        EXPECT_EQ(after.duckToSpeech, !ok);
        EXPECT_EQ(after.deleteKF, !ok);
        EXPECT_TRUE(after.duckToSFX);
        EXPECT_EQ(called, ok ? 1 : 0);
        EXPECT_EQ(vc.result(), ok ? QDialog::Accepted : QDialog::Rejected);
        if (!ok) {
            prefs_removeKey(AEDuckingSettings::kLabel);
            saved.save();
        }
    }
}

TEST_F(DuckingPanelsTest, SettingsWindowIsOneAndWritesEachSliderAtOnce) {
    auto* first = AEAutoDuckSettingsVC::show();
    EXPECT_EQ(AEAutoDuckSettingsVC::show(), first);
    EXPECT_EQ(first->thresholdSlider->value(), -25);
    EXPECT_EQ(first->labelText(first->releaseWindowSlider), "0.90 s");

    first->thresholdSlider->setValue(-31);
    first->attackPreRollSlider->setValue(35);
    first->decreaseSlider->setValue(-18);
    const QXDuckingSettings now;
    EXPECT_FLOAT_EQ(now.threshold, -31.0f);
    EXPECT_DOUBLE_EQ(now.attackPreRoll, 0.35);
    EXPECT_FLOAT_EQ(now.decrease, -18.0f);
    EXPECT_DOUBLE_EQ(now.releaseWindow, 0.9) << "untouched values stay";
    EXPECT_EQ(now.thresholdKey(), "31");
    EXPECT_EQ(first->labelText(first->thresholdSlider), "-31 dB");
}

struct Delegate : AEBGMSettingsDone {
    std::shared_ptr<AEBGMSettings> told;
    void aeBGMSettingsDone(const std::shared_ptr<AEBGMSettings>& s) override { told = s; }
};

TEST_F(DuckingPanelsTest, MusicSettingsEditTheGivenSetOrADefaultOne) {
    Delegate delegate;
    AEBGMSettingsVC fresh(nullptr, &delegate);
    ASSERT_TRUE(fresh.bgmSettings);
    EXPECT_TRUE(fresh.check_loopable->isChecked());
    EXPECT_TRUE(fresh.chkAutoDuck->isChecked());
    EXPECT_EQ(fresh.slide_fadeOut->value(), 50);

    auto settings = std::make_shared<AEBGMSettings>(true, 5.0, std::nullopt);
    AEBGMSettingsVC vc(settings, &delegate);
    EXPECT_TRUE(vc.chkAutoDuck->isChecked()) << "no choice reads as ducking";
    vc.check_loopable->setChecked(false);
    vc.chkAutoDuck->setChecked(false);
    vc.slide_fadeOut->setValue(25);
    EXPECT_EQ(vc.label_fadeOut->text(), "Fade out: 2.5 s");
    press(vc, QDialogButtonBox::Ok);
    EXPECT_EQ(delegate.told, settings);
    EXPECT_FALSE(settings->loopable);
    EXPECT_EQ(settings->autoduck, false);
    EXPECT_DOUBLE_EQ(settings->fadeOut, 2.5);
}

TEST_F(DuckingPanelsTest, CommandsReachTheTimelineAndTheSettingsWindow) {
    QWidget window;
    auto tl = tlfixture::timeline();
    tl->appendItemInMainLane(tlfixture::asset("talk", 30), std::nullopt, false);
    DuckingCommands commands([&] { return tl; }, &window);

    tl->drag->setRange(AETimeRange(10, 20), 0);
    commands.autoDuckSelectionAction->trigger();
    EXPECT_EQ(tl->mainLane[0]->volumeKFs->keyframes.size(), 4u);
    EXPECT_DOUBLE_EQ(tl->mainLane[0]->volumeKFs->getValue(15), -12);

    commands.automaticDuckingSettingsAction->trigger();
    ASSERT_TRUE(AEAutoDuckSettingsVC::vc);
    EXPECT_TRUE(AEAutoDuckSettingsVC::vc->isVisible());
}

} // namespace
