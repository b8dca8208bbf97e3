#include "project/model/AEIngest.h"
#include "project/model/Ingest.h"
#include "support/ScriptedSession.h"
#include "support/TestAudio.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// A tenth of a second of 8 kHz silence.
QByteArray tenthOfASecond() {
    return TestAudio::wavBytes(1, 1, 8000, 800);
}

class IngestCheck : public ::testing::Test, protected ScriptedSession {
protected:
    void SetUp() override {
        AEIngest::workFolder = dir.path() + "/";
        AEIngest ingest(dir.path() + "/AssetIngests");
    }

    // By default a real WAV (a tenth of a second of 8 kHz silence): sound files are checked for sound.
    QString makeFile(const QString& name, const QByteArray& content = tenthOfASecond()) {
        const QString path = dir.path() + "/" + name;
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
        return path;
    }
    size_t dialogs() const {
        size_t n = 0;
        for (const auto& line : transcript())
            n += line.startsWith("selectFile:");
        return n;
    }

    QTemporaryDir dir;
};

} // namespace

TEST_F(IngestCheck, BothPresentTouchesNothing) {
    const QString original = makeFile("a.wav");
    const QString copy = *AEIngest::ingest(original);
    const auto before = QFileInfo(copy).lastModified();
    const auto r = Ingest::check(original, copy);
    EXPECT_TRUE(r.ingested);
    EXPECT_EQ(r.originalPath, original);
    EXPECT_EQ(r.ingestedPath, copy);
    EXPECT_EQ(QFileInfo(copy).lastModified(), before);
    EXPECT_EQ(dialogs(), 0u);
}

TEST_F(IngestCheck, LostCopyIsMadeAgainOnlyWhenForced) {
    const QString original = makeFile("b c.wav");
    const QString copy = *AEIngest::ingest(original);
    QFile::remove(copy);
    const auto lazy = Ingest::check(original, copy, false);
    EXPECT_FALSE(lazy.ingested);
    EXPECT_FALSE(QFile::exists(copy));
    const auto r = Ingest::check(original, copy);
    EXPECT_TRUE(r.ingested);
    EXPECT_EQ(r.ingestedPath, copy);
    EXPECT_TRUE(QFile::exists(copy));
}

TEST_F(IngestCheck, LostOriginalIsRestoredFromTheCopyOnlyWithOutgest) {
    const QString original = makeFile("d.wav");
    const QString copy = *AEIngest::ingest(original);
    QFile::remove(original);
    const auto kept = Ingest::check(original, copy);
    EXPECT_FALSE(kept.ingested);
    EXPECT_FALSE(QFile::exists(original));
    const auto restored = Ingest::check(original, copy, true, true);
    EXPECT_FALSE(restored.ingested);
    EXPECT_EQ(restored.originalPath, original);
    EXPECT_TRUE(QFile::exists(original));
}

TEST_F(IngestCheck, BothLostAsksOnceAndFollowsTheChosenFile) {
    const QString moved = makeFile("moved.wav");
    door->queuePath(moved);
    const auto r = Ingest::check(dir.path() + "/gone.wav", dir.path() + "/AssetIngests/gone___12345678.wav");
    EXPECT_TRUE(r.ingested);
    EXPECT_EQ(r.originalPath, moved);
    EXPECT_TRUE(r.ingestedPath && QFile::exists(*r.ingestedPath));
    EXPECT_EQ(dialogs(), 1u);
}

TEST_F(IngestCheck, BothLostAndCancelledLeavesTheCopyPathAndAsksNoMore) {
    const QString copyPath = dir.path() + "/AssetIngests/gone___12345678.wav";
    const auto r = Ingest::check(dir.path() + "/gone.wav", copyPath);
    EXPECT_FALSE(r.ingested);
    EXPECT_FALSE(r.originalPath);
    EXPECT_EQ(r.ingestedPath, copyPath);
    EXPECT_EQ(dialogs(), 1u);
    const auto quiet = Ingest::check(dir.path() + "/gone.wav", copyPath, true, false, false);
    EXPECT_FALSE(quiet.originalPath);
    EXPECT_FALSE(quiet.ingestedPath);
    EXPECT_EQ(dialogs(), 1u);
}
