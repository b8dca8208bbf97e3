// The editing window's rules without pixels: where each insert button puts an asset, the hover
// menu's width limit, undo and redo, autosave while playing, and bad input through the window (drops and
// exports that cannot work) leaving the timeline as it was with a clear message.

#include "app/windows/TimelineViewController.h"

#include "app/windows/TimelineExport.h"
#include "foundation/Prefs.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "project/panels/MainViewController.h"
#include "support/EventWait.h"
#include "support/ScriptedSession.h"
#include "support/TestAudio.h"
#include "support/TestEnvironment.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/view/TimelineWidget.h"

#include <QDir>
#include <QMenu>
#include <QTest>
#include <QToolButton>
#include <unistd.h>

namespace {

QString tone(const QString& path, double seconds) {
    TestAudio::run("/usr/bin/sox", {"-n", "-r", "44100", "-c", "1", "-b", "16", path, "synth",
                                    QString::number(seconds), "sine", "440", "vol", "0.3"});
    return path;
}

std::shared_ptr<AEAsset> asset(const QString& file, const QString& name, AEAssetType type) {
    AEAsset::Args args;
    args.filePath = file;
    args.name = name;
    args.type = type;
    args.isIngestedCopy = true;
    return AEAsset::make(args);
}

class TimelineViewControllerTest : public ::testing::Test, protected ScriptedSession {
protected:
    void SetUp() override {
        testenv::useStoreWorkFolder();
        prefs_setValueBool("AEIngest.DontAskAtDrag", true);
        prefs_setValueBool("AEIngest.Normalize", false);
        const QString ingests = AEIngest::ingestPath;
        speech = asset(tone(ingests + "ctl_speech.wav", 4.0), "Speech", AEAssetType::speech);
        music = asset(tone(ingests + "ctl_music.wav", 6.0), "Music", AEAssetType::bgm);
        zendrelShow = std::make_shared<AEShow>("Controller Show");
        episode = std::make_shared<AEEpisode>("C1", "Controller", "", AEIngest::workFolder);
        episode->assets = {speech};
        zendrelShow->episodes.push_back(episode);
        AEAssetListVCGlobal = {music, speech};
        vc = std::make_unique<TimelineViewController>();
        vc->resize(1200, 700);
        vc->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(vc.get()));
        vc->tlLoaded(episode);
    }

    void TearDown() override {
        vc.reset();
        zendrelShow.reset();
        AEAssetListVCGlobal.clear();
        prefs_removeKey("AEIngest.DontAskAtDrag");
        prefs_removeKey("AEIngest.Normalize");
    }

    AETimeLine& tl() { return *vc->timeline(); }
    void choose(int commonRow, int episodeRow) {
        vc->commands().selectedCommonAssetIndex = commonRow;
        vc->commands().selectedEpisodeAssetIndex = episodeRow;
    }
    QString lastLine() const { return transcript().value(transcript().size() - 1); }

    std::shared_ptr<AEAsset> speech;
    std::shared_ptr<AEAsset> music;
    std::shared_ptr<AEEpisode> episode;
    std::unique_ptr<TimelineViewController> vc;
};

} // namespace

TEST_F(TimelineViewControllerTest, EachInsertPutsTheAssetWhereItsRuleSays) {
    auto& c = vc->commands();
    // Nothing chosen: nothing happens.
    choose(-1, -1);
    c.performInsert();
    EXPECT_TRUE(tl().mainLane.empty());

    // The pointer is outside the timeline (hover playhead hidden): insert appends.
    choose(-1, 0);
    c.performInsert();
    c.performInsert();
    ASSERT_EQ(tl().mainLane.size(), 2u);
    EXPECT_NEAR(tl().getMainLaneOutTime(), 8.0, 0.01);

    // Background music goes to lane −1 whichever button sends it.
    choose(0, -1);
    for (int64_t lane : {0, 1})
        c.performInsert(lane);
    ASSERT_EQ(tl().getBGMs().size(), 2u);
    for (const auto& item : tl().getBGMs())
        EXPECT_LT(item->lane, 0);

    // A plain asset on the effects button lands on lane 1 at the playhead.
    tl().setPlayheadTime(1.0);
    choose(-1, 0);
    c.performInsert(1);
    EXPECT_EQ(tl().getAttachedItem(1.5, 1)->asset, speech);

    // At the playhead: the main lane is cut there and the asset goes in the cut, as one undo step.
    c.performInsertAtPlayhead();
    EXPECT_EQ(tl().mainLane.size(), 4u);
    EXPECT_NEAR(tl().getMainLaneItemInTime(1), 1.0, 0.01);
    c.undo();
    EXPECT_EQ(tl().mainLane.size(), 2u);
    EXPECT_EQ(episode->timeline, vc->timeline()) << "the episode follows the undo";
    c.redo();
    EXPECT_EQ(tl().mainLane.size(), 4u);

    // Autosave runs while playing.
    tl().play();
    c.autoSave();
    EXPECT_TRUE(tl().playing);
    const auto saved = AETimeLine::load(episode->timelineDataPath);
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(saved->mainLane.size(), 4u);
    tl().pause();
}

TEST_F(TimelineViewControllerTest, HoverMenuOnlyOnItemsFiftyPixelsWide) {
    const auto blip = asset(tone(AEIngest::ingestPath + "ctl_blip.wav", 0.15), "Blip", AEAssetType::speech);
    tl().appendItemInMainLane(speech);
    tl().appendItemInMainLane(blip);
    tl().setViewportRange(0, 8.0);
    TimelineWidget* widget = vc->timelineWidget();
    const auto ys = tl().laneToYs(0);
    ASSERT_TRUE(ys);
    const auto hover = [&](double t) {
        vc->tlItemHamburgerIdle(widget->toWidget(QPointF(tl().timeToX(t), (ys->first + ys->second) / 2)));
    };
    ASSERT_LT(tl().timeToX(4.15) - tl().timeToX(4.0), 50.0);
    hover(2.0);
    EXPECT_TRUE(vc->hamburgerButton()->isVisible());
    EXPECT_EQ(vc->hoverItem(), tl().mainLane[0]);
    vc->titItemHamburgerSetupTitles();
    EXPECT_EQ(vc->hamburgerMenu()->actions().first()->text(), "Mute");

    hover(4.07);
    EXPECT_FALSE(vc->hamburgerButton()->isVisible());
    EXPECT_EQ(vc->hoverItem(), nullptr);
}

TEST_F(TimelineViewControllerTest, BadDropsAreToldAndLeaveTheTimelineAlone) {
    choose(-1, 0);
    vc->commands().performInsert();
    QTemporaryDir outside;
    QDir(outside.path()).mkdir("a folder");
    QFile text(outside.path() + "/notes.txt");
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("not audio");
    text.close();
    QFile empty(outside.path() + "/empty.wav");
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    empty.close();
    const struct {
        QString path;
        QString reason;
    } cases[] = {{outside.path() + "/a folder", "folders cannot be dropped"},
                 {text.fileName(), "not a sound file"},
                 {outside.path() + "/gone.wav", "no longer there"},
                 {empty.fileName(), "the file is empty"}};
    for (const auto& c : cases) {
        vc->dragged({c.path}, 0.0, 0);
        EXPECT_TRUE(lastLine().contains("Cannot Add Files")) << lastLine().toStdString();
        EXPECT_TRUE(lastLine().contains(c.reason)) << lastLine().toStdString();
        EXPECT_EQ(tl().mainLane.size(), 1u);
        EXPECT_EQ(episode->assets.size(), 1u);
    }
}

TEST_F(TimelineViewControllerTest, ExportIntoAReadOnlyFolderIsRefusedClearly) {
    choose(-1, 0);
    vc->commands().performInsert();
    QTemporaryDir out;
    QFile::setPermissions(out.path(), QFile::ReadOwner | QFile::ExeOwner);
    // Permission bits do not stop root: a folder nobody can create files in does.
    const QString folder = getuid() == 0 ? QString("/proc") : out.path();
    bool finished = false;
    bool ok = true;
    TimelineExport::exportTo(folder + "/x.mp3", vc->timeline(), episode, vc.get(), [&](bool done) {
        finished = true;
        ok = done;
    });
    ASSERT_TRUE(testenv::waitUntil([&] { return finished; }, 5000));
    EXPECT_FALSE(ok);
    EXPECT_TRUE(lastLine().contains("Error")) << lastLine().toStdString();
    EXPECT_FALSE(TimelineExport::running());
    EXPECT_EQ(tl().mainLane.size(), 1u);
    QFile::setPermissions(out.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(TimelineViewControllerTest, AnEpisodeWhoseMediaWentOpensWithThemMarkedMissing) {
    QTemporaryDir outside;
    const QString original = tone(outside.path() + "/lost.wav", 2.0);
    AEAsset::Args args;
    args.filePath = original;
    args.name = "Lost";
    auto lost = AEAsset::make(args);
    ASSERT_TRUE(testenv::waitUntil([&] { return lost->ingested; }, 5000));
    episode->assets.push_back(lost);
    tl().appendItemInMainLane(lost);
    vc->commands().autoSave();
    vc.reset();
    QFile::remove(original);
    QFile::remove(lost->ingestedFilePath);

    // The list's open: the loading window, the check (which asks where the file went), the window.
    MainViewController list;
    std::shared_ptr<AEEpisode> opened;
    list.timelineOpener = [&](const std::shared_ptr<AEEpisode>& e) { opened = e; };
    list.open(episode);
    ASSERT_TRUE(testenv::waitUntil([&] { return opened != nullptr; }, 5000));
    bool asked = false;
    for (const QString& line : door->transcript())
        asked |= line.startsWith("selectFile: Find original path");
    EXPECT_TRUE(asked);
    EXPECT_FALSE(lost->present);
    EXPECT_EQ(episode->timeline->mainLane.size(), 1u) << "the item stays, drawn as missing";
    TimelineWindowStatus = AEWindowStatus::closed;
}
