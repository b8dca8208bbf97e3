#include "render/tools/ToolPaths.h"

#include "app/core/AS.h"
#include "render/tools/Shell.h"

#include <QFileInfo>

namespace {
QString requestTool(const QString& id) {
    return AS::requestResource(id, AS::applicationSupportFolder(), AS::remotePathFor(id), false, nullptr);
}
} // namespace

void soxUt_init() {
    requestTool(soxUt_soxName);
    requestTool(soxUt_ffmpegName);
}

QString soxUt_getSoxPath() {
    return requestTool(soxUt_soxName);
}

QString soxUt_getFFMpegPath() {
    return requestTool(soxUt_ffmpegName);
}

QString soxUt_getFFProbePath() {
    const QFileInfo item(soxUt_getFFMpegPath());
    // Unresolved, the path still names where ffprobe was expected, for the alert of the runner.
    QString real = item.canonicalFilePath();
    if (real.isEmpty()) real = item.absoluteFilePath();
    return QFileInfo(real).absolutePath() + "/ffprobe";
}

QString soxUt_runSox(const QStringList& arguments) {
    return shell(soxUt_getSoxPath(), arguments);
}

QString soxUt_runFFMpeg(const QStringList& arguments) {
    return shell(soxUt_getFFMpegPath(), arguments);
}
