// The metadata panels: each fills from its record, OK writes the changes to the record and to the saved
// show (or asset record), Cancel leaves both as they were.

#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEBGMSettings.h"
#include "project/model/AEMarker.h"
#include "project/panels/AEAssetVC.h"
#include "project/panels/AEEpisodeVC.h"
#include "project/panels/AEShowVC.h"
#include "project/panels/AssetTypeButtons.h"
#include "project/panels/MainViewController.h"
#include "tests/project/panels/ShowFixture.h"
#include "timeline/model/TimelineFixture.h"
#include "ui/DragImageAreaView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QToolButton>

namespace {

class ProjectPanelsTest : public ShowFixture {
protected:
    std::shared_ptr<AEEpisode> savedEpisode() {
        auto episode = addEpisode("E07", -3, -2, -1, AEEpisodeStatus::published);
        episode->notes = "Old notes";
        episode->duration = 754;
        saveShow();
        return episode;
    }

    std::shared_ptr<AEEpisode> savedCopyOf(const QString& id) const {
        const auto show = AEShow::load(showPath());
        for (const auto& e : show->episodes)
            if (e->id == id) return e;
        return nullptr;
    }
};

} // namespace

TEST_F(ProjectPanelsTest, EpisodePanelWritesOnOkOnlyAndTheListSavesIt) {
    const auto episode = savedEpisode();
    const QDateTime published = episode->publicationDate;
    {
        AEEpisodeVC panel(episode);
        EXPECT_EQ(panel.titleF->text(), "Title E07");
        EXPECT_EQ(panel.lenght->text(), "12.6m");
        EXPECT_TRUE(panel.chkReady->isChecked());
        EXPECT_TRUE(panel.stereo->isChecked());
        panel.titleF->setText("Changed");
        panel.mono->setChecked(true);
        panel.chkReady->setChecked(false);
        panel.reject();
    }
    EXPECT_EQ(episode->title, "Title E07");
    EXPECT_EQ(episode->nChannels, AENChannels::stereo);
    EXPECT_EQ(episode->status, AEEpisodeStatus::published);

    MainViewController list;
    AEEpisodeVC panel(episode);
    panel.episodeVCDone = [&](const std::shared_ptr<AEEpisode>& e) { list.episodeVCDone(e); };
    panel.titleF->setText("A Better Title");
    panel.id->setText("E08");
    panel.notes->setPlainText("New notes");
    panel.url->setText("https://example.org/e08");
    panel.mono->setChecked(true);
    panel.chkReady->setChecked(false); // a published episode not ready any more: its date stays
    panel.okButton->click();

    const auto saved = savedCopyOf(episode->id);
    ASSERT_TRUE(saved);
    for (const auto& e : {episode, saved}) {
        EXPECT_EQ(e->title, "A Better Title");
        EXPECT_EQ(e->episodeId, "E08");
        EXPECT_EQ(e->notes, "New notes");
        EXPECT_EQ(e->url, "https://example.org/e08");
        EXPECT_EQ(e->nChannels, AENChannels::mono);
        EXPECT_EQ(e->status, AEEpisodeStatus::notReady);
        EXPECT_EQ(e->publicationDate.toSecsSinceEpoch(), published.toSecsSinceEpoch());
    }

    // Ready again with a date to come: planned, not published.
    AEEpisodeVC again(episode);
    again.chkReady->setChecked(true);
    again.publicationDate->setDateTime(QDateTime::currentDateTime().addDays(3));
    again.okButton->click();
    EXPECT_EQ(episode->status, AEEpisodeStatus::ready);
}

TEST_F(ProjectPanelsTest, ShowPanelSavesOnOkAndIngestsItsImageAtOnce) {
    addEpisode("E01", -5, -5, -5)->duration = 600;
    addEpisode("E02", -4, -4, -4)->duration = 1200;
    saveShow();
    const QString cover = dir.path() + "/wide cover.png";
    QImage(1600, 900, QImage::Format_RGB32).save(cover);

    {
        AEShowVC panel(zendrelShow);
        EXPECT_EQ(panel.nEpisodes->text(), "2");
        EXPECT_EQ(panel.averageLength->text(), "15.0m");
        EXPECT_EQ(panel.totalLength->text(), "30.0m");
        panel.titleField->setText("Not kept");
        panel.dragged({cover});
        // Ingested even though the panel is then cancelled; the warning says what is wrong.
        EXPECT_TRUE(panel.tmpImagePath.startsWith(AEIngest::ingestPath));
        EXPECT_TRUE(QFileInfo::exists(panel.tmpImagePath));
        EXPECT_TRUE(transcript().join("\n").contains("not square (1600 × 900 px)"))
            << transcript().join("\n").toStdString();
        panel.reject();
    }
    EXPECT_EQ(zendrelShow->name, "Test Show");
    EXPECT_TRUE(zendrelShow->imagePath.isEmpty());

    AEShowVC panel(zendrelShow);
    panel.titleField->setText("Renamed Show");
    panel.descriptionField->setPlainText("About things");
    panel.urlField->setText("https://example.org");
    panel.feedField->setText("https://example.org/feed.xml");
    panel.notesSuffix->setPlainText("Thanks for listening");
    panel.dragged({cover});
    panel.okButton->click();

    const auto saved = AEShow::load(showPath());
    for (const auto& show : {zendrelShow, saved}) {
        EXPECT_EQ(show->name, "Renamed Show");
        EXPECT_EQ(show->notes, "About things");
        EXPECT_EQ(show->url, "https://example.org");
        EXPECT_EQ(show->feed, "https://example.org/feed.xml");
        EXPECT_EQ(show->notesSuffix, "Thanks for listening");
        EXPECT_EQ(show->ingestedImagePath, panel.tmpImagePath);
    }
}

TEST_F(ProjectPanelsTest, AssetInspectorWritesNameTypeGainAndMusicOnOkOnly) {
    auto asset = tlfixture::asset("inspected", 30.0);
    asset->name = "Theme";
    asset->volumeGain = -3.0;
    asset->markers = {std::make_shared<AEMarker>(12.5, std::nullopt, AEMarkerType::normal, "Drop")};
    AEAssetDB::saveAsset(asset);
    {
        AEAssetVC panel(asset);
        EXPECT_EQ(panel.windowTitle(), "Asset Inspector: Theme");
        EXPECT_EQ(panel.volumeGainValueLabel->text(), "-3.0 dB");
        panel.volumeGainSlider->setValue(45);
        EXPECT_EQ(panel.volumeGainValueLabel->text(), "+4.5 dB");
        panel.typeButtons->button(AEAssetType::jingle)->click();
        panel.nameField->setText("Not kept");
        panel.reject();
    }
    EXPECT_EQ(asset->name, "Theme");
    EXPECT_EQ(asset->type, AEAssetType::speech);
    EXPECT_DOUBLE_EQ(asset->volumeGain, -3.0);

    AEAssetVC panel(asset);
    int done = 0;
    panel.assetInspectorVCDone = [&](const std::shared_ptr<AEAsset>& a, const QString& name,
                                     AEAssetType type) {
        EXPECT_EQ(name, "Main Theme");
        EXPECT_EQ(type, AEAssetType::bgm);
        AEAssetDB::saveAsset(a);
        ++done;
    };
    panel.nameField->setText("Main Theme");
    panel.volumeGainSlider->setValue(-60);
    panel.typeButtons->button(AEAssetType::bgm)->click(); // background music opens its settings
    ASSERT_TRUE(panel.bgmSettingsPanel());
    panel.bgmSettingsPanel()->check_loopable->setChecked(false);
    panel.bgmSettingsPanel()->slide_fadeOut->setValue(25);
    panel.bgmSettingsPanel()->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    panel.bgmPopUp->setCurrentIndex(2);
    emit panel.bgmPopUp->activated(2);
    EXPECT_TRUE(asset->bgmSettings->loopable); // still the asset's own until OK
    panel.okButton->click();
    EXPECT_EQ(done, 1);

    const auto saved = KeyedUnarchiver::unarchive<AEAsset>(AEAssetDB::getPath(*asset));
    ASSERT_TRUE(saved);
    for (const auto& a : {asset, saved}) {
        EXPECT_EQ(a->name, "Main Theme");
        EXPECT_EQ(a->type, AEAssetType::bgm);
        EXPECT_DOUBLE_EQ(a->volumeGain, -6.0);
        EXPECT_FALSE(a->bgmSettings->loopable);
        EXPECT_DOUBLE_EQ(a->bgmSettings->fadeOut, 2.5);
        EXPECT_DOUBLE_EQ(a->bgmStart, 12.5);
    }
}

TEST_F(ProjectPanelsTest, ListImportsABundleOrSaysWhyNot) {
    const auto episode = savedEpisode();
    const QString bundle = dir.path() + "/E07.zendepisode";
    ASSERT_EQ(episode->exportEpisode(bundle), "");
    const QString junk = dir.path() + "/junk.zendepisode";
    QFile file(junk);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no zip here");
    file.close();

    MainViewController list;
    const QStringList before = savedIds();
    EXPECT_FALSE(list.importEpisode(junk));
    EXPECT_EQ(savedIds(), before);
    EXPECT_TRUE(transcript().join("\n").contains("junk.zendepisode: it is not a zip archive"));

    EXPECT_TRUE(list.importEpisode(bundle));
    EXPECT_EQ(savedIds(), QStringList({"E07", "E07"}));
    EXPECT_EQ(zendrelShow->episodes.back()->title, "Title E07");
}
