#include "app/cli/CleanCommand.h"
#include "cleaning/CleaningFixture.h"
#include "foundation/Prog.h"
#include "render/tools/ProcessRunner.h"

#include <atomic>
#include <thread>
#include <unistd.h>

namespace {

class BrightwashBadInput : public CleaningFixture {
protected:
    static bool succeeds(const QString& program, const QStringList& arguments) {
        const ProcessResult r = runProcess({.program = program, .arguments = arguments, .keepOutput = false});
        return r.finished && r.exitCode == 0;
    }

    // The default chain on `source`: its error, the source unchanged, nothing left behind.
    QString cleanKeepingSource(const QString& source,
                               BrightwashSetting settings = Brightwash::loadSettings()) {
        const QByteArray before = digest(source);
        const QString error = clean(source, settings);
        EXPECT_EQ(digest(source), before) << source.toStdString();
        EXPECT_EQ(leftovers(), QStringList()) << source.toStdString();
        return error;
    }
};

} // namespace

TEST_F(BrightwashBadInput, OddButValidFilesAreCleaned) {
    struct Case {
        QString name;
        QString file;
    };
    const std::vector<Case> cases{
        {"all silence", silence("quiet.wav", 4.0, kRate)},
        {"one second", speech("s.wav", "Yes.")},
        {"six channels at 48 kHz",
         [&] {
             const QString t = tone("t.wav", 3.0, 300, 48000, 1, 0.3);
             return channels("six.wav", {t, t, t, t, t, t});
         }()},
        {"no pause",
         [&] { return speech("long.wav", "one two three four five six seven eight nine ten"); }()},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(cleanKeepingSource(c.file), "") << c.name.toStdString();
        const Decoded out = decode(QString(c.file).replace(".wav", "_cln.wav"));
        EXPECT_EQ(out.channels, 1) << c.name.toStdString();
        EXPECT_GT(out.frames, 0) << c.name.toStdString();
    }
}

TEST_F(BrightwashBadInput, FailuresSayWhyAndLeaveNothing) {
    const QString missing = path("missing.wav");
    int callbacks = 0;
    auto run =
        Brightwash::make(missing, Brightwash::loadSettings(), nullptr, [&](const QString&) { ++callbacks; });
    run->start();
    EXPECT_TRUE(run->error().contains("no such file")) << run->error().toStdString();
    EXPECT_EQ(callbacks, 2); // once at once, once at the end
    run.reset();
    EXPECT_EQ(leftovers(), QStringList());

    const QString junk = path("junk.wav");
    QFile file(junk);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a sound file at all");
    file.close();
    EXPECT_TRUE(cleanKeepingSource(junk).contains("Ingest left no sound"));

    // Noise throughout: whatever the denoiser makes of it, the source stays and nothing is left over.
    BrightwashSetting denoise = Brightwash::loadSettings();
    denoise.doDenoiser = true;
    cleanKeepingSource(noise("hiss.wav", 3.0, 0.3, kRate), denoise);
}

// Once the denoiser's tools are at work: a cancel, or the source removed from under the run.
TEST_F(BrightwashBadInput, CancelOrAVanishedSourceStopsTheToolInFlightAndLeavesNothing) {
    for (const bool cancel : {true, false}) {
        SCOPED_TRACE(cancel ? "cancel" : "source removed");
        const QString source = noise(cancel ? "long.wav" : "gone.wav", cancel ? 60.0 : 20.0, 0.3, kRate);
        const QByteArray before = digest(source);
        BrightwashSetting settings = Brightwash::loadSettings();
        settings.doDenoiser = true;
        auto prog = Prog::make(ProgType::double_, {}, 0.25, Brightwash::getNphases(settings));
        auto run = Brightwash::make(source, settings, prog, {});
        std::atomic<bool> ended{false};
        std::thread meddler([&] {
            while (!prog->state().phaseTitle.startsWith("Denoise") && !ended)
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            if (!cancel) {
                QFile::remove(source);
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            run->cancel();
        });
        run->start();
        ended = true;
        meddler.join();
        if (cancel) {
            EXPECT_EQ(run->error(), "Cancelled.");
            EXPECT_EQ(digest(source), before);
        } else {
            EXPECT_TRUE(run->error().contains("disappeared")) << run->error().toStdString();
        }
        EXPECT_FALSE(QFileInfo::exists(run->resultPath()));
        run.reset();
        EXPECT_EQ(leftovers(), QStringList());
    }
}

// The temporaries go beside the source: a small file system holding it fills up at once.
TEST_F(BrightwashBadInput, FullTemporaryFolder) {
    const QString full = path("full");
    QDir().mkpath(full);
    const QString made = noise("big.wav", 10.0, 0.3, kRate);
    const QString size = QString::number(QFileInfo(made).size() + 96 * 1024);
    if (!succeeds("/bin/mount", {"-t", "tmpfs", "-o", "size=" + size, "tmpfs", full}))
        GTEST_SKIP() << "cannot mount a small tmpfs here (needs root or CAP_SYS_ADMIN)";
    const QString source = full + "/big.wav";
    const bool copied = QFile::copy(made, source);
    const QByteArray before = digest(source);
    const QString error = copied ? clean(source, Brightwash::loadSettings()) : QString();
    const QStringList left = QDir(full).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    const QByteArray after = digest(source);
    succeeds("/bin/umount", {full});
    ASSERT_TRUE(copied);
    EXPECT_TRUE(error.contains("full")) << error.toStdString();
    EXPECT_EQ(after, before);
    EXPECT_EQ(left, QStringList{"big.wav"});
}

TEST_F(BrightwashBadInput, ReadOnlyFolder) {
    if (geteuid() == 0) GTEST_SKIP() << "root writes into read-only folders; the check needs a normal user";
    const QString source = speech("ro.wav", "Read only.");
    QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner);
    const QString error = clean(source, Brightwash::loadSettings());
    QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_TRUE(error.contains("read-only")) << error.toStdString();
}

TEST_F(BrightwashBadInput, CommandLineCleansAndNamesTheFailedFile) {
    const QString good = speech("cli.wav", "From the command line.");
    const QString settingsFile = path("settings.json");
    BrightwashSetting s = Brightwash::loadSettings();
    s.suffix = "cmd";
    QFile json(settingsFile);
    ASSERT_TRUE(json.open(QIODevice::WriteOnly));
    json.write(s.encodeString().toUtf8());
    json.close();

    EXPECT_EQ(runCleanCommand({"zendrel", "clean", "--settings", settingsFile, "--mp3", good}), 0);
    EXPECT_GT(QFileInfo(path("cli_cmd.mp3")).size(), 0);
    EXPECT_FALSE(QFileInfo::exists(path("cli_cmd.wav")));

    EXPECT_EQ(runCleanCommand({"zendrel", "clean", "--settings", settingsFile, good, path("gone.wav")}), 1);
    EXPECT_TRUE(QFileInfo::exists(path("cli_cmd.wav")));
    EXPECT_EQ(runCleanCommand({"zendrel", "clean", "--settings", good, good}), 2); // not a settings JSON
    EXPECT_EQ(runCleanCommand({"zendrel", "clean"}), 2);
    EXPECT_EQ(runCleanCommand({"zendrel", "clean", "--help"}), 0);
}
