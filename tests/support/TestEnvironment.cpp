#include "support/TestEnvironment.h"

#include <QByteArray>
#include <QDir>
#include <QTemporaryDir>

#include <cstdlib>

namespace {
QString& homePath() {
    static QString path;
    return path;
}
} // namespace

namespace testenv {

void isolateUserFolders() {
    static QTemporaryDir dir(QDir::tempPath() + "/zendrel-test-home-XXXXXX");
    homePath() = dir.path();
    const QByteArray h = dir.path().toUtf8();
    setenv("HOME", h.constData(), 1);
    setenv("XDG_CONFIG_HOME", (h + "/.config").constData(), 1);
    setenv("XDG_DATA_HOME", (h + "/.local/share").constData(), 1);
    setenv("XDG_CACHE_HOME", (h + "/.cache").constData(), 1);
    setenv("XDG_DOCUMENTS_DIR", (h + "/Documents").constData(), 1);
    QDir().mkpath(dir.path() + "/Documents");
}

QString home() { return homePath(); }

} // namespace testenv
