#pragma once
// The one place an external program is started. The program gets its arguments as a list (no shell
// parses them) and the null device for standard input, so a tool that asks a question reads end of
// file, unless the caller feeds it. The caller chooses where standard error goes, whether standard output is
// kept or streamed, how long to wait and when to give up; the exit status is reported, not judged. Any
// thread; blocks until the program has ended or was killed.

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>

enum class ProcessErrors {
    forward, // to our standard error
    merge,   // into the standard output pipe
    discard,
};

struct ProcessRequest {
    QString program;
    QStringList arguments;
    ProcessErrors errors = ProcessErrors::forward;
    // False sends standard output to the null device.
    bool keepOutput = true;
    // Each piece of standard output as it comes; set, the result's output stays empty.
    std::function<void(const QByteArray& chunk)> onOutput = {};
    // Set, standard input is a pipe fed with what this returns, pulled as the program takes it; an
    // empty piece closes it.
    std::function<QByteArray()> input = {};
    // Milliseconds from the start; negative waits as long as it takes. A program past it is killed.
    int timeoutMs = -1;
    // Asked a few times a second while the program runs; true kills it.
    std::function<bool()> cancelled = {};
    // Logs the program and its vector before the start.
    bool logVector = false;
    // Names the caller in the log lines of a failed start or a kill.
    QString label = "process";
};

struct ProcessResult {
    bool started = false;
    // Ended on its own: not killed for the timeout or a cancellation.
    bool finished = false;
    bool crashed = false;
    int exitCode = -1;
    QByteArray output;
};

ProcessResult runProcess(const ProcessRequest& request);

// While one lives, every program this thread starts without a cancellation test of its own is killed
// once `cancelled` answers true: a long job cancels the tool runs deep inside the helpers it calls
// without each of them taking a flag. Scopes nest; the inner one holds.
class ProcessCancelScope {
public:
    explicit ProcessCancelScope(std::function<bool()> cancelled);
    ~ProcessCancelScope();
    ProcessCancelScope(const ProcessCancelScope&) = delete;
    ProcessCancelScope& operator=(const ProcessCancelScope&) = delete;

private:
    std::function<bool()> outer_;
};
