// Every way a path becomes media, fed what is not audio: each refuses with a message that names the
// file and the reason, writes nothing, and none of them waits on a pipe.

#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AssetDrop.h"
#include "project/model/Ingest.h"
#include "recording/MediaCheck.h"
#include "support/EventWait.h"
#include "support/ScriptedSession.h"
#include "support/TestAudio.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray noise(int bytes) {
    QRandomGenerator random(19);
    QByteArray b(bytes, '\0');
    for (char& c : b)
        c = static_cast<char>(random.bounded(256));
    return b;
}

struct BadPath {
    const char* what;
    std::function<QString(const TestAudio&)> make;
    const char* reason; // nullptr: accepted
};

const std::vector<BadPath> kBadPaths = {
    {"FIFO",
     [](const TestAudio& m) {
         const QString p = m.path("pipe.wav");
         return ::mkfifo(QFile::encodeName(p).constData(), 0600) == 0 ? p : QString();
     },
     "is not a regular file"},
    {"directory",
     [](const TestAudio& m) {
         QDir().mkpath(m.path("folder.wav"));
         return m.path("folder.wav");
     },
     "is a folder"},
    {"dangling symlink",
     [](const TestAudio& m) {
         QFile::link(m.path("gone.wav"), m.path("dangling.wav"));
         return m.path("dangling.wav");
     },
     "cannot be found"},
    {"looping symlink",
     [](const TestAudio& m) {
         QFile::link(m.path("loopB.wav"), m.path("loopA.wav"));
         QFile::link(m.path("loopA.wav"), m.path("loopB.wav"));
         return m.path("loopA.wav");
     },
     "cannot be found"},
    {"removed before it is used",
     [](const TestAudio& m) {
         const QString p = m.sine("removed.wav", 8000, 1, 16, 0.5);
         QFile::remove(p);
         return p;
     },
     "cannot be found"},
    {"empty", [](const TestAudio& m) { return m.bytes("empty.wav", {}); }, "is not audio"},
    {"text", [](const TestAudio& m) { return m.bytes("notes.wav", "Intro, then the interview.\n"); },
     "is not audio"},
    {"random .mp3", [](const TestAudio& m) { return m.bytes("noise.mp3", noise(8192)); }, "is not audio"},
    {"random .m4a", [](const TestAudio& m) { return m.bytes("noise.m4a", noise(8192)); }, "is not audio"},
    {"random .flac", [](const TestAudio& m) { return m.bytes("noise.flac", noise(8192)); }, "is not audio"},
    {"random .aif", [](const TestAudio& m) { return m.bytes("noise.aif", noise(8192)); }, "is not audio"},
    {"zero channels",
     [](const TestAudio& m) { return m.bytes("zeroch.wav", TestAudio::wavBytes(1, 0, 8000, 100)); },
     "is not audio"},
    {"zero rate",
     [](const TestAudio& m) { return m.bytes("zerorate.wav", TestAudio::wavBytes(1, 1, 0, 100)); },
     "is not audio"},
    {"unknown format tag",
     [](const TestAudio& m) { return m.bytes("tag.wav", TestAudio::wavBytes(0x1234, 1, 8000, 8000)); },
     "is not audio"},
    {"no frames",
     [](const TestAudio& m) { return m.bytes("noframes.wav", TestAudio::wavBytes(1, 1, 8000, 0)); },
     "has no sound in it"},
    {"one frame",
     [](const TestAudio& m) { return m.bytes("oneframe.wav", TestAudio::wavBytes(1, 1, 8000, 1)); }, nullptr},
};

// One entry point: true when it took the file. It tells the person (alert) or the log (background).
struct EntryPoint {
    const char* name;
    bool tellsThePerson;
    std::function<bool(const QString&)> take;
    // Ingest.check takes a missing original for its own case (ask, or give nothing), not a refusal.
    bool missingIsRefused = true;
};

const std::vector<EntryPoint> kEntryPoints = {
    {"drop", true,
     [](const QString& p) {
         auto episode = std::make_shared<AEEpisode>("bad-input");
         return !AEAssetIngestDone(episode, {p}, false, false, false).empty();
     }},
    {"asset creation", true,
     [](const QString& p) {
         AEAsset::Args args;
         args.filePath = p;
         args.isNew = true;
         return AEAsset::make(args) != nullptr;
     }},
    {"relink", true,
     [](const QString& p) {
         auto asset = AEAsset::makePlaceholder();
         asset->originalFilePath = "/elsewhere/take.wav";
         const bool taken = asset->relink(p);
         EXPECT_EQ(asset->originalFilePath, taken ? p : "/elsewhere/take.wav");
         return taken;
     }},
    {"ingest", false, [](const QString& p) { return AEIngest::ingestMedia(p).has_value(); }},
    {"Ingest.check", false,
     [](const QString& p) {
         const auto result = Ingest::check(p, AEIngest::ingestPath + "never-made.wav", true, false, false);
         EXPECT_EQ(result.ingested, result.ingestedPath.has_value());
         return result.ingested;
     },
     false},
};

class BadInput : public ::testing::TestWithParam<BadPath>, protected ScriptedSession {
protected:
    void SetUp() override {
        testenv::useStoreWorkFolder();
        // A hang is the fault under test: die loudly rather than wait for the runner's timeout.
        ::alarm(60);
    }
    void TearDown() override {
        ::alarm(0);
        testenv::pumpEventsFor(50);
    }

    TestAudio maker;
};

} // namespace

TEST_P(BadInput, EveryEntryPointRefusesWithTheReasonAndWritesNothing) {
    const BadPath& bad = GetParam();
    const QString path = bad.make(maker);
    ASSERT_FALSE(path.isEmpty());
    const auto reason = mediaRefusal(path);
    EXPECT_EQ(reason.value_or(""), bad.reason ? QString(bad.reason) : QString());
    const QString message = mediaRefusalText(path, bad.reason ? bad.reason : "");
    for (const auto& entry : kEntryPoints) {
        SCOPED_TRACE(entry.name);
        const QStringList before = QDir(AEIngest::ingestPath).entryList(QDir::Files);
        const size_t alertsBefore = door->transcript().size();
        const bool taken = entry.take(path);
        EXPECT_EQ(taken, bad.reason == nullptr);
        if (!bad.reason) continue;
        EXPECT_EQ(QDir(AEIngest::ingestPath).entryList(QDir::Files), before) << "nothing copied or stored";
        const auto transcript = door->transcript();
        if (entry.tellsThePerson) {
            ASSERT_EQ(transcript.size(), alertsBefore + 1);
            EXPECT_EQ(transcript.back(), "alert: Not Added | " + message);
        } else {
            EXPECT_EQ(transcript.size(), alertsBefore);
            if (entry.missingIsRefused || QFileInfo::exists(path)) {
                EXPECT_FALSE(logged().filter(message).isEmpty());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, BadInput, ::testing::ValuesIn(kBadPaths), [](const auto& info) {
    QString name = QString(info.param.what).replace(QRegularExpression("[^A-Za-z0-9]"), "_");
    return name.toStdString();
});
