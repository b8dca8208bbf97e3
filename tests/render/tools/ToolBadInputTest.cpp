// File names the tools could misread, and inputs that are not what they claim to be.

#include "recording/TimeReference.h"
#include "render/tools/SoxUt.h"
#include "render/tools/ToolFixture.h"
#include "support/EventWait.h"

#include <QDir>
#include <QFileInfo>

namespace {
// Switches the working folder for one test.
class CurrentFolder {
public:
    explicit CurrentFolder(const QString& path) : previous_(QDir::currentPath()) { QDir::setCurrent(path); }
    ~CurrentFolder() { QDir::setCurrent(previous_); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    QString previous_;
};
} // namespace

class SoxUtBadInputTest : public ToolFixture {
protected:
    QString textFile(const QString& name) { return bytes(name, "This is a shopping list, not a sound.\n"); }
};

TEST_F(SoxUtBadInputTest, AwkwardNamesReachTheToolsIntact) {
    ASSERT_TRUE(QDir(dir.path()).mkpath("it's \"here\" %20 ü"));
    const QString folder = "it's \"here\" %20 ü/";
    const QString src = tone(folder + "-a b 'c' %20 é.wav", 1.0, 440.0, 44100, 2);
    ASSERT_TRUE(QFileInfo::exists(src));

    soxUt_convert(src, path(folder + "mono ü.wav"), std::nullopt, 1, std::nullopt, false);
    EXPECT_EQ(decode(path(folder + "mono ü.wav")).channels, 1);
    soxUt_trim(src, 0.25, 0.75, path(folder + "-cut %d.wav"));
    EXPECT_NEAR(decode(path(folder + "-cut %d.wav")).seconds(), 0.5, 0.001);
    soxUt_concatenate({src, src}, path(folder + "twice \"x\".wav"));
    EXPECT_NEAR(decode(path(folder + "twice \"x\".wav")).seconds(), 2.0, 0.001);
    EXPECT_NEAR(soxUt_getRMSLevel(src), 20.0 * std::log10(0.5 / std::sqrt(2.0)), 0.02);
    soxUt_createCluster(src, 0.5, 0.0, 0.5, 0.0, 0.0, path(folder + "cl 'é'.wav"), false, 0.0);
    EXPECT_NEAR(decode(path(folder + "cl 'é'.wav")).seconds(), 1.0, 0.001);

    soxUt_convertToMp3(src, path(folder + "%20 ü.mp3"), 96, 1);
    EXPECT_EQ(probe(path(folder + "%20 ü.mp3"), "channels"), "1");
    soxUt_convertMp3ToWav(path(folder + "%20 ü.mp3"), path(folder + "%20 back.wav"), false, 2, 16);
    EXPECT_EQ(decode(path(folder + "%20 back.wav")).channels, 2);
    EXPECT_EQ(aUt_getAudioTimeReference(src), 0);
    EXPECT_TRUE(transcript().isEmpty());
}

TEST_F(SoxUtBadInputTest, ALeadingDashIsAFileNameNotAnOption) {
    tone("-n.wav", 0.5);
    tone("-x.wav", 0.5);
    const CurrentFolder here(dir.path());
    soxUt_gain("-x.wav", "-y.wav", -6.0);
    EXPECT_NEAR(decode(path("-y.wav")).rmsDb(0, 0.0, 0.5), 20.0 * std::log10(0.5 / std::sqrt(2.0)) - 6.0,
                0.05);
    soxUt_convertMp3ToWavMono16("-n.wav", "-d.wav", 8000, false);
    EXPECT_EQ(decode(path("-d.wav")).rate, 8000);
    EXPECT_NEAR(soxUt_getRMSLevel("-n.wav"), 20.0 * std::log10(0.5 / std::sqrt(2.0)), 0.02);
    soxUt_concatenate({"-x.wav", "-n.wav"}, "-both.wav");
    EXPECT_NEAR(decode(path("-both.wav")).seconds(), 1.0, 0.001);
}

TEST_F(SoxUtBadInputTest, TextPretendingToBeWavGivesNoOutputAndNoCrash) {
    const QString text = textFile("list.wav");
    soxUt_convert(text, path("out.wav"), 44100, 1, 16, false);
    EXPECT_FALSE(QFileInfo::exists(path("out.wav")));
    EXPECT_EQ(soxUt_getRMSLevel(text), -12.0);
    soxUt_convertMp3ToWav(text, path("dec.wav"), false, 2, 16);
    EXPECT_FALSE(QFileInfo::exists(path("dec.wav")));
    soxUt_createCluster(text, 0.5, 0.0, 1.0, 0.0, 0.0, path("cl.wav"), false, 0.0);
    EXPECT_FALSE(QFileInfo::exists(path("cl.wav")));
    soxUt_clusterGate(text, path("gated.wav"), 0.0, 0.0, false, 0.0, {{0.0, 1.0}, {2.0, 3.0}}, false,
                      nullptr);
    EXPECT_FALSE(QFileInfo::exists(path("gated.wav")));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"list.wav"});
    EXPECT_TRUE(transcript().isEmpty());
}

TEST_F(SoxUtBadInputTest, MissingSourcesLeaveNothingBehind) {
    const QString missing = path("gone.wav");
    soxUt_convert(missing, path("a.wav"), std::nullopt, std::nullopt, std::nullopt, true);
    soxUt_trim(missing, 0.0, 1.0, path("b.wav"));
    soxUt_mixdown({missing, path("gone2.wav")}, path("c.wav"));
    soxUt_convertToMp3(missing, path("d.mp3"), 64);
    soxUt_clusterGate(missing, path("e.wav"), 0.0, 0.0, false, 0.0, {{0.0, 1.0}, {2.0, 3.0}}, false, nullptr);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    // The gate reads the source once and reports it missing once.
    const QString alert = "alert: SHX ERROR | Could not create cluster, file " + missing + " not found.";
    EXPECT_TRUE(testenv::waitUntil([&] { return transcript() == QStringList{alert}; }));
}
