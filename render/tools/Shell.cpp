#include "render/tools/Shell.h"

#include "foundation/Interaction.h"
#include "foundation/Log.h"

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStringDecoder>

namespace {

QString quotedList(const QStringList& arguments) {
    QStringList quoted;
    for (const QString& argument : arguments)
        quoted << "\"" + argument + "\"";
    return "[" + quoted.join(", ") + "]";
}

void logStart(const QString& launchPath, const QStringList& arguments, bool ignoreOut) {
    qxLog("shell (launchPath: " + launchPath + ", arguments: " + quotedList(arguments) +
          ", ignoreOut: " + (ignoreOut ? "true" : "false") + ")");
    qxLog((QStringList{launchPath} + arguments).join(u' '));
}

bool started(QProcess& process, const QString& launchPath, const QStringList& arguments) {
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(launchPath, arguments, QIODevice::ReadOnly);
    if (process.waitForStarted(-1)) return true;
    qxLog("shell: cannot start " + launchPath + ": " + process.errorString());
    return false;
}

// Drains the pipe until the program closes it; waitForReadyRead gives false only then.
QByteArray readToEnd(QProcess& process) {
    QByteArray bytes;
    while (process.waitForReadyRead(-1))
        bytes += process.readAllStandardOutput();
    process.waitForFinished(-1);
    bytes += process.readAllStandardOutput();
    return bytes;
}

// "" when the bytes are not UTF-8.
QString decoded(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(bytes);
    if (decoder.hasError()) return {};
    return text;
}

void dropLastCharacter(QString& text) {
    if (text.isEmpty()) return;
    const bool pair =
        text.size() >= 2 && text.back().isLowSurrogate() && text[text.size() - 2].isHighSurrogate();
    text.chop(pair ? 2 : 1);
}

bool isCommandName(const QString& command) {
    // Anchored at both ends: a plain "$" would also accept a trailing newline.
    static const QRegularExpression name(
        QRegularExpression::anchoredPattern("[A-Za-z0-9_.+][A-Za-z0-9_.+-]*"));
    return name.match(command).hasMatch();
}

} // namespace

bool launchPathOrAlert(const QString& launchPath) {
    if (!launchPath.isEmpty() && QFileInfo::exists(launchPath)) return true;
    Warning("Warning",
            "Could not find " + launchPath +
                ".\nIf you see this message it means that the developer did some strange stuff...");
    return false;
}

QString shell(const QString& launchPath, const QStringList& arguments, bool ignoreOut) {
    if (!launchPathOrAlert(launchPath)) return {};
    logStart(launchPath, arguments, ignoreOut);
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    if (ignoreOut) process.setStandardOutputFile(QProcess::nullDevice());
    if (!started(process, launchPath, arguments)) return {};
    if (ignoreOut) {
        process.waitForFinished(-1);
        return {};
    }
    QString text = decoded(readToEnd(process));
    dropLastCharacter(text);
    return text;
}

QString shell2(const QString& launchPath, const QStringList& arguments) {
    if (!launchPathOrAlert(launchPath)) return {};
    logStart(launchPath, arguments, false);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    if (!started(process, launchPath, arguments)) return {};
    return decoded(readToEnd(process));
}

QString bash(const QString& command, const QStringList& arguments) {
    if (!isCommandName(command)) {
        qxLog("bash: refused command name \"" + command + "\"");
        return {};
    }
    const QString path = shell("/bin/bash", {"-l", "-c", "which " + command}).trimmed();
    return shell(path, arguments);
}

QString fu_executeShell(const QString& launchPath) {
    return shell(launchPath, {});
}
