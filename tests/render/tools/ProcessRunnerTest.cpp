// The one runner every external program goes through.

#include "render/tools/ProcessRunner.h"

#include <gtest/gtest.h>

namespace {
ProcessRequest sh(const QString& script) {
    return ProcessRequest{.program = "/bin/sh", .arguments = {"-c", script}};
}
} // namespace

TEST(ProcessRunner, ReportsOutputAndExitCodeWithoutJudgingThemOrThatNothingStarted) {
    const ProcessResult result = runProcess(sh("printf out; exit 3"));
    EXPECT_TRUE(result.started);
    EXPECT_TRUE(result.finished);
    EXPECT_FALSE(result.crashed);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, "out");
    const ProcessResult missing = runProcess(ProcessRequest{.program = "/nonexistent/tool", .arguments = {}});
    EXPECT_FALSE(missing.started);
    EXPECT_FALSE(missing.finished);
    EXPECT_EQ(missing.exitCode, -1);
}

TEST(ProcessRunner, StandardErrorGoesWhereTheCallerSays) {
    auto request = sh("echo a; echo b >&2");
    request.errors = ProcessErrors::merge;
    EXPECT_EQ(runProcess(request).output, "a\nb\n");
    request.errors = ProcessErrors::discard;
    EXPECT_EQ(runProcess(request).output, "a\n");
    request.keepOutput = false;
    const ProcessResult silent = runProcess(request);
    EXPECT_TRUE(silent.finished);
    EXPECT_TRUE(silent.output.isEmpty());
}

TEST(ProcessRunner, StreamsOutputAsItComesAndReadsNoInput) {
    auto request = sh("cat; echo first; sleep 0.2; echo second");
    QByteArray streamed;
    int chunks = 0;
    request.onOutput = [&](const QByteArray& chunk) {
        streamed += chunk;
        ++chunks;
    };
    const ProcessResult result = runProcess(request);
    EXPECT_TRUE(result.finished);
    EXPECT_EQ(streamed, "first\nsecond\n");
    EXPECT_GE(chunks, 2);
    EXPECT_TRUE(result.output.isEmpty());
}

// More than the pipe and the runner's backlog hold, so feeding and reading must take turns.
TEST(ProcessRunner, FeedsStandardInputPieceByPieceUntilAnEmptyOne) {
    auto request = sh("wc -c");
    int pulled = 0;
    request.input = [&pulled] { return pulled++ < 64 ? QByteArray(65536, 'x') : QByteArray(); };
    EXPECT_EQ(runProcess(request).output.trimmed(), QByteArray::number(64 * 65536));
    EXPECT_EQ(pulled, 65) << "nothing pulled after the end";
}

TEST(ProcessRunner, KillsAProgramPastItsTimeoutOrWhenCancelled) {
    auto timed = ProcessRequest{.program = "/bin/sleep", .arguments = {"30"}, .timeoutMs = 200};
    const ProcessResult late = runProcess(timed);
    EXPECT_TRUE(late.started);
    EXPECT_FALSE(late.finished);

    for (const bool keepOutput : {true, false}) {
        int asked = 0;
        auto request = ProcessRequest{.program = "/bin/sleep", .arguments = {"30"}, .keepOutput = keepOutput};
        request.cancelled = [&asked] { return ++asked >= 2; };
        EXPECT_FALSE(runProcess(request).finished) << keepOutput;
        EXPECT_EQ(asked, 2) << keepOutput;
    }

    // A job's scope reaches the runs of the helpers it calls; a request's own test comes first.
    const ProcessCancelScope scope([] { return true; });
    EXPECT_FALSE(runProcess({.program = "/bin/sleep", .arguments = {"30"}}).finished);
    auto ownTest = ProcessRequest{.program = "/bin/sleep", .arguments = {"0.3"}};
    ownTest.cancelled = [] { return false; };
    EXPECT_TRUE(runProcess(ownTest).finished);
}
