#include "render/tools/ShellAsync.h"

#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "render/tools/Shell.h"

#include <QProcess>
#include <QStringDecoder>
#include <utility>

namespace {

void stream(const QString& launchPath, const QStringList& arguments, const ShellOutputCallback& output) {
    if (!launchPathOrAlert(launchPath)) return;
    qxLog("shellC (launchPath: " + launchPath + ", arguments: " + arguments.join(' ') + ")");
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(launchPath, arguments, QIODevice::ReadOnly);
    if (!process.waitForStarted(-1)) {
        qxLog("shellC: cannot start " + launchPath + ": " + process.errorString());
        return;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    auto deliver = [&] {
        const QString chunk = decoder(process.readAllStandardOutput());
        if (!chunk.isEmpty() && output) output(chunk);
    };
    while (process.waitForReadyRead(-1))
        deliver();
    process.waitForFinished(-1);
    deliver();
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
