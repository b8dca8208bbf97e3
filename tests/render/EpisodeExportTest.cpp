// Whole exports as a podcaster publishes them, read back by independent readers: ffmpeg's R128 meter,
// mutagen, ffprobe, a JSON and an XML parser.

#include "DeliveryFixture.h"
#include "render/ChapterFiles.h"

#include <QXmlStreamReader>

class EpisodeExportTest : public DeliveryFixture {};

struct LoudnessCase {
    int channels;
    double sourceLufs;
};

class ExportLoudnessTest : public DeliveryFixture, public ::testing::WithParamInterface<LoudnessCase> {};

TEST_P(ExportLoudnessTest, Mp3MeetsTheTargetAsFfmpegMeasuresIt) {
    const auto [channels, sourceLufs] = GetParam();
    auto tl = tlfixture::timeline();
    tl->appendItemInMainLane(fileAsset(noiseAt("source.wav", channels, sourceLufs)), std::nullopt, false);
    const auto options = EpisodeExport::defaultOptions(path("out.mp3"), channels);
    ASSERT_TRUE(options.loudness.normalise) << "on by default for MP3";
    const double target = channels == 1 ? -19.0 : -16.0;
    EXPECT_EQ(options.loudness.target, target);

    const ExportOutcome outcome = exportTimeline(tl, episodeOf(channels), options);
    ASSERT_TRUE(outcome.done) << outcome.error.toStdString();
    const Metered metered = meter(path("out.mp3"));
    EXPECT_NEAR(metered.integrated, target, 0.5);
    EXPECT_LE(metered.truePeak, -1.0 + 0.1);
    EXPECT_TRUE(outcome.report.targetMet);
    EXPECT_NEAR(outcome.report.integratedLoudness, metered.integrated, 0.3);
    EXPECT_EQ(outcome.report.channels, channels);
    EXPECT_NEAR(outcome.report.gain, target - sourceLufs, 1.0);
}

// A quiet mono source raised to its target and a hot stereo one brought down under the peak ceiling.
INSTANTIATE_TEST_SUITE_P(
    QuietAndHot, ExportLoudnessTest, ::testing::Values(LoudnessCase{1, -30}, LoudnessCase{2, -8}),
    [](const auto& info) {
        return QString("%1ch%2LUFS").arg(info.param.channels).arg(-info.param.sourceLufs).toStdString();
    });

TEST_F(EpisodeExportTest, WavWithoutNormalisingIsTheMixUntouched) {
    const QString source = noiseAt("source.wav", 2, -30);
    auto tl = tlfixture::timeline();
    tl->appendItemInMainLane(fileAsset(source), std::nullopt, false);
    auto options = EpisodeExport::defaultOptions(path("out.wav"), 2);
    ASSERT_FALSE(options.loudness.normalise) << "off by default for WAV";
    options.reportPath = path("out.json");

    const ExportOutcome outcome = exportTimeline(tl, episodeOf(2), options);
    ASSERT_TRUE(outcome.done) << outcome.error.toStdString();
    const Decoded in = decode(source);
    const Decoded out = decode(path("out.wav"));
    ASSERT_EQ(out.frames, in.frames);
    EXPECT_LE(out.largestDifference(in), 3.0 / 32768) << "the sound tool's dither only";
    EXPECT_FALSE(outcome.report.targetMet);
    EXPECT_NEAR(meter(path("out.wav")).integrated, -30, 0.5);

    QFile json(path("out.json"));
    ASSERT_TRUE(json.open(QIODevice::ReadOnly));
    const QJsonObject report = QJsonDocument::fromJson(json.readAll()).object();
    for (const char* key : {"integratedLoudness", "loudnessRange", "truePeak", "duration", "size",
                            "sampleRate", "channels", "bitRate", "chapterCount", "targetMet"})
        EXPECT_TRUE(report.contains(key)) << key;
    EXPECT_EQ(report.value("sampleRate").toInt(), 44100);
    EXPECT_EQ(report.value("bitRate").toInt(), 1411);
    EXPECT_EQ(report.value("size").toDouble(), static_cast<double>(QFileInfo(path("out.wav")).size()));
    EXPECT_NEAR(report.value("duration").toDouble(), 20.0, 0.01);
    EXPECT_FALSE(QDir(dir.path())
                     .entryList(QDir::Hidden | QDir::AllDirs | QDir::NoDotAndDotDot)
                     .join(",")
                     .contains("zendrel-export"))
        << "no scratch folder left behind";
}

// Chapters at 2.001 s (a start truncation would put at 2000 ms) and 10 s, with non-ASCII and quotes.
TEST_F(EpisodeExportTest, ChaptersAgreeInId3JsonAndPodloveAndTagsReadCleanly) {
    const QString first = QString::fromUtf8("Über \"Ärger\" – 1; #");
    const QString second = QString::fromUtf8("Zwei <b> & 'drei'");
    auto tl = tlfixture::timeline();
    tl->appendItemInMainLane(fileAsset(noiseAt("a.wav", 2, -20, 15)), std::nullopt, false);
    tl->mainLane[0]->addMarker(std::nullopt, 2.001, first, AEMarkerType::chapter);
    tl->mainLane[0]->addMarker(std::nullopt, 10.0, second, AEMarkerType::chapter);
    tl->getCollectedItems();
    auto episode = episodeOf(2, QString::fromUtf8("Folge Ü: \"Anführung\""));
    episode->notes = "Episode notes";
    episode->publicationDate = QDateTime(QDate(2024, 5, 1), QTime(9, 0));
    auto show = std::make_shared<AEShow>("Show without notes");
    auto options = EpisodeExport::defaultOptions(path("out.mp3"), 2);
    options.chaptersJsonPath = path("out.chapters.json");
    options.podloveChaptersPath = path("out.psc.xml");

    const ExportOutcome outcome = exportTimeline(tl, episode, options, show);
    ASSERT_TRUE(outcome.done) << outcome.error.toStdString();
    EXPECT_EQ(outcome.report.chapterCount, 2);

    const QJsonObject tag = mutagenRead(path("out.mp3"));
    EXPECT_EQ(tag.value("version").toInt(), 3);
    EXPECT_FALSE(tag.value("id3v1").toBool()) << "no ID3v1 tag with cut UTF-8";
    const QJsonArray frames = tag.value("frames").toArray();
    EXPECT_TRUE(frames.contains("TYER"));
    for (const QJsonValue& frame : frames)
        EXPECT_FALSE(frame.toString().startsWith("TXXX:year")) << "stray " << frame.toString().toStdString();
    for (const char* key : {"comments", "lyrics"}) {
        const QJsonArray texts = tag.value(key).toArray();
        ASSERT_FALSE(texts.isEmpty()) << key;
        for (const QJsonValue& text : texts)
            EXPECT_EQ(text.toString(), "Episode notes") << key;
    }
    const QJsonArray id3 = tag.value("chapters").toArray();
    ASSERT_EQ(id3.size(), 2);
    EXPECT_EQ(id3[0].toObject().value("start").toInt(), 2001);
    EXPECT_EQ(id3[0].toObject().value("end").toInt(), 9990);
    EXPECT_EQ(id3[1].toObject().value("start").toInt(), 10000);

    QFile jsonFile(options.chaptersJsonPath);
    ASSERT_TRUE(jsonFile.open(QIODevice::ReadOnly));
    const QJsonObject json = QJsonDocument::fromJson(jsonFile.readAll()).object();
    EXPECT_TRUE(json.value("version").isString());
    const QJsonArray chapters = json.value("chapters").toArray();
    ASSERT_EQ(chapters.size(), 2);

    QFile xmlFile(options.podloveChaptersPath);
    ASSERT_TRUE(xmlFile.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&xmlFile);
    std::vector<std::pair<QString, QString>> podlove;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("chapter") &&
            xml.namespaceUri() == QLatin1String("http://podlove.org/simple-chapters"))
            podlove.emplace_back(xml.attributes().value("start").toString(),
                                 xml.attributes().value("title").toString());
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    ASSERT_EQ(podlove.size(), 2u);

    const QStringList titles{first, second};
    const QStringList starts{"00:00:02.001", "00:00:10.000"};
    for (int n = 0; n < 2; ++n) {
        const QJsonObject chapter = chapters[n].toObject();
        const double id3Start = id3[n].toObject().value("start").toDouble() / 1000.0;
        EXPECT_NEAR(chapter.value("startTime").toDouble(), id3Start, 0.01);
        EXPECT_EQ(chapter.value("title").toString().toUtf8(), titles[n].toUtf8());
        EXPECT_EQ(id3[n].toObject().value("title").toString().toUtf8(), titles[n].toUtf8());
        EXPECT_EQ(podlove[static_cast<size_t>(n)].first, starts[n]);
        EXPECT_EQ(podlove[static_cast<size_t>(n)].second.toUtf8(), titles[n].toUtf8());
    }
}

TEST(ChapterFiles, NormalPlayTimeAndOptionalFields) {
    EXPECT_EQ(chapters_normalPlayTime(3723004), "01:02:03.004");
    const QJsonObject json = QJsonDocument::fromJson(chapters_podcastJson({{1500, "A", "https://x/a.jpg", ""},
                                                                           {2000, "B", "", "https://y"}}))
                                 .object();
    const QJsonArray list = json.value("chapters").toArray();
    EXPECT_EQ(list[0].toObject().value("img").toString(), "https://x/a.jpg");
    EXPECT_FALSE(list[0].toObject().contains("url"));
    EXPECT_EQ(list[1].toObject().value("url").toString(), "https://y");
    EXPECT_FALSE(list[1].toObject().contains("img"));
    EXPECT_EQ(list[0].toObject().value("startTime").toDouble(), 1.5);
}
