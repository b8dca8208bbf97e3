#include "recording/MediaProbe.h"

#include "foundation/Log.h"
#include "render/tools/ToolPaths.h"

#include <QProcess>

namespace {
constexpr int kProbeTimeoutMs = 20000;
}

QStringList mediaProbeArguments(const QString& path) {
    return {"-v",  "error",       "-print_format", "json", "-show_format", "-show_streams", "-select_streams",
            "a:0", "file:" + path};
}

QByteArray runMediaProbe(const QString& path) {
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(soxUt_getFFProbePath(), mediaProbeArguments(path));
    if (!process.waitForStarted() || !process.waitForFinished(kProbeTimeoutMs)) {
        qxLog("runMediaProbe: no answer for " + path);
        return {};
    }
    // The exit status says nothing useful here: an unreadable file simply gives no audio stream.
    return process.readAllStandardOutput();
}
