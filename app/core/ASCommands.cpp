#include "app/core/ASCommands.h"

#include "foundation/Log.h"

#include <QProcess>

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
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForStarted()) {
        qxLog("Cannot start " + program + ": " + process.errorString());
        return -1;
    }
    process.waitForFinished(-1);
    if (process.exitStatus() != QProcess::NormalExit) return -1;
    return process.exitCode();
}
