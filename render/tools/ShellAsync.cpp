#include "render/tools/ShellAsync.h"

#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "render/tools/ProcessRunner.h"
#include "render/tools/Shell.h"

#include <QStringDecoder>
#include <utility>

namespace {

void stream(const QString& launchPath, const QStringList& arguments, const ShellOutputCallback& output) {
    if (!launchPathOrAlert(launchPath)) return;
    qxLog("shellC (launchPath: " + launchPath + ", arguments: " + arguments.join(' ') + ")");
    QStringDecoder decoder(QStringDecoder::Utf8);
    ProcessRequest request{.program = launchPath, .arguments = arguments};
    request.onOutput = [&](const QByteArray& bytes) {
        const QString chunk = decoder(bytes);
        if (!chunk.isEmpty() && output) output(chunk);
    };
    request.label = "shellC";
    runProcess(request);
}

void runInBackground(QString launchPath, QStringList arguments, ShellOutputCallback output,
                     ShellEndCallback end) {
    Queue::execute([launchPath = std::move(launchPath), arguments = std::move(arguments),
                    output = std::move(output), end = std::move(end)] {
        stream(launchPath, arguments, output);
        if (end) end();
    });
}

} // namespace

void shellC(const QString& launchPath, const QStringList& arguments, ShellOutputCallback runningCallback,
            ShellEndCallback terminationCallback) {
    runInBackground(launchPath, arguments, std::move(runningCallback), std::move(terminationCallback));
}

QXShell::QXShell(QString launchPath, QStringList arguments, ShellOutputCallback outputCallback,
                 ShellEndCallback endCallback)
    : launchPath_(std::move(launchPath)), arguments_(std::move(arguments)),
      outputCallback_(std::move(outputCallback)), endCallback_(std::move(endCallback)) {}

void QXShell::perform() {
    runInBackground(launchPath_, arguments_, outputCallback_, endCallback_);
}
