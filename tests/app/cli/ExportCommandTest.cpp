// `zendrel export` as a user runs it: the real binary, no display, a working folder written by the
// model's own archives, and each bad input answered by its status and one line on stderr.

#include "project/model/AEAssetDB.h"
#include "project/model/AEIngest.h"
#include "render/DeliveryFixture.h"
#include "support/HeadlessCommand.h"
#include "support/TestEnvironment.h"

using testenv::CommandRun;
using testenv::zendrel;

// The store's folder is the working folder: the child process finds the assets where this one saved them.
class ExportCommandTest : public DeliveryFixture {
protected:
    void SetUp() override {
        DeliveryFixture::SetUp();
        testenv::useStoreWorkFolder();
        folder = testenv::storeWorkFolder();
        AEShow show("Command Show");
        show.episodes.push_back(
            savedEpisode("E01", tone("speech.wav", 20.0, 220.0, 44100, 2, 0.05), "cli-speech"));
        show.episodes.push_back(savedEpisode("E02", path("gone.wav"), "cli-gone"));
        ASSERT_TRUE(show.save(folder + "show.AEShow"));
    }

    void TearDown() override {
        for (const QString& name : {QString("show.AEShow"), QString("show.AEShow.bak")})
            QFile::remove(folder + name);
        for (const QString& file : timelineFiles)
            QFile::remove(file);
        DeliveryFixture::TearDown();
    }

    // An episode of one main-lane item with a chapter at 1 s.
    std::shared_ptr<AEEpisode> savedEpisode(const QString& code, const QString& file,
                                            const QString& assetId) {
        auto asset = tlfixture::asset(assetId, 20.0);
        asset->originalFilePath = file;
        asset->ingestedFilePath = QFileInfo::exists(file) ? file : QString();
        asset->ingested = QFileInfo::exists(file);
        AEAssetDB::saveAsset(asset);
        auto episode = std::make_shared<AEEpisode>(code, "Episode " + code, "", folder);
        auto tl = AETimeLine::make(episode->id);
        tl->appendItemInMainLane(asset, std::nullopt, false);
        tl->mainLane[0]->addMarker(std::nullopt, 1.0, "Start", AEMarkerType::chapter);
        EXPECT_TRUE(tl->save(episode->timelineDataPath));
        timelineFiles << episode->timelineDataPath;
        return episode;
    }

    QString folder;
    QStringList timelineFiles;
};

TEST_F(ExportCommandTest, ExportsWithoutADisplayAndWritesReportAndChapters) {
    const CommandRun result =
        zendrel({"export", "--work-folder", folder, "--episode", "E01", path("out.mp3"), "--report",
                 path("report.json"), "--chapters-json", path("chapters.json")});
    ASSERT_EQ(result.status, 0) << result.err.toStdString();
    EXPECT_TRUE(result.err.isEmpty()) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains("Rendering")) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains("Loudness: ")) << "the report at the end";
    QFile report(path("report.json"));
    ASSERT_TRUE(report.open(QIODevice::ReadOnly));
    const QJsonObject json = QJsonDocument::fromJson(report.readAll()).object();
    EXPECT_TRUE(json.value("targetMet").toBool()) << result.out.toStdString();
    EXPECT_EQ(json.value("chapterCount").toInt(), 1);
    EXPECT_NEAR(meter(path("out.mp3")).integrated, -16.0, 0.5);
    EXPECT_TRUE(QFileInfo::exists(path("chapters.json")));
}

TEST_F(ExportCommandTest, BadInputsEndWithOneLineAndAStatus) {
    QDir().mkpath(path("empty"));
    QFile garbage(path("garbage/show.AEShow"));
    QDir().mkpath(path("garbage"));
    ASSERT_TRUE(garbage.open(QIODevice::WriteOnly));
    garbage.write("not an archive");
    garbage.close();
    struct Case {
        QStringList arguments;
        int status;
        QString message;
    };
    const QStringList e01{"--work-folder", folder, "--episode", "E01"};
    const std::vector<Case> cases{
        {{"export", "--work-folder", path("empty"), "--episode", "E01", path("a.mp3")}, 1, "no show in"},
        {{"export", "--work-folder", path("garbage"), "--episode", "E01", path("a.mp3")},
         1,
         "cannot read the show"},
        {{"export", "--work-folder", folder, "--episode", "E99", path("a.mp3")}, 1, "no episode \"E99\""},
        {{"export", "--work-folder", folder, "--episode", "E02", path("a.mp3")}, 1, "missing media: "},
        {QStringList{"export"} + e01 + QStringList{path("no/such/folder/a.mp3")}, 1, "cannot write in"},
        {QStringList{"export"} + e01 + QStringList{path("a.ogg")}, 2, "must end in .mp3 or .wav"},
        {QStringList{"export"} + e01 + QStringList{path("a.mp3"), "--target", "loud"}, 2, "--target"},
        {{"export", "--episode", "E01", path("a.mp3")}, 2, "--work-folder is required"},
        {{"export", "--bogus"}, 2, "Unknown option 'bogus'"},
        {{"frobnicate"}, 2, "unknown command \"frobnicate\""},
    };
    for (const Case& c : cases) {
        const CommandRun result = zendrel(c.arguments);
        EXPECT_EQ(result.status, c.status) << c.arguments.join(' ').toStdString();
        EXPECT_EQ(result.err.count('\n'), 1) << result.err.toStdString();
        EXPECT_TRUE(result.err.startsWith("zendrel")) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(c.message)) << result.err.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(path("a.mp3")));
}

TEST_F(ExportCommandTest, HelpDocumentsTheCommandsAndEveryOption) {
    const CommandRun top = zendrel({"--help"});
    EXPECT_EQ(top.status, 0);
    EXPECT_TRUE(top.out.contains("export")) << top.out.toStdString();
    const CommandRun help = zendrel({"export", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.startsWith("Usage: zendrel export")) << help.out.toStdString();
    for (const char* option : {"--work-folder", "--episode", "--no-normalise", "--target", "--report",
                               "--chapters-json", "--podlove-chapters", "--true-peak"})
        EXPECT_TRUE(help.out.contains(option)) << option;
}
