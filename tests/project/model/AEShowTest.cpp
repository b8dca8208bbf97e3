#include "project/model/AEShow.h"

#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/Globals.h"
#include "support/ArchiveEdit.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QJsonObject>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>

namespace {

// A working folder whose name has a blank and non-ASCII characters.
class ShowFolder : public ::testing::Test {
protected:
    void SetUp() override {
        folder = dir.path() + "/Mio Show ò/";
        QDir().mkpath(folder);
        AEIngest::workFolder = folder;
        AEIngest ingest(folder + "AssetIngests");
    }
    QString showPath() const { return folder + "show.AEShow"; }

    std::shared_ptr<AEEpisode> episode(const QString& code, int publishedDaysAgo) {
        auto e = std::make_shared<AEEpisode>(code, "Title " + code, "", folder);
        e->publicationDate = QDateTime::currentDateTime().addDays(-publishedDaysAgo);
        return e;
    }

    // Rewrites one key of the first episode in the archive file (null removes it).
    void editEpisodeKey(const QString& key, const QJsonValue& value) {
        ASSERT_TRUE(testenv::editArchiveFile(showPath(), "AEEpisode", [&](QJsonObject& keys) {
            if (value.isNull())
                keys.remove(key);
            else
                keys[key] = value;
        }));
    }

    QTemporaryDir dir;
    QString folder;
};

} // namespace

TEST_F(ShowFolder, RoundTripKeepsRecordsPathsAndCommonAssetIds) {
    AEShow show("My Show");
    show.notes = "notes";
    show.notesSuffix = "suffix";
    show.url = "https://example.invalid/show";
    show.feed = "feed";
    auto e = episode("E01", 3);
    e->notes = "show notes";
    e->duration = 1234.5;
    e->status = AEEpisodeStatus::ready;
    e->nChannels = AENChannels::mono;
    e->assetIDs = {"a1", "a2"};
    show.episodes = {e};
    show.commonAssets = {AEAssetDB::loadAsset("c1"), AEAssetDB::loadAsset("c2")};
    ASSERT_TRUE(show.save(showPath()));

    QFile main(showPath()), bak(showPath() + ".bak");
    ASSERT_TRUE(main.open(QIODevice::ReadOnly) && bak.open(QIODevice::ReadOnly));
    EXPECT_EQ(main.readAll(), bak.readAll());
    // Stored paths carry the token, not the folder.
    main.seek(0);
    const QByteArray text = main.readAll();
    EXPECT_TRUE(text.contains("[%WORKFOLDER%]"));
    EXPECT_FALSE(text.contains(folder.toUtf8()));

    const auto back = AEShow::load(showPath());
    EXPECT_EQ(back->name, "My Show");
    EXPECT_EQ(back->notesSuffix, "suffix");
    EXPECT_EQ(back->feed, "feed");
    ASSERT_EQ(back->commonAssets.size(), 2u);
    EXPECT_EQ(back->commonAssets[1]->id, "c2");
    ASSERT_EQ(back->episodes.size(), 1u);
    const auto& b = *back->episodes[0];
    EXPECT_EQ(b.id, e->id);
    EXPECT_EQ(b.episodeId, "E01");
    EXPECT_EQ(b.notes, "show notes");
    EXPECT_EQ(b.duration, 1234.5);
    EXPECT_EQ(b.status, AEEpisodeStatus::ready);
    EXPECT_EQ(b.nChannels, AENChannels::mono);
    EXPECT_EQ(b.assetIDs, (QStringList{"a1", "a2"}));
    EXPECT_EQ(b.timelineDataPath, folder + e->id + ".AETimeLine");
    EXPECT_EQ(b.publicationDate, e->publicationDate);
    EXPECT_TRUE(std::isnan(AEShow("Empty").getAverageDuration())) << "the show panel then shows \"-\"";
}

TEST_F(ShowFolder, OptionalKeysMayBeAbsent) {
    AEShow show("S");
    show.episodes = {episode("E1", 1)};
    ASSERT_TRUE(show.save(showPath()));
    ASSERT_TRUE(testenv::editArchiveFile(showPath(), "AEShow", [](QJsonObject& keys) {
        for (const char* k : {"feed", "url", "notesSuffix", "ingestedImagePath", "imagePath"})
            keys.remove(k);
    }));
    editEpisodeKey("url", QJsonValue::Null);
    editEpisodeKey("publicationDate", QJsonValue::Null);

    const auto back = AEShow::load(showPath());
    EXPECT_EQ(back->name, "S");
    EXPECT_EQ(back->feed, "");
    EXPECT_EQ(back->url, "");
    EXPECT_EQ(back->notesSuffix, "");
    EXPECT_EQ(back->ingestedImagePath, "");
    ASSERT_EQ(back->episodes.size(), 1u);
    EXPECT_EQ(back->episodes[0]->url, "");
    EXPECT_LE(std::abs(back->episodes[0]->publicationDate.secsTo(QDateTime::currentDateTime())), 5);
}

TEST_F(ShowFolder, DamagedShowFilesGiveAnEmptyShow) {
    const QList<QByteArray> bad = {
        "", "{\"format\":\"zendrel-keyed-arch", "<xml/>",
        R"({"format":"zendrel-keyed-archive","root":0,"objects":[{"class":"AEEpisode","keys":{}}]})"};
    for (const auto& content : bad) {
        QFile f(showPath());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(content);
        f.close();
        const auto show = AEShow::load(showPath());
        EXPECT_EQ(show->name, "") << content.toStdString();
        EXPECT_TRUE(show->episodes.empty());
    }
    QFile::remove(showPath());
    EXPECT_EQ(AEShow::load(showPath())->name, "");
}

TEST_F(ShowFolder, AnEpisodeMissingARequiredKeyFailsTheWholeShow) {
    AEShow show("S");
    show.episodes = {episode("E1", 1), episode("E2", 2)};
    ASSERT_TRUE(show.save(showPath()));
    editEpisodeKey("timelineDataPath", QJsonValue::Null);
    EXPECT_EQ(AEShow::load(showPath())->name, "");
    ASSERT_TRUE(show.save(showPath()));
    editEpisodeKey("title", QJsonObject{{"int", 4}});
    EXPECT_EQ(AEShow::load(showPath())->name, "");
}

TEST_F(ShowFolder, UnknownStatusFollowsThePublicationDateAndBadChannelsMeanStereo) {
    for (const int daysAgo : {10, -10}) {
        AEShow show("S");
        show.episodes = {episode("E1", daysAgo)};
        ASSERT_TRUE(show.save(showPath()));
        editEpisodeKey("status", QJsonObject{{"int", 7}});
        editEpisodeKey("nChannels", QJsonObject{{"int", 5}});
        const auto back = AEShow::load(showPath());
        ASSERT_EQ(back->episodes.size(), 1u);
        EXPECT_EQ(back->episodes[0]->status,
                  daysAgo > 0 ? AEEpisodeStatus::published : AEEpisodeStatus::notReady);
        EXPECT_EQ(back->episodes[0]->nChannels, AENChannels::stereo);
    }
}

TEST_F(ShowFolder, DeletedEpisodesAreDroppedButTheirTimelineFilesStay) {
    AEShow show("S");
    auto gone = episode("E1", 1);
    gone->deleted = true;
    show.episodes = {gone, episode("E2", 2)};
    QFile timeline(gone->timelineDataPath);
    ASSERT_TRUE(timeline.open(QIODevice::WriteOnly));
    timeline.close();
    ASSERT_TRUE(show.save(showPath()));
    const auto back = AEShow::load(showPath());
    ASSERT_EQ(back->episodes.size(), 1u);
    EXPECT_EQ(back->episodes[0]->episodeId, "E2");
    EXPECT_TRUE(QFile::exists(gone->timelineDataPath));
}

TEST_F(ShowFolder, AMovedWorkingFolderResolvesItsOwnPathsOnly) {
    AEShow show("S");
    auto inside = episode("E1", 1);
    auto outside = episode("E2", 2);
    outside->timelineDataPath = "/elsewhere/tl.AETimeLine";
    show.episodes = {inside, outside};
    ASSERT_TRUE(show.save(showPath()));

    const QString moved = dir.path() + "/Spostato è qui/";
    ASSERT_TRUE(QDir().rename(folder, moved));
    AEIngest::workFolder = moved;
    const auto back = AEShow::load(moved + "show.AEShow");
    ASSERT_EQ(back->episodes.size(), 2u);
    for (const auto& e : back->episodes) {
        if (e->episodeId == "E1")
            EXPECT_EQ(e->timelineDataPath, moved + inside->id + ".AETimeLine");
        else
            EXPECT_EQ(e->timelineDataPath, "/elsewhere/tl.AETimeLine");
    }
}

TEST_F(ShowFolder, UnwritableFolderLogsProblemsAndGoesOn) {
    std::vector<QString> lines;
    const int token = addLogSink([&](const QString& l) { lines.push_back(l); });
    AEShow show("S");
    // A folder that cannot exist: its parent is a file.
    QFile blocker(dir.path() + "/blocker");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    EXPECT_FALSE(show.save(dir.path() + "/blocker/show.AEShow"));
    removeLogSink(token);
    EXPECT_NE(std::find(lines.begin(), lines.end(), "PROBLEMS!"), lines.end());
    EXPECT_FALSE(QFile::exists(dir.path() + "/blocker/show.AEShow.bak"));
}

TEST_F(ShowFolder, UnopenedEpisodesKeepTheirAssetIdsAcrossSaves) {
    AEShow show("S");
    auto e = episode("E", 1);
    e->assetIDs = {"x", "y"};
    show.episodes = {e};
    ASSERT_TRUE(show.save(showPath()));
    auto back = AEShow::load(showPath());
    ASSERT_TRUE(back->save(showPath()));
    back = AEShow::load(showPath());
    EXPECT_EQ(back->episodes[0]->assetIDs, (QStringList{"x", "y"}));
    // Once opened, the loaded list is what is stored.
    back->episodes[0]->forceLoadAssets();
    back->episodes[0]->assets.pop_back();
    ASSERT_TRUE(back->save(showPath()));
    EXPECT_EQ(AEShow::load(showPath())->episodes[0]->assetIDs, QStringList{"x"});
}

TEST(ShowStartup, FirstStartUsesDocumentsAndCreatesTheFolders) {
    prefs_removeKey("WorkingFolder");
    const auto show = loadShow();
    const QString expected = testenv::home() + "/Documents/Zendrel/";
    EXPECT_EQ(AEIngest::workFolder, expected);
    EXPECT_EQ(AEIngest::ingestPath, expected + "AssetIngests/");
    EXPECT_TRUE(QDir(expected + "AssetIngests").exists());
    EXPECT_EQ(show->name, "");
    EXPECT_TRUE(show->episodes.empty());
}
