// Recording and cleaning reached from the editing window itself: the menu entries open their panels,
// a take from the record button lands in the episode's list, and "Clean…" on a spoken asset leaves a
// cleaned asset beside it with its progress window gone.

#include "../../recording/RecordingFixture.h"
#include "WindowSession.h"
#include "app/windows/AssetListWidget.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "ui/cleaning/BrightwashAssetAlertVC.h"
#include "ui/recording/AEAssetRecorderVC.h"
#include "ui/recording/AudioRecorderSetupVC.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QDir>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolButton>

namespace {

class RecordAndCleanEntries : public recordingtest::RecordingServerTest {
protected:
    void SetUp() override {
        RecordingServerTest::SetUp();
        if (IsSkipped()) return;
        folder = testenv::storeWorkFolder();
        QDir(folder).removeRecursively();
        testenv::useStoreWorkFolder();
        AEShow show("Entries Show");
        show.episodes.push_back(std::make_shared<AEEpisode>("E1", "Pilot", "", folder));
        ASSERT_TRUE(show.save(folder + "show.AEShow"));
        windowsession::begin(folder, door);
    }

    void TearDown() override {
        delegate.reset();
        mainVC = nullptr;
        windowsession::end();
    }

    TimelineViewController* vc() const { return delegate->timelineVC(); }
    AssetListWidget* episodeList() const { return vc()->episodeAssetTableView(); }

    void trigger(const QString& name) {
        QAction* action = delegate->action(name);
        ASSERT_NE(action, nullptr) << name.toStdString();
        action->trigger();
    }

    QString folder;
    QTemporaryDir outside;
    std::shared_ptr<ScriptedInteraction> door = std::make_shared<ScriptedInteraction>();
    std::shared_ptr<AppDelegate> delegate;
};

} // namespace

TEST_F(RecordAndCleanEntries, RecordAndCleanFromTheEditingWindow) {
    ASSERT_NO_FATAL_FAILURE(windowsession::launchAndOpen(delegate));

    // The settings panel over the window, closed unchanged.
    trigger("menu_recorderSettings");
    auto* setup = delegate->window()->findChild<AudioRecorderSetupVC*>();
    ASSERT_NE(setup, nullptr);
    EXPECT_TRUE(setup->isVisible());
    setup->reject();

    // A half-second take from the button beside the episode's list.
    auto* record = vc()->findChild<QToolButton*>("Record");
    ASSERT_NE(record, nullptr);
    record->click();
    auto* sheet = vc()->findChild<AEAssetRecorderVC*>();
    ASSERT_NE(sheet, nullptr);
    const auto tone = playTone();
    sheet->recordButton->click();
    testenv::pumpEventsFor(500);
    sheet->recordButton->click();
    ASSERT_EQ(episodeList()->count(), 1);
    EXPECT_TRUE(episodeList()->assetAt(0)->originalFilePath.contains("recording_"));
    EXPECT_EQ(vc()->episode()->assets.size(), 1u);
    sheet->close();

    // Spoken words from the desktop, then cleaned from the menu, keeping the original.
    const QString words = outside.path() + "/words.wav";
    QProcess::execute("/usr/bin/espeak-ng", {"-w", words, "Cleaning from the editing window works."});
    vc()->dragged({words});
    ASSERT_TRUE(testenv::waitUntil([&] { return episodeList()->count() == 2; }, 10000));
    episodeList()->setCurrentRow(1);
    const auto source = episodeList()->assetAt(1);
    trigger("menu_cleanAsset");
    auto* alert = vc()->findChild<BrightwashAssetAlertVC*>();
    ASSERT_NE(alert, nullptr);
    alert->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    EXPECT_NE(vc()->findChild<QWidget*>("brightwashProgress"), nullptr);
    ASSERT_TRUE(testenv::waitUntil(
        [&] {
            const auto& shown = episodeList()->assets();
            return shown.size() == 3 && shown.back()->bwStatus == BWStatus::destinationDone;
        },
        15000))
        << (door->transcript().empty() ? QString() : door->transcript().back()).toStdString();
    const auto cleaned = episodeList()->assets().back();
    EXPECT_NE(cleaned, source);
    EXPECT_TRUE(QFileInfo(cleaned->originalFilePath).completeBaseName().endsWith("_cln"));
    EXPECT_GT(cleaned->duration, 1.0);
    EXPECT_EQ(source->bwStatus, BWStatus::sourceDone);
    EXPECT_EQ(vc()->episode()->assets.size(), 3u);
    EXPECT_TRUE(testenv::waitUntil([&] { return !vc()->findChild<QWidget*>("brightwashProgress"); }, 2000));
}
