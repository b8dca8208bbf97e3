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

TEST_F(ShellTest, ShellDropsTheLastCharacterAndStandardErrorShell2MergesAndKeepsAll) {
    EXPECT_EQ(shell("/bin/echo", {"a  b", "c"}), "a  b c");
    EXPECT_EQ(shell(sh, {"-c", "printf 'out'; printf 'err' >&2"}), "ou");
    EXPECT_EQ(shell(sh, {"-c", "printf 'é\\n'"}), "é");
    EXPECT_EQ(shell(sh, {"-c", "true"}), "");
    EXPECT_EQ(shell(sh, {"-c", "printf 'ab\\377\\n'"}), "") << "not UTF-8";
    EXPECT_EQ(shell2(sh, {"-c", "printf 'out\\n'; printf 'err\\n' >&2"}), "out\nerr\n");
    // Several megabytes: far more than a pipe holds, so the reader must keep draining.
    const QString text = shell("/usr/bin/seq", {"1", "600000"});
    EXPECT_TRUE(text.startsWith("1\n2\n3\n"));
    EXPECT_EQ(text.count(u'\n'), 599999);
    EXPECT_EQ(shell2("/usr/bin/seq", {"1", "600000"}), text + "\n");
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

TEST_F(ShellTest, AMissingProgramRaisesTheWarningAndOneThatCannotRunGivesNothing) {
    const QString missing = path("no such tool");
    EXPECT_EQ(shell(missing, {"x"}), "");
    EXPECT_EQ(shell2(missing, {"x"}), "");
    EXPECT_EQ(fu_executeShell(missing), "");
    const QString expected = "alert: Warning | Could not find " + missing + missingAlertTail;
    EXPECT_EQ(transcript(), QStringList({expected, expected, expected}));
    EXPECT_EQ(shell(bytes("not-a-program", "hello\n"), {}), "");
    EXPECT_EQ(transcript().size(), 3);
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

namespace {
// What a streaming runner delivered on its worker thread, and how often it said it ended.
struct Streamed {
    std::mutex m;
    QString text;
    std::atomic<int> ends{0};
    ShellOutputCallback chunk() {
        return [this](const QString& c) {
            std::lock_guard lock(m);
            text += c;
        };
    }
    ShellEndCallback end() {
        return [this] { ++ends; };
    }
    bool ended() const {
        return testenv::waitUntil([this] { return ends.load() == 1; }, 20000);
    }
    QString got() {
        std::lock_guard lock(m);
        return text;
    }
};
} // namespace

TEST_F(ShellTest, StreamingRunnersDeliverEveryChunkAndEndOnce) {
    Streamed all;
    shellC("/usr/bin/seq", {"1", "200000"}, all.chunk(), all.end());
    ASSERT_TRUE(all.ended());
    EXPECT_EQ(all.got(), shell2("/usr/bin/seq", {"1", "200000"}));

    Streamed download;
    QXShell runner(sh, {"-c", "printf 'one '; sleep 0.1; printf 'two'"}, download.chunk(), download.end());
    runner.perform();
    ASSERT_TRUE(download.ended());
    EXPECT_EQ(download.got(), "one two");
}

TEST_F(ShellTest, StreamingRunnerOfAMissingProgramWarnsAndStillEnds) {
    Streamed none;
    shellC(path("gone"), {}, none.chunk(), none.end());
    ASSERT_TRUE(none.ended());
    EXPECT_EQ(none.got(), "");
    EXPECT_EQ(transcript(),
              QStringList({"alert: Warning | Could not find " + path("gone") + missingAlertTail}));
}
