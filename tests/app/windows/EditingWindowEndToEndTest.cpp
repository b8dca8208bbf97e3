// The whole application driven through its widgets: a prepared working folder, the episode opened
// from the list, files dropped from outside, list inserts, blade, range delete, undo/redo, a chapter,
// music with a keyframe, two seconds of play, an MP3 export read back by ffprobe, and the close back
// to the list with the timeline and the modified date on disk.

#include "WindowSession.h"
#include "app/windows/AssetListWidget.h"
#include "app/windows/MarkerInspectorVC.h"
#include "app/windows/TimelineExport.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "support/TestAudio.h"
#include "timeline/model/AEDucking.h"
#include "timeline/model/AEKeyframe.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/view/TimelineWidget.h"
#include "ui/CustomSaveDialog.h"

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDropEvent>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QToolButton>
#include <QUrl>

namespace {

QString tone(const QString& path, double seconds, int hz) {
    TestAudio::run("/usr/bin/sox", {"-n", "-r", "44100", "-c", "2", "-b", "16", path, "synth",
                                    QString::number(seconds), "sine", QString::number(hz), "vol", "0.3"});
    return path;
}

QJsonObject ffprobe(const QString& path) {
    QProcess p;
    p.start("ffprobe", {"-v", "quiet", "-print_format", "json", "-show_format", "-show_chapters", path});
    p.waitForFinished(30000);
    return QJsonDocument::fromJson(p.readAllStandardOutput()).object();
}

class EditingWindowEndToEnd : public ::testing::Test {
protected:
    void SetUp() override {
        folder = testenv::storeWorkFolder();
        QDir(folder).removeRecursively();
        testenv::useStoreWorkFolder();
        const QString ingests = AEIngest::ingestPath;
        AEShow show("E2E Show");
        show.commonAssets.push_back(
            commonAsset(tone(ingests + "jingle.wav", 1.0, 880), "Jingle", AEAssetType::jingle));
        show.commonAssets.push_back(
            commonAsset(tone(ingests + "music.wav", 12.0, 220), "Music", AEAssetType::bgm));
        auto episode = std::make_shared<AEEpisode>("E1", "Pilot", "", folder);
        episode->modificationDate = QDateTime::currentDateTime().addDays(-3);
        show.episodes.push_back(episode);
        ASSERT_TRUE(show.save(folder + "show.AEShow"));
        timelinePath = episode->timelineDataPath;

        windowsession::begin(folder, door);
        prefs_setValueString("TimelineExport.folder", out.path());
    }

    void TearDown() override {
        delegate.reset();
        mainVC = nullptr;
        prefs_removeKey("TimelineExport.folder");
        windowsession::end();
    }

    static std::shared_ptr<AEAsset> commonAsset(const QString& file, const QString& name, AEAssetType type) {
        AEAsset::Args args;
        args.filePath = file;
        args.name = name;
        args.type = type;
        args.isIngestedCopy = true;
        args.isNew = true;
        return AEAsset::make(args);
    }

    TimelineViewController* vc() const { return delegate->timelineVC(); }
    std::shared_ptr<AETimeLine> tl() const { return vc()->timeline(); }

    // A widget point on `lane` at time t.
    QPoint at(double t, int64_t lane) const {
        const auto ys = tl()->laneToYs(lane);
        EXPECT_TRUE(ys.has_value());
        const double y = ys ? (ys->first + ys->second) / 2 : 0;
        return vc()->timelineWidget()->toWidget(QPointF(tl()->timeToX(t), y)).toPoint();
    }

    void trigger(const QString& action) {
        QAction* a = delegate->action(action);
        ASSERT_NE(a, nullptr) << action.toStdString();
        a->trigger();
    }

    QToolButton* button(const QString& name) const { return vc()->findChild<QToolButton*>(name); }

    void dropFiles(const QStringList& paths, QPoint pos) {
        QMimeData mime;
        QList<QUrl> urls;
        for (const QString& p : paths)
            urls << QUrl::fromLocalFile(p);
        mime.setUrls(urls);
        QWidget* target = vc()->timelineWidget();
        QDragEnterEvent enter(pos, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDropEvent drop(pos, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &drop);
    }

    QString folder;
    QString timelinePath;
    QTemporaryDir outside;
    QTemporaryDir out;
    std::shared_ptr<ScriptedInteraction> door = std::make_shared<ScriptedInteraction>();
    std::shared_ptr<AppDelegate> delegate;
};

} // namespace

TEST_F(EditingWindowEndToEnd, OpenEditHearExportAndCloseBackToTheList) {
    ASSERT_NO_FATAL_FAILURE(windowsession::launchAndOpen(delegate));
    MainViewController* list = delegate->mainViewController();
    // Opened from the list: the loading window, then the editing window in its place.
    EXPECT_EQ(delegate->window()->content(), vc());
    EXPECT_EQ(TimelineWindowStatus, AEWindowStatus::open);
    ASSERT_EQ(vc()->commonAssetTableView()->count(), 2);
    testenv::pumpEventsFor(100);

    // Two files from the desktop onto the empty main lane.
    const QString a = tone(outside.path() + "/Interview A.wav", 3.0, 440);
    const QString b = tone(outside.path() + "/Interview B.wav", 2.0, 660);
    dropFiles({a, b}, QPoint(20, vc()->timelineWidget()->height() / 2));
    ASSERT_TRUE(testenv::waitUntil([&] { return tl()->mainLane.size() == 2; }, 10000));
    EXPECT_EQ(vc()->episodeAssetTableView()->count(), 2);
    EXPECT_NEAR(tl()->getMainLaneOutTime(), 5.0, 0.02);

    // The jingle from the common list, with the pointer away from the timeline: appended.
    vc()->commonAssetTableView()->setCurrentRow(0);
    button("Insert")->click();
    ASSERT_EQ(tl()->mainLane.size(), 3u);
    EXPECT_NEAR(tl()->getMainLaneOutTime(), 6.0, 0.02);

    // Blade at 1.5 s in blade mode, back to select mode.
    button("Blade")->click();
    QTest::mouseClick(vc()->timelineWidget(), Qt::LeftButton, {}, at(1.5, 0));
    button("Select")->click();
    EXPECT_EQ(tl()->mainLane.size(), 4u);

    // A range from 0.5 to 1.0 s dragged on the main lane and deleted.
    QWidget* widget = vc()->timelineWidget();
    QTest::mousePress(widget, Qt::LeftButton, {}, at(0.5, 0));
    QTest::mouseMove(widget, at(0.75, 0));
    QTest::mouseMove(widget, at(1.0, 0));
    QTest::mouseRelease(widget, Qt::LeftButton, {}, at(1.0, 0));
    testenv::pumpEventsFor(100);
    trigger("menu_delete");
    const double afterDelete = tl()->getMainLaneOutTime();
    EXPECT_NEAR(afterDelete, 5.5, 0.05);

    trigger("menu_undo");
    EXPECT_NEAR(tl()->getMainLaneOutTime(), 6.0, 0.02);
    trigger("menu_redo");
    EXPECT_NEAR(tl()->getMainLaneOutTime(), afterDelete, 0.001);

    // A chapter at the start and one at 3 s, each titled in the inspector.
    for (const auto& [t, title] : {std::pair{0.0, "Intro"}, std::pair{3.0, "Second part"}}) {
        QTest::mouseClick(widget, Qt::LeftButton, {}, at(t + 0.01, 0));
        trigger("menu_addChapterMarker");
        auto* sheet = vc()->findChild<MarkerInspectorVC*>();
        ASSERT_NE(sheet, nullptr);
        sheet->notesField->setText(title);
        sheet->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
        testenv::pumpEventsFor(50);
    }

    // Music under everything, selected, with a keyframe at 2 s.
    trigger("menu_viewAll");
    button("|<")->click();
    vc()->commonAssetTableView()->setCurrentRow(1);
    button("BGM")->click();
    ASSERT_EQ(tl()->getBGMs().size(), 1u);
    QTest::mouseClick(widget, Qt::LeftButton, {}, at(2.0, -1));
    button("+KF")->click();
    // Set while the music's ducking job may still run: the hand-made point outlives the job.
    ASSERT_TRUE(testenv::waitUntil([] { return AEDucking::jobsInFlight() == 0; }, 10000));
    const auto& points = tl()->getBGMs().front()->volumeKFs->keyframes;
    EXPECT_TRUE(std::any_of(points.begin(), points.end(), [](const auto& kf) { return !kf->flag1; }));

    // Two seconds of play through the null output.
    trigger("menu_viewAll");
    QTest::mouseClick(widget, Qt::LeftButton, {}, at(0.5, 0));
    const double start = tl()->currentPHTime;
    button("Play")->click();
    testenv::pumpEventsFor(2000);
    EXPECT_TRUE(tl()->playing);
    vc()->play_pressed();
    EXPECT_FALSE(tl()->playing);
    EXPECT_NEAR(tl()->currentPHTime - start, 2.0, 0.5);

    // Export to MP3 through the dialog.
    trigger("mennu_exportTimeline");
    auto* save = vc()->findChild<CustomSaveDialog*>();
    ASSERT_NE(save, nullptr);
    EXPECT_EQ(save->nameField->text(), "Pilot.mp3");
    // An MP3 is normalised unless the person says otherwise, and the report says how it came out.
    ASSERT_NE(save->normaliseBox, nullptr);
    EXPECT_TRUE(save->normaliseBox->isChecked());
    save->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
    ASSERT_TRUE(testenv::waitUntil([] { return TimelineExport::doneAlert() != nullptr; }, 40000))
        << door->transcript().size();
    EXPECT_TRUE(TimelineExport::doneAlert()->informativeText().contains("LUFS (target "))
        << TimelineExport::doneAlert()->informativeText().toStdString();
    TimelineExport::doneAlert()->button(QMessageBox::Ok)->click();

    const QString mp3 = out.path() + "/Pilot.mp3";
    const QJsonObject probe = ffprobe(mp3);
    EXPECT_NEAR(probe["format"].toObject()["duration"].toString().toDouble(), tl()->getTimelineOutTime(),
                0.15);
    // The episode reaches the export; its tags and picture are the export tests' concern.
    EXPECT_EQ(probe["format"].toObject()["tags"].toObject()["title"].toString(), "Pilot");
    const QJsonArray chapters = probe["chapters"].toArray();
    ASSERT_EQ(chapters.size(), 2);
    EXPECT_EQ(chapters[0].toObject()["tags"].toObject()["title"].toString(), "Intro");
    EXPECT_EQ(chapters[1].toObject()["tags"].toObject()["title"].toString(), "Second part");

    // Close back to the list; the list's timer finishes the hand-over.
    const size_t items = tl()->mainLane.size() + tl()->attachedItems.size();
    trigger("menu_closeEpisode");
    EXPECT_EQ(delegate->window()->content(), list);
    ASSERT_TRUE(testenv::waitUntil([] { return TimelineWindowStatus == AEWindowStatus::closed; }, 3000));
    const auto saved = AETimeLine::load(timelinePath);
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(saved->mainLane.size() + saved->attachedItems.size(), items);
    const auto show = AEShow::load(folder + "show.AEShow");
    ASSERT_EQ(show->episodes.size(), 1u);
    EXPECT_GT(show->episodes[0]->modificationDate, QDateTime::currentDateTime().addSecs(-120));
}
