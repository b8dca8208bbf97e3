// The in-place route on a real MP3: frames from the episode and the timeline's chapter markers, then
// kid3-cli, read back by TagLib and ffprobe.

#include "render/ExportDone.h"

#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "render/Mp3Fixture.h"
#include "timeline/model/TimelineFixture.h"

namespace {

// 30 s of main lane with chapters at 10 s and 20 s (the second in the second clip) and a plain marker.
std::shared_ptr<AETimeLine> chapteredTimeline() {
    auto tl = tlfixture::timeline();
    tlfixture::fillMainLane(*tl, {15.0, 15.0});
    tl->mainLane[1]->addMarker(std::nullopt, 20.0, QString::fromUtf8("Zwei; \"B\" = #"),
                               AEMarkerType::chapter);
    tl->mainLane[0]->addMarker(std::nullopt, 5.0, "just a note", AEMarkerType::normal);
    tl->mainLane[0]->addMarker(std::nullopt, 10.0, "One", AEMarkerType::chapter);
    tl->getCollectedItems();
    return tl;
}

} // namespace

TEST(ExportChapters, ChapterMarkersOnlyEndedByTheTimeline) {
    const auto chapters = exportChapters(chapteredTimeline());
    ASSERT_EQ(chapters.size(), 2u);
    EXPECT_EQ(chapters[0].text, "One");
    EXPECT_FLOAT_EQ(chapters[0].time, 10.0f);
    EXPECT_FLOAT_EQ(chapters[0].endTime, 19.99f);
    EXPECT_FLOAT_EQ(chapters[1].time, 20.0f);
    EXPECT_FLOAT_EQ(chapters[1].endTime, 30.0f);
    EXPECT_TRUE(exportChapters(tlfixture::timeline()).empty());
}

class ExportDoneTest : public Mp3Fixture {
protected:
    void SetUp() override {
        Mp3Fixture::SetUp();
        episode = std::make_shared<AEEpisode>("7", QString::fromUtf8("Folge 7: \"Ärger\" = 1; #x"), "",
                                              dir.path() + "/");
        episode->notes = QString::fromUtf8("Links:\nhttps://example.org/?a=1;b=2 #top, née");
        episode->publicationDate = QDateTime(QDate(2021, 6, 3), QTime(12, 0));
        show = std::make_shared<AEShow>("The Show");
        show->notes = "Show \"notes\" \\ here";
        notes = episode->notes + "\n\n" + show->notes;
    }

    std::shared_ptr<AEEpisode> episode;
    std::shared_ptr<AEShow> show;
    QString notes;
};

TEST_F(ExportDoneTest, TagsPictureAndChaptersSurviveAsID3v23) {
    const QString mp3 = plainMp3("Folge 7.mp3");
    QFile::copy(mp3, path("Folge 7_temp.mp3"));
    const QString untouched = plainMp3("other.mp3", 1.0);
    const QByteArray untouchedBytes = bytesOf(untouched);
    episode->imagePath = picture("episode's cover.jpg");
    show->imagePath = picture("show.png", "green");
    QStringList files = filesIn(dir.path());
    files.removeAll("Folge 7_temp.mp3");

    ASSERT_TRUE(exportDone(mp3, chapteredTimeline(), episode, show));
    EXPECT_TRUE(transcript().isEmpty());
    EXPECT_EQ(filesIn(dir.path()), files) << "no temporary copy or private folder left behind";
    EXPECT_EQ(bytesOf(untouched), untouchedBytes);

    const ReadTags read = readTags(mp3);
    EXPECT_EQ(read.version, 3);
    EXPECT_EQ(headerVersion(mp3), 3);
    EXPECT_EQ(read.first("TIT2"), episode->title);
    EXPECT_EQ(read.first("TCON"), "Podcast");
    // TagLib reads the ID3v2.3 year (TYER) back as TDRC.
    EXPECT_EQ(read.first("TDRC"), "2021");
    EXPECT_EQ(read.comments, QStringList{notes});
    EXPECT_EQ(read.lyrics, QStringList{notes});
    ASSERT_EQ(read.pictures.size(), 1u);
    EXPECT_EQ(read.pictures[0].mime, "image/jpeg");
    EXPECT_EQ(read.pictures[0].bytes, bytesOf(episode->imagePath));
    ASSERT_EQ(read.chapters.size(), 2u);
    EXPECT_EQ(read.tocChildren, (QStringList{read.chapters[0].id, read.chapters[1].id}));

    // What players see of the chapters.
    expectTwoChapters(probeTags(mp3), QString::fromUtf8("Zwei; \"B\" = #"));
}

TEST_F(ExportDoneTest, PictureFallsBackToTheShowsAndAMissingOneIsLeftOut) {
    const QString mp3 = plainMp3("a.mp3", 1.0);
    show->imagePath = picture("show.png", "green");
    ASSERT_TRUE(exportDone(mp3, chapteredTimeline(), episode, show));
    ReadTags read = readTags(mp3);
    ASSERT_EQ(read.pictures.size(), 1u);
    EXPECT_EQ(read.pictures[0].mime, "image/png");
    EXPECT_EQ(read.pictures[0].bytes, bytesOf(show->imagePath));

    const QString bare = plainMp3("b.mp3", 1.0);
    episode->imagePath = path("gone.jpg");
    ASSERT_TRUE(exportDone(bare, chapteredTimeline(), episode, nullptr));
    read = readTags(bare);
    EXPECT_TRUE(read.pictures.empty()) << "no empty picture frame";
    EXPECT_EQ(read.lyrics, QStringList{episode->notes}) << "no trailing blank line without show notes";
}

TEST_F(ExportDoneTest, ANonMp3IsReportedAndLeftAlone) {
    const QByteArray content = "plain text, not audio";
    bytes("x.mp3", content);
    EXPECT_FALSE(exportDone(path("x.mp3"), chapteredTimeline(), episode, show));
    EXPECT_EQ(transcript(),
              QStringList{"alert: Error | Internal Error 117: Cannot Insert Metadata into MP3 File."});
    EXPECT_EQ(filesIn(dir.path()), QStringList{"x.mp3"});
    EXPECT_EQ(bytesOf(path("x.mp3")), content);
}
