#include "render/tools/ToolPaths.h"

#include "render/tools/Shell.h"

#include <QFileInfo>
#include <QStandardPaths>

namespace {
ToolLocator& installedLocator() {
    static ToolLocator locator;
    return locator;
}
} // namespace

void soxUt_setToolLocator(ToolLocator locator) {
    installedLocator() = std::move(locator);
}

QString soxUt_searchPathLocator(const QString& id) {
    if (id == soxUt_soxName) return QStandardPaths::findExecutable("sox");
    if (id == soxUt_ffmpegName) return QStandardPaths::findExecutable("ffmpeg");
    if (id == soxUt_kid3Name) return QStandardPaths::findExecutable("kid3-cli");
    return {};
}

QString soxUt_toolPath(const QString& id) {
    const ToolLocator& locator = installedLocator();
    return locator ? locator(id) : soxUt_searchPathLocator(id);
}

void soxUt_init() {
    soxUt_toolPath(soxUt_soxName);
    soxUt_toolPath(soxUt_ffmpegName);
}

QString soxUt_getSoxPath() {
    return soxUt_toolPath(soxUt_soxName);
}

QString soxUt_getFFMpegPath() {
    return soxUt_toolPath(soxUt_ffmpegName);
}

QString soxUt_getFFProbePath() {
    const QFileInfo item(soxUt_getFFMpegPath());
    // Unresolved, the path still names where ffprobe was expected, for the alert of the runner.
    QString real = item.canonicalFilePath();
    if (real.isEmpty()) real = item.absoluteFilePath();
    return QFileInfo(real).absolutePath() + "/ffprobe";
}

QString soxUt_getKid3Path() {
    return soxUt_toolPath(soxUt_kid3Name);
}

QString soxUt_runSox(const QStringList& arguments) {
    return shell(soxUt_getSoxPath(), arguments);
}

QString soxUt_runFFMpeg(const QStringList& arguments) {
    return shell(soxUt_getFFMpegPath(), arguments);
}
