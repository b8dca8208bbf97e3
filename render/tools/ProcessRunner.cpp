#include "render/tools/ProcessRunner.h"

#include "foundation/Log.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <algorithm>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int kCancelPollMs = 100;
// Bytes waiting for a fed program's standard input before the next piece is pulled.
constexpr qint64 kInputBacklog = 1 << 20;

thread_local std::function<bool()> threadCancelled;

void configure(QProcess& process, const ProcessRequest& request) {
    if (!request.input) process.setStandardInputFile(QProcess::nullDevice());
    // A fed program otherwise finds 64 KB waiting while the next piece is made: a larger pipe keeps an
    // encoder busy through that. Set from the child, whose standard input is the pipe by then.
    else
        process.setChildProcessModifier([] { ::fcntl(STDIN_FILENO, F_SETPIPE_SZ, int{kInputBacklog}); });
    switch (request.errors) {
    case ProcessErrors::forward:
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        break;
    case ProcessErrors::merge:
        process.setProcessChannelMode(QProcess::MergedChannels);
        break;
    case ProcessErrors::discard:
        process.setStandardErrorFile(QProcess::nullDevice());
        break;
    }
    if (!request.keepOutput) process.setStandardOutputFile(QProcess::nullDevice());
}

void take(QProcess& process, const ProcessRequest& request, ProcessResult& result) {
    const QByteArray chunk = process.readAllStandardOutput();
    if (chunk.isEmpty()) return;
    if (request.onOutput)
        request.onOutput(chunk);
    else
        result.output += chunk;
}

// Pulls pieces until enough wait in the pipe; the empty one closes it.
void feed(QProcess& process, const ProcessRequest& request, bool& feeding) {
    while (feeding && process.bytesToWrite() < kInputBacklog) {
        const QByteArray piece = request.input();
        if (piece.isEmpty()) {
            process.closeWriteChannel();
            feeding = false;
        } else {
            process.write(piece);
        }
    }
}

// How long the next wait may last: until the deadline, and short enough to notice a cancellation.
int nextWaitMs(const QDeadlineTimer& deadline, bool polling) {
    const qint64 left = deadline.remainingTime();
    if (!polling) return static_cast<int>(left);
    return left < 0 ? kCancelPollMs : static_cast<int>(std::min<qint64>(left, kCancelPollMs));
}

} // namespace

ProcessCancelScope::ProcessCancelScope(std::function<bool()> cancelled)
    : outer_(std::exchange(threadCancelled, std::move(cancelled))) {}

ProcessCancelScope::~ProcessCancelScope() {
    threadCancelled = std::move(outer_);
}

ProcessResult runProcess(const ProcessRequest& request) {
    ProcessResult result;
    if (request.logVector) qxLog((QStringList{request.program} + request.arguments).join(u' '));
    QProcess process;
    configure(process, request);
    bool feeding = static_cast<bool>(request.input);
    process.start(request.program, request.arguments, feeding ? QIODevice::ReadWrite : QIODevice::ReadOnly);
    if (!process.waitForStarted(-1)) {
        qxLog(request.label + ": cannot start " + request.program + ": " + process.errorString());
        return result;
    }
    result.started = true;
    const QDeadlineTimer deadline(request.timeoutMs < 0 ? QDeadlineTimer::Forever
                                                        : QDeadlineTimer(request.timeoutMs));
    const std::function<bool()> cancelled = request.cancelled ? request.cancelled : threadCancelled;
    const bool polling = static_cast<bool>(cancelled);
    // Reading as the output comes keeps a talkative program from blocking on a full pipe.
    while (process.state() != QProcess::NotRunning) {
        bool ready = false;
        if (feeding) {
            feed(process, request, feeding);
            ready = process.waitForBytesWritten(nextWaitMs(deadline, true));
            if (request.keepOutput) take(process, request, result);
        } else {
            const int waitMs = nextWaitMs(deadline, polling);
            ready = request.keepOutput ? process.waitForReadyRead(waitMs) : process.waitForFinished(waitMs);
            if (ready && request.keepOutput) take(process, request, result);
        }
        if (ready || process.state() == QProcess::NotRunning) continue;
        if (deadline.hasExpired() || (polling && cancelled())) {
            qxLog(request.label + ": stopped " + request.program);
            process.kill();
            process.waitForFinished(-1);
            return result;
        }
    }
    process.waitForFinished(-1);
    if (request.keepOutput) take(process, request, result);
    result.finished = true;
    result.crashed = process.exitStatus() != QProcess::NormalExit;
    if (!result.crashed) result.exitCode = process.exitCode();
    return result;
}
