// The tag set: its FFMETADATA1 text, the chapter end rule, and the ID3 frames TagLib writes, read back.

#include "render/QXMp3Tags.h"

#include "render/Mp3Fixture.h"

namespace {
const QString kAwkward = QString::fromUtf8("Say \"hi\" = 1; #2, née ünd 東京\nsecond line \\ end");
} // namespace

TEST(QXMp3TagsText, ChaptersAreSortedAndEndJustBeforeTheNext) {
    struct Case {
        std::vector<std::pair<float, QString>> added;
        float duration;
        QString chapters;
    };
    const std::vector<Case> cases{
        {{{20.0f, "Two"}, {10.0f, "One"}},
         30.0f,
         "[CHAPTER]\nTIMEBASE=1/1000\nSTART=10000\nEND=19990\ntitle=One\n"
         "[CHAPTER]\nTIMEBASE=1/1000\nSTART=20000\nEND=30000\ntitle=Two\n"},
        // Unknown duration: the last chapter ends at 0.
        {{{0.0f, "Intro"}, {12.3f, "Talk"}},
         0.0f,
         "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=12290\ntitle=Intro\n"
         "[CHAPTER]\nTIMEBASE=1/1000\nSTART=12300\nEND=0\ntitle=Talk\n"},
        // Milliseconds are rounded to the nearest (a truncation starts 2.001 s at 2000 ms).
        {{{1.0006f, "A"}}, 2.9994f, "[CHAPTER]\nTIMEBASE=1/1000\nSTART=1001\nEND=2999\ntitle=A\n"},
        {{{2.001f, "B"}}, 3.0f, "[CHAPTER]\nTIMEBASE=1/1000\nSTART=2001\nEND=3000\ntitle=B\n"},
    };
    for (const Case& c : cases) {
        QXMp3Tags tags(std::nullopt, c.duration);
        for (const auto& [time, text] : c.added)
            tags.addChapter(time, text);
        EXPECT_EQ(tags.getFFMpegString(), ";FFMETADATA1\n" + c.chapters);
        for (size_t n = 1; n < tags.chapterList.size(); ++n)
            EXPECT_LT(tags.chapterList[n - 1].endTime, tags.chapterList[n].time);
    }
}

class QXMp3TagsFile : public Mp3Fixture {};

// Written twice to another file: the source stays untouched and each frame is there once.
TEST_F(QXMp3TagsFile, WritesEveryFrameOnceAndPlayersReadThem) {
    const QString source = plainMp3("src.mp3");
    const QByteArray original = bytesOf(source);
    const QString mp3 = path("ep.mp3");
    const QString png = picture("cover.png");
    QXMp3Tags tags(source, 30.0f);
    tags.addTitle(kAwkward);
    tags.addGenre("Podcast");
    tags.addYear("2024");
    tags.addShowNotes("Links; #1\nnext=yes, ok");
    tags.addPicture("Cover", png);
    tags.addChapter(20.0f, QString::fromUtf8("Zwei \"B\"; #"));
    tags.addChapter(10.0f, "One");
    ASSERT_TRUE(tags.writeTags(mp3));
    ASSERT_TRUE(tags.writeTags(mp3));
    EXPECT_EQ(tags.destFileUrl, mp3);
    EXPECT_EQ(bytesOf(source), original);

    const ReadTags read = readTags(mp3);
    ASSERT_TRUE(read.valid);
    EXPECT_EQ(read.version, 4);
    EXPECT_EQ(read.text.at("TIT2"), QStringList{kAwkward});
    EXPECT_EQ(read.first("TCON"), "Podcast");
    EXPECT_EQ(read.first("TDRC"), "2024");
    // The encoder's own frame is gone: the tag holds exactly what was added.
    EXPECT_EQ(read.text.count("TSSE"), 0u);
    EXPECT_EQ(read.comments, QStringList{"Links\\; \\#1\\nnext\\=yes\\, ok"});
    ASSERT_EQ(read.pictures.size(), 1u);
    EXPECT_EQ(read.pictures[0].mime, "image/png");
    EXPECT_EQ(read.pictures[0].description, "Cover");
    EXPECT_EQ(read.pictures[0].bytes, bytesOf(png));
    ASSERT_EQ(read.chapters.size(), 2u);
    EXPECT_EQ(read.chapters[0].id, "chp0");
    EXPECT_EQ(read.chapters[1].title, QString::fromUtf8("Zwei \"B\"; #"));
    EXPECT_EQ(read.tocChildren, (QStringList{"chp0", "chp1"}));
    EXPECT_TRUE(read.tocTopLevel);
    EXPECT_TRUE(read.tocOrdered);

    const Probed probed = probeTags(mp3);
    EXPECT_EQ(probed.tag("title"), kAwkward);
    EXPECT_EQ(probed.tag("genre"), "Podcast");
    expectTwoChapters(probed);
    // The audio is still there and plays for its length.
    EXPECT_NEAR(probe(mp3, "duration").toDouble(), 30.0, 0.1);
}

TEST_F(QXMp3TagsFile, FailuresAreReportedNotThrown) {
    bytes("notes.mp3", "this is not audio at all");
    QXMp3Tags tags(std::nullopt, 1.0f);
    tags.addTitle("T");
    tags.addPicture("empty", bytes("empty.png", {}));
    EXPECT_EQ(tags.frames.size(), 1u) << "an empty picture is no picture";
    EXPECT_EQ(logged().filter("QXMp3Tags.addPicture: no picture at").size(), 1);
    EXPECT_FALSE(tags.writeTags(path("notes.mp3")));
    EXPECT_FALSE(tags.writeTags(path("missing.mp3")));

    QXMp3Tags fromMissing(path("gone.mp3"), 1.0f);
    EXPECT_FALSE(fromMissing.writeTags(path("out.mp3")));
    EXPECT_FALSE(QFileInfo::exists(path("out.mp3")));
}
