// Encoder settings, the argument vectors, and both tool routes run for real: ffmpeg with its metadata
// file, kid3-cli setting tags and turning the tag into ID3v2.3.

#include "render/Mp3.h"

#include "foundation/Prefs.h"
#include "render/Mp3Fixture.h"
#include "render/tools/ToolArgs.h"

#include <QDate>
#include <QDir>

namespace {
const QString kTitle = QString::fromUtf8("Ep. 3: \"Quotes\" = fun; #hash \\ back\nline two — Ærø 東京");
} // namespace

class Mp3Settings : public ::testing::Test {
protected:
    void TearDown() override {
        prefs_removeKey("Mp3EncodingSettings.channels");
        prefs_removeKey("Mp3EncodingSettings.bitrate");
        Mp3::setEncodingSettings({});
    }
};

TEST_F(Mp3Settings, LoadSaveAndExpectedSize) {
    Mp3::loadSettings();
    EXPECT_EQ(Mp3::encodingSettings().channels, Mp3Channels::stereo);
    EXPECT_EQ(Mp3::encodingSettings().bitrate, 128);
    EXPECT_EQ(Mp3::fileSizeByDuration(60.0), 960000);

    Mp3::setEncodingSettings({Mp3Channels::mono, 96});
    Mp3::saveSettings();
    EXPECT_EQ(prefs_getValueInt("Mp3EncodingSettings.channels", 0), 1);
    EXPECT_EQ(prefs_getValueInt("Mp3EncodingSettings.bitrate", 0), 96);
    Mp3::setEncodingSettings({});
    Mp3::loadSettings();
    EXPECT_EQ(Mp3::encodingSettings().channels, Mp3Channels::mono);
    EXPECT_EQ(Mp3::fileSizeByDuration(1.5), 18000);
    EXPECT_EQ(Mp3::fileSizeByDuration(0.0001), 1); // 1.2 bytes, truncated

    // Values no encoder takes fall back to the defaults.
    prefs_setValueInt("Mp3EncodingSettings.channels", 7);
    prefs_setValueInt("Mp3EncodingSettings.bitrate", -5);
    Mp3::loadSettings();
    EXPECT_EQ(Mp3::encodingSettings().channels, Mp3Channels::stereo);
    EXPECT_EQ(Mp3::encodingSettings().bitrate, 128);
}

TEST(Mp3Args, ExactVectors) {
    EXPECT_EQ(ffArgs::appendMetadata("/a/x_temp.mp3", "/a/metadata.txt", "/a/x.mp3"),
              (QStringList{"-i", "/a/x_temp.mp3", "-i", "/a/metadata.txt", "-map_metadata", "1", "-c:a",
                           "copy", "-id3v2_version", "3", "-write_id3v1", "0", "/a/x.mp3"}));
    EXPECT_EQ(kid3Args::convertToID3("/a/x.mp3"),
              (QStringList{"-c", "filter 'ID3v2.4.0 Tag'", "-c", "select all", "-c", "to23", "-c",
                           "set arranger ''", "/a/x.mp3"}));

    const std::vector<Mp3Tag> tags{{"title", "Say \"hi\" \\o/"},
                                   {kid3Args::pictureTag("/a/Bob's \"best\\.png"), "T"}};
    EXPECT_EQ(kid3Args::pictureTag("/a/Bob's \"best\\.png"), "picture:'/a/Bob\\'s \"best\\\\.png'");
    EXPECT_EQ(kid3Args::setTags("/a/x.mp3", tags, true),
              (QStringList{"-c", "set title \"Say \\\"hi\\\" \\\\o/\"", "-c",
                           "set picture:'/a/Bob\\'s \"best\\\\.png' \"T\"", "/a/x.mp3"}));
    EXPECT_EQ(kid3Args::setTags("/a/x.mp3", tags, false),
              (QStringList{"-c", "set title \"\"", "-c", "set picture \"\"", "/a/x.mp3"}));
    // A relative name cannot pass for an option.
    EXPECT_TRUE(kid3Args::convertToID3("-x.mp3").last().startsWith("/"));
}

TEST(Mp3MetadataText, UnknownDurationEndsTheLastChapterAtTenHours) {
    const QString year = QString::number(QDate::currentDate().year());
    const QString text = Mp3::metadataText("/a/x.mp3", 0.0f, "T", "notes go elsewhere",
                                           {{20.0f, 0, "Two"}, {10.0f, 0, "One\nEND=0"}});
    EXPECT_EQ(text, ";FFMETADATA1\ntitle=T\ngenre=Podcast\ndate=" + year +
                        "\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=10000\nEND=19990\ntitle=One\\\nEND=0\n"
                        "[CHAPTER]\nTIMEBASE=1/1000\nSTART=20000\nEND=36000000\ntitle=Two\n");
    // No title, no chapters: only the header and the two fixed tags.
    EXPECT_EQ(Mp3::metadataText("/a/x.mp3", 5.0f, "", "", {}),
              ";FFMETADATA1\ngenre=Podcast\ndate=" + year + "\n");
}

class Mp3Tools : public Mp3Fixture {};

TEST_F(Mp3Tools, SetupProvidesTheToolsBehindAPleaseWait) {
    Mp3::setup();
    EXPECT_EQ(transcript(),
              (QStringList{"pleaseWait: Additional installation | Installing additional required "
                           "components. It should take less than a minute. Please wait...",
                           "pleaseWait: hidden"}));
    EXPECT_TRUE(Mp3::kid3Path().endsWith("/ZendrelUtils/kd3.app/Contents/MacOS/kid3-cli"));
    EXPECT_EQ(QFileInfo(Mp3::kid3Path()).canonicalFilePath(),
              QFileInfo("/usr/bin/kid3-cli").canonicalFilePath());
}

TEST_F(Mp3Tools, EncodeAppliesTheSettingsBitrateAndChannels) {
    Mp3::setEncodingSettings({Mp3Channels::mono, 64});
    Mp3::encode(tone("in.wav", 3.0, 440.0, 44100, 2, 0.3), path("mono.mp3"));
    Mp3::setEncodingSettings({});
    EXPECT_EQ(probe(path("mono.mp3"), "channels"), "1");
    EXPECT_EQ(probe(path("mono.mp3"), "bit_rate"), "64000");
}

TEST_F(Mp3Tools, EncodeWithTagsWritesTagsAndChaptersAndCleansUp) {
    const QString wav = tone("mix.wav", 30.0, 440.0, 44100, 1, 0.3);
    const QString dst = path("show.mp3");
    const QString chapterText = QString::fromUtf8("Café; \"B\" = #2");
    bytes("metadata.txt", "mine");
    ASSERT_TRUE(Mp3::encodeWithTags(wav, dst, kTitle, picture("p.png"), "notes\n= ;",
                                    {{20.0f, 0, chapterText}, {10.0f, 0, "One"}}));

    const Probed probed = probeTags(dst);
    EXPECT_EQ(probed.tag("title"), kTitle);
    EXPECT_EQ(probed.tag("genre"), "Podcast");
    EXPECT_EQ(probed.tag("date"), QString::number(QDate::currentDate().year()));
    expectTwoChapters(probed, chapterText);
    EXPECT_EQ(headerVersion(dst), 3);
    EXPECT_EQ(probe(dst, "channels"), "1");
    EXPECT_NEAR(probe(dst, "duration").toDouble(), 30.0, 0.1);
    // Neither the picture nor the notes belong to this route.
    EXPECT_TRUE(readTags(dst).pictures.empty());
    EXPECT_TRUE(readTags(dst).comments.empty());

    EXPECT_FALSE(QFileInfo::exists(path("show_temp.mp3")));
    EXPECT_EQ(QFileInfo(path("metadata.txt")).size(), 4) << "a metadata.txt of the user's is left alone";
    EXPECT_TRUE(QDir(dir.path()).entryList({".metadata-*"}, QDir::AllEntries | QDir::Hidden).isEmpty());
    EXPECT_TRUE(transcript().isEmpty());
}

TEST_F(Mp3Tools, EncodeWithTagsReportsAMissingResult) {
    EXPECT_FALSE(Mp3::convertToMp3WithTags(path("absent.wav"), path("out.mp3"), 128, Mp3Channels::stereo, "T",
                                           "", "", {}));
    EXPECT_EQ(transcript(),
              QStringList{"alert: Error | Cannot create the MP3 file " + path("out.mp3") + "."});
    EXPECT_FALSE(QFileInfo::exists(path("metadata.txt")));

    const QString wav = tone("in.wav", 1.0);
    EXPECT_FALSE(Mp3::convertToMp3WithTags(wav, path("no/such/folder/out.mp3"), 128, Mp3Channels::stereo, "T",
                                           "", "", {}));
    const QStringList lines = transcript();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines[1].startsWith("alert: Error | Cannot write the tags file in "))
        << lines[1].toStdString();
}
