#include "app/core/ASCommands.h"

#include "render/tools/ProcessRunner.h"

QStringList asCmd_curlDownload(const QString& remotePath, const QString& localPath) {
    return {"-f", "-L", "-o", localPath, remotePath};
}

QStringList asCmd_curlProbe(const QString& url) {
    return {"-s", "-I", "--max-time", "10", url};
}

QStringList asCmd_unzip(const QString& archivePath, const QString& folder) {
    return {"-o", "-q", archivePath, "-d", folder};
}

int asCmd_run(const QString& program, const QStringList& arguments) {
    ProcessRequest request{
        .program = program, .arguments = arguments, .errors = ProcessErrors::discard, .keepOutput = false};
    request.label = "asCmd_run";
    const ProcessResult result = runProcess(request);
    if (!result.finished || result.crashed) return -1;
    return result.exitCode;
}
