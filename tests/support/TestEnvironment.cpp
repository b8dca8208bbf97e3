#include "support/TestEnvironment.h"

#include "project/model/AEAssetDB.h"
#include "project/model/AEIngest.h"

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

QString home() {
    return homePath();
}

QString storeWorkFolder() {
    return homePath() + "/Store Work Folder/";
}

void useStoreWorkFolder() {
    AEIngest::workFolder = storeWorkFolder();
    AEIngest ingest(storeWorkFolder() + "AssetIngests");
    AEAssetDB::ingestFolder(); // fixes the store's folder on first use
}

} // namespace testenv
