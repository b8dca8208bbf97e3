#include "app/core/AS.h"

#include "app/core/ASCommands.h"
#include "app/core/CheckConnection.h"
#include "app/core/InstalledComponents.h"
#include "app/core/ProcessExit.h"
#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "foundation/QXTimer.h"
#include "render/tools/ToolPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <memory>
#include <mutex>

namespace {

const QString idleTimerName = "ApplicationSupport.idle";
const double idleInterval = 0.25;

// What the idle tick reads while a download runs.
struct DownloadState {
    std::mutex mutex;
    QString localPath;
    ASProgressCallback progressCallback;
    std::shared_ptr<QXTimer> timer;
};

DownloadState& downloadState() {
    static DownloadState state;
    return state;
}

// Held for a whole download: the state above describes one download at a time.
std::mutex& downloadMutex() {
    static std::mutex m;
    return m;
}

// Held while a resource is checked and fetched, so two callers asking at once fetch it once.
std::mutex& resourceMutex() {
    static std::mutex m;
    return m;
}

QString cleanLocalPath(QString path) {
    if (path.startsWith("file://")) path.remove(0, 7);
    return path.replace("%20", " ");
}

} // namespace

QString AS::applicationSupportFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Zendrel/" +
           applicationSupportSubfolder;
}

QString AS::getItemInASFolder(const QString& id) {
    return cleanLocalPath(applicationSupportFolder() + "/" + id);
}

QString AS::repositoryBase() {
    QString base = prefs_getValueString("AS.repositoryBase", "");
    while (base.endsWith('/'))
        base.chop(1);
    return base;
}

QString AS::remotePathFor(const QString& id) {
    return repositoryBase() + "/" + applicationSupportSubfolder + "/" + id + ".zip";
}

ASItem AS::itemFor(const QString& id) {
    return {id, getItemInASFolder(id), remotePathFor(id)};
}

void AS::httpDownload(const QString& remotePath, const QString& localPath, bool autoDezip,
                      const ASProgressCallback& progressCallback) {
    qxLog("httpDownload: " + remotePath);
    std::lock_guard serial(downloadMutex());
    const QString target = cleanLocalPath(localPath);
    const QFileInfo targetInfo(target);
    const QString folder = targetInfo.absolutePath();
    qxLog("Get file path : " + folder);
    qxLog("Create Folder: " + folder);
    fu_createFolder(folder);
    // curl would write through a link to an installed tool (unzip replaces links by itself).
    if (targetInfo.isSymLink()) QFile::remove(target);

    const bool zipped = remotePath.endsWith("zip");
    const QString downloadPath = zipped ? folder + "/" + targetInfo.fileName() + ".zip" : target;
    qxLog("Remote Path: " + remotePath);
    qxLog("Download " + remotePath + " to " + downloadPath);

    DownloadState& state = downloadState();
    {
        std::lock_guard lock(state.mutex);
        state.localPath = downloadPath;
        state.progressCallback = progressCallback;
        state.timer = QXTimer::loop(idleTimerName, idleInterval, false, [] { AS::idle(); });
    }

    asCmd_run(asCmd_curlPath, asCmd_curlDownload(remotePath, downloadPath));
    if (autoDezip && zipped) {
        qxLog("Unzip");
        asCmd_run(asCmd_unzipPath, asCmd_unzip(downloadPath, folder));
        fu_deleteFile(downloadPath);
    }

    std::shared_ptr<QXTimer> timer;
    {
        std::lock_guard lock(state.mutex);
        timer = std::move(state.timer);
        state.localPath.clear();
        state.progressCallback = nullptr;
    }
    if (timer) timer->stop();
}

void AS::idle() {
    DownloadState& state = downloadState();
    QString path;
    ASProgressCallback callback;
    {
        std::lock_guard lock(state.mutex);
        path = state.localPath;
        callback = state.progressCallback;
    }
    if (callback && !path.isEmpty()) callback(fu_getFileSize(path));
}

QString AS::requestResource(const QString& id, const QString& localFolder, const QString& remotePath,
                            bool forceDownload, const ASProgressCallback& progressCallback) {
    qxLog("AS.requestResource: " + id);
    const QString folder = localFolder.isEmpty() ? applicationSupportFolder() : cleanLocalPath(localFolder);
    const ASItem item{id, folder + "/" + id, remotePath};
    std::lock_guard lock(resourceMutex());
    if (!forceDownload && provisionInstalledComponent(folder, id)) return item.localPath;
    if (!forceDownload && fu_fileExists(item.localPath)) return item.localPath;
    httpDownload(item.remotePath, item.localPath, true, progressCallback);
    return item.localPath;
}

std::vector<ASItem> AS::missingItems(const std::vector<ASItem>& list) {
    const QString folder = applicationSupportFolder();
    std::vector<ASItem> missing;
    for (const ASItem& item : list) {
        provisionInstalledComponent(folder, item.id);
        if (!fu_fileExists(getItemInASFolder(item.id))) missing.push_back(item);
    }
    return missing;
}

bool AS::connectedOrQuit() {
    if (CheckConnection::isConnected()) return true;
    XMain::execute([] {
        ih_alertOk("Internet connection not present",
                   "Warning: couldn't connect to the Internet to download required components, please check "
                   "network status. This app will quit.");
        processExit(0);
    });
    return false;
}

bool AS::preload(const std::vector<ASItem>& list, const ASProgressCallback& progressCallback) {
    qxLog("AS.preload");
    const std::vector<ASItem> missing = missingItems(list);
    qxLog("Downloads: " + QString::number(missing.size()));
    if (missing.empty()) return true;
    if (!connectedOrQuit()) return false;
    userInteraction()->showPleaseWait("Downloading...", "Downloading additional components. Please wait.");
    for (const ASItem& item : missing)
        httpDownload(item.remotePath, getItemInASFolder(item.id), true, progressCallback);
    userInteraction()->hidePleaseWait();
    return missingItems(missing).empty();
}

void AS::installToolLocator() {
    soxUt_setToolLocator([](const QString& id) {
        const QString item =
            requestResource(id, applicationSupportFolder(), remotePathFor(id), false, nullptr);
        // The tag editor's item is a bundle; the program sits inside it.
        return id == soxUt_kid3Name ? item + "/Contents/MacOS/kid3-cli" : item;
    });
}
