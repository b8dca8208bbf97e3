// The process runners: what comes back, what is dropped, and what never reaches a shell.

#include "render/tools/Shell.h"

#include "render/tools/ShellAsync.h"
#include "render/tools/ToolFixture.h"
#include "support/EventWait.h"

#include <QDir>
#include <QFileInfo>
#include <atomic>

namespace {
const QString sh = "/bin/sh";
const QString missingAlertTail =
    ".\nIf you see this message it means that the developer did some strange stuff...";
} // namespace

class ShellTest : public ToolFixture {};

TEST_F(ShellTest, ShellReturnsStandardOutputWithoutItsLastCharacterAndLeavesStandardErrorOut) {
    EXPECT_EQ(shell("/bin/echo", {"a  b", "c"}), "a  b c");
    EXPECT_EQ(shell(sh, {"-c", "printf 'out'; printf 'err' >&2"}), "ou");
    EXPECT_EQ(shell(sh, {"-c", "printf 'é\\n'"}), "é");
    EXPECT_EQ(shell(sh, {"-c", "true"}), "");
    // Not UTF-8.
    EXPECT_EQ(shell(sh, {"-c", "printf 'ab\\377\\n'"}), "");
}

TEST_F(ShellTest, Shell2MergesBothStreamsAndKeepsEverything) {
    EXPECT_EQ(shell2(sh, {"-c", "printf 'out\\n'; printf 'err\\n' >&2"}), "out\nerr\n");
    EXPECT_EQ(shell2("/bin/echo", {"x"}), "x\n");
}

TEST_F(ShellTest, LargeOutputIsReadToTheEnd) {
    // Several megabytes: far more than a pipe holds, so the reader must keep draining.
    const QString text = shell("/usr/bin/seq", {"1", "600000"});
    EXPECT_TRUE(text.startsWith("1\n2\n3\n"));
    EXPECT_TRUE(text.endsWith("\n600000"));
    EXPECT_EQ(text.count(u'\n'), 599999);
    EXPECT_EQ(shell2("/usr/bin/seq", {"1", "600000"}).size(), text.size() + 1);
}

TEST_F(ShellTest, IgnoringOutputStillWaitsForTheProgram) {
    const QString marker = path("marker");
    EXPECT_EQ(shell(sh, {"-c", "sleep 0.3; echo hi; : > \"$0\"", marker}, true), "");
    EXPECT_TRUE(QFileInfo::exists(marker));
}

TEST_F(ShellTest, ArgumentsReachTheProgramUntouched) {
    const QStringList tricky{"$(touch " + path("pwned") + ")", "a;b", "\"q\" 'r'", "%20", "-n", "*", "ü"};
    const QString echoed =
        shell(sh, QStringList{"-c", "for a in \"$@\"; do printf '%s|' \"$a\"; done; echo", "sh"} + tricky);
    EXPECT_EQ(echoed, tricky.join('|') + "|");
    EXPECT_FALSE(QFileInfo::exists(path("pwned")));
}

TEST_F(ShellTest, AMissingProgramRaisesTheWarningAndGivesNothing) {
    const QString missing = path("no such tool");
    EXPECT_EQ(shell(missing, {"x"}), "");
    EXPECT_EQ(shell2(missing, {"x"}), "");
    EXPECT_EQ(fu_executeShell(missing), "");
    const QString expected = "alert: Warning | Could not find " + missing + missingAlertTail;
    EXPECT_EQ(transcript(), QStringList({expected, expected, expected}));
}

TEST_F(ShellTest, AFileThatCannotRunGivesNothing) {
    QFile text(path("not-a-program"));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("hello\n");
    text.close();
    EXPECT_EQ(shell(text.fileName(), {}), "");
    EXPECT_TRUE(transcript().isEmpty());
}

TEST_F(ShellTest, BashFindsProgramsOnTheSearchPath) {
    EXPECT_EQ(bash("echo", {"a b", "$HOME"}), "a b $HOME");
    EXPECT_EQ(bash("seq", {"3"}), "1\n2\n3");
    EXPECT_EQ(fu_executeShell("/bin/pwd"), QDir::currentPath());
}

TEST_F(ShellTest, BashRefusesNamesAShellWouldInterpret) {
    const QString marker = path("ran");
    for (const QString& name :
         {"echo;touch " + marker, "$(touch " + marker + ")", QString("a b"), QString("-v"), QString(""),
          QString("echo\ntouch ") + marker, QString("`id`"), QString("../x"), QString("echo\n")}) {
        EXPECT_EQ(bash(name, {}), "") << name.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(marker));
    EXPECT_TRUE(transcript().isEmpty());
    // Accepted spellings, found or not.
    EXPECT_EQ(bash("g++-no-such.tool_1", {}), "");
    EXPECT_EQ(transcript().size(), 1); // the missing-program warning for an empty path
}

TEST_F(ShellTest, StreamingRunnersDeliverEveryChunkAndEndOnce) {
    std::mutex m;
    QString got;
    std::atomic<int> ends{0};
    shellC(
        "/usr/bin/seq", {"1", "200000"},
        [&](const QString& chunk) {
            std::lock_guard lock(m);
            got += chunk;
        },
        [&] { ++ends; });
    ASSERT_TRUE(testenv::waitUntil([&] { return ends.load() == 1; }, 20000));
    {
        std::lock_guard lock(m);
        EXPECT_EQ(got, shell2("/usr/bin/seq", {"1", "200000"}));
    }

    QString streamed;
    std::atomic<bool> ended{false};
    QXShell download(
        sh, {"-c", "printf 'one '; sleep 0.1; printf 'two'"},
        [&](const QString& chunk) {
            std::lock_guard lock(m);
            streamed += chunk;
        },
        [&] { ended = true; });
    download.perform();
    ASSERT_TRUE(testenv::waitUntil([&] { return ended.load(); }, 10000));
    std::lock_guard lock(m);
    EXPECT_EQ(streamed, "one two");
}

TEST_F(ShellTest, StreamingRunnerOfAMissingProgramWarnsAndStillEnds) {
    std::atomic<bool> ended{false};
    std::atomic<int> chunks{0};
    shellC(
        path("gone"), {}, [&](const QString&) { ++chunks; }, [&] { ended = true; });
    ASSERT_TRUE(testenv::waitUntil([&] { return ended.load(); }, 5000));
    EXPECT_EQ(chunks.load(), 0);
    EXPECT_EQ(transcript(),
              QStringList({"alert: Warning | Could not find " + path("gone") + missingAlertTail}));
}
