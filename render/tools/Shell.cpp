#include "render/tools/Shell.h"

#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "render/tools/ProcessRunner.h"

#include <QFileInfo>
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
    ProcessRequest request{.program = launchPath, .arguments = arguments, .keepOutput = !ignoreOut};
    request.logVector = true;
    request.label = "shell";
    const ProcessResult result = runProcess(request);
    if (ignoreOut || !result.started) return {};
    QString text = decoded(result.output);
    dropLastCharacter(text);
    return text;
}

QString shell2(const QString& launchPath, const QStringList& arguments) {
    if (!launchPathOrAlert(launchPath)) return {};
    logStart(launchPath, arguments, false);
    ProcessRequest request{.program = launchPath, .arguments = arguments, .errors = ProcessErrors::merge};
    request.logVector = true;
    request.label = "shell";
    return decoded(runProcess(request).output);
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
