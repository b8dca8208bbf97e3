#include "cleaning/Brightwash.h"
#include "foundation/Prefs.h"

#include <QFile>
#include <QJsonDocument>
#include <gtest/gtest.h>

namespace {

class BrightwashSettingTest : public ::testing::Test {
protected:
    void SetUp() override { forgetAll(); }
    void TearDown() override { forgetAll(); }

    // Every key, whichever form wrote it: the process's own preferences file goes.
    static void forgetAll() {
        QFile::remove(prefs_filePath());
        prefs_reload();
    }
};

} // namespace

TEST_F(BrightwashSettingTest, FreshInstallationReadsTheReadDefaults) {
    const BrightwashSetting s = Brightwash::loadSettings();
    EXPECT_FALSE(s.doDenoiser);
    EXPECT_TRUE(s.doRemoveHum && s.doNoiseGate && s.doCompressor);
    EXPECT_DOUBLE_EQ(s.gate.threshold, -40.0); // never the class default 0.05 taken as dB
    EXPECT_DOUBLE_EQ(s.gate.hysteresis, 15.0);
    EXPECT_DOUBLE_EQ(s.compressor.ratio, 5.0);
    EXPECT_EQ(s.suffix, "cln");
}

TEST_F(BrightwashSettingTest, SavedValuesComeBackExceptThroughTheAsymmetricKeys) {
    BrightwashSetting s;
    s.compressor.ratio = 9.0;
    s.gate.hysteresis = 3.0;
    s.pausesThreshold = -33.0;
    s.gate.noisyEnironment = false;
    s.gate.preRoll = 0.9;
    s.gate.decay = 0.8;
    s.pauseLength = 0.4;
    s.suffix = "x";
    s.exportFormat = BWExportFormats::mp3;
    s.equalizer[2].gain = 4.0;
    Brightwash::saveSettings(s);
    const BrightwashSetting back = Brightwash::loadSettings();
    // Written under other keys than they are read from, or not written at all.
    EXPECT_DOUBLE_EQ(back.compressor.ratio, 5.0);
    EXPECT_DOUBLE_EQ(back.gate.hysteresis, 15.0);
    EXPECT_DOUBLE_EQ(back.pausesThreshold, -25.0);
    EXPECT_TRUE(back.gate.noisyEnironment);
    EXPECT_DOUBLE_EQ(back.gate.preRoll, 0.2);
    EXPECT_DOUBLE_EQ(prefs_getValueDouble("BrightwashSettings.compressor.ratio", 0), 9.0);
    EXPECT_DOUBLE_EQ(prefs_getValueDouble("pausesThreshold", 0), -33.0);
    EXPECT_DOUBLE_EQ(prefs_getValueDouble("BrightwashSettings.gate.hysteresis", 0), 3.0);
    // Symmetric keys.
    EXPECT_DOUBLE_EQ(back.gate.decay, 0.8);
    EXPECT_DOUBLE_EQ(back.pauseLength, 0.4);
    EXPECT_EQ(back.suffix, "x");
    EXPECT_EQ(back.exportFormat, BWExportFormats::mp3);
    EXPECT_DOUBLE_EQ(back.equalizer[2].gain, 4.0);
    EXPECT_TRUE(back.doDenoiser); // the value type's default was saved
    prefs_setValueString("cleanFormat", "flac");
    EXPECT_EQ(Brightwash::loadSettings().exportFormat, BWExportFormats::wave);
}

TEST_F(BrightwashSettingTest, JsonFormRoundTripsAndRefusesBadText) {
    BrightwashSetting s;
    s.gate.hysteresis = 7.5;
    s.uhmPrefs.threshold = 0.25f;
    s.suffix = "clean";
    s.advancedGate.subThreshold.rangeStart = -80;
    s.save();
    const auto back = BrightwashSetting::load();
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->encodeString(), s.encodeString());
    EXPECT_EQ(QJsonDocument::fromJson(s.encodeString().toUtf8()).object().keys().size(), 18);

    EXPECT_FALSE(BrightwashSetting::decodeString("").has_value());
    EXPECT_FALSE(BrightwashSetting::decodeString("{\"doDenoiser\": \"yes\"}").has_value());
    EXPECT_FALSE(BrightwashSetting::decodeString("{\"exportFormat\": \"ogg\"}").has_value());
    const auto partial = BrightwashSetting::decodeString("{\"doDenoiser\": false, \"gate\": {\"decay\": 2}}");
    ASSERT_TRUE(partial.has_value());
    EXPECT_FALSE(partial->doDenoiser);
    EXPECT_DOUBLE_EQ(partial->gate.decay, 2.0);
    EXPECT_DOUBLE_EQ(partial->gate.fadeOutDuration, 0.7);
}

TEST(BrightwashPhases, CountFollowsTheStages) {
    struct Case {
        bool den, gate, eq, comp, pauses, uhm, mp3;
        int want;
    };
    for (const Case& c : std::vector<Case>{{0, 0, 0, 0, 0, 0, 0, 2},
                                           {1, 0, 0, 0, 0, 0, 0, 10}, // set to 10, not added
                                           {1, 1, 1, 1, 1, 1, 1, 24},
                                           {0, 1, 0, 1, 0, 0, 0, 12},
                                           {0, 0, 1, 0, 1, 1, 1, 6}}) {
        BrightwashSetting s;
        s.doDenoiser = c.den;
        s.doNoiseGate = c.gate;
        s.doEqualizer = c.eq;
        s.doCompressor = c.comp;
        s.doRemovePauses = c.pauses;
        s.doEraseUhm = c.uhm;
        s.exportFormat = c.mp3 ? BWExportFormats::mp3 : BWExportFormats::wave;
        EXPECT_EQ(Brightwash::getNphases(s), c.want);
    }
}
