#include "cleaning/Brightwash.h"
#include "cleaning/UhmDB.h"
#include "cleaning/UhmMarkers.h"
#include "foundation/Prefs.h"
#include "project/model/AEAsset.h"
#include "project/model/AEMarker.h"
#include "project/model/Globals.h"
#include "support/EventWait.h"
#include "support/ScriptedSession.h"
#include "support/TestAudio.h"
#include "ui/cleaning/BatchCleanWindow.h"
#include "ui/cleaning/UhmVCPC.h"

#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>

namespace {

class HesitationAndBatchPanels : public ::testing::Test, protected ScriptedSession {
protected:
    TestAudio audio;
};

} // namespace

TEST_F(HesitationAndBatchPanels, ProbableUhmMarksTheHeldSoundAndDeleteEmptiesTheDatabase) {
    // Hiss, a held buzz from 1 s to 2 s, hiss.
    const QString hiss = audio.noise("hiss.wav", 1.0, 0.3);
    const QString buzz = audio.path("buzz.wav");
    TestAudio::run("/usr/bin/sox", {"-n", "-r", "44100", "-c", "1", "-b", "16", buzz, "synth", "1",
                                    "sawtooth", "125", "lowpass", "900", "vol", "0.5"});
    auto asset = AEAsset::makePlaceholder();
    asset->originalFilePath = audio.join("talk.wav", {hiss, buzz, hiss});
    auto db = std::make_shared<UhmDB>(audio.path("UhmDB.json"));
    db->addFingerprint({1.0f, 0.5f});
    ASSERT_TRUE(db->saveToFile());
    prefs_setValueDouble(UhmVCPC::kMinimumLengthKey, 0.5);
    prefs_setValueDouble(UhmVCPC::kThresholdKey, 0.1);

    int told = -1;
    UhmVCPC panel(asset, db, [&told](int added) { told = added; });
    panel.findChild<QRadioButton*>("rate32")->click();
    EXPECT_EQ(prefs_getValueString(UhmVCPC::kIntervalKey, ""), "32");
    panel.findChild<QPushButton*>("btnFind")->click();
    ASSERT_TRUE(testenv::waitUntil([&told] { return told >= 0; }, 30000));
    ASSERT_EQ(told, 1);
    ASSERT_EQ(asset->markers.size(), 1u);
    const AEMarker& marker = *asset->markers.front();
    EXPECT_EQ(marker.type, AEMarkerType::uhm);
    EXPECT_EQ(marker.notes, kProbableUhmNotes);
    // Inside the held sound, and most of it.
    EXPECT_NEAR(marker.inTime, 1.0, 0.1);
    EXPECT_LE(marker.outTime, 2.0);
    EXPECT_GT(marker.outTime - marker.inTime, 0.75);

    // The held stretch learnt into the show's database, then the whole database emptied.
    uhmDB = db;
    bool added = false;
    addSelectionToUhmDB(asset, 1.2, 1.8, [&added](bool ok) { added = ok; });
    ASSERT_TRUE(testenv::waitUntil([&added] { return added; }, 30000));
    uhmDB = nullptr;
    EXPECT_EQ(UhmDB(db->dbPath).fingerprintList.size(), 2u);
    panel.findChild<QPushButton*>("btnDeleteDB")->click();
    EXPECT_TRUE(UhmDB(db->dbPath).fingerprintList.empty());
}

TEST_F(HesitationAndBatchPanels, BatchWindowShowsEachFileAndTheTotal) {
    BrightwashSetting s = Brightwash::loadSettings();
    s.doDenoiser = s.doNoiseGate = s.doCompressor = s.doEqualizer = s.doRemovePauses = s.doEraseUhm = false;
    Brightwash::saveSettings(s);
    const QString good = audio.speech("good.wav", "One file of a batch.");
    const QString junk = audio.bytes("junk.wav", "RIFF but no sound");
    BatchCleanWindow window;
    window.addFiles({good, junk, good, audio.path("missing.wav")});
    ASSERT_EQ(window.files().size(), 2);
    window.findChild<QPushButton*>("btnClean")->click();
    ASSERT_TRUE(window.isRunning());
    ASSERT_TRUE(testenv::waitUntil([&window] { return !window.isRunning(); }, 60000));
    EXPECT_EQ(window.fileBar(0)->value(), 1000);
    EXPECT_EQ(window.fileStatus(0), "Done: good_" + s.suffix + ".wav");
    EXPECT_TRUE(window.fileStatus(1).startsWith("Failed: ")) << window.fileStatus(1).toStdString();
    EXPECT_EQ(window.totalBar()->value(), 1000);
}
