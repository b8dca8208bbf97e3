#pragma once
// The store of external components (sound tool, media converter, tag editor, self-update helper). They
// live in a per-user folder, <generic data location>/Zendrel/ZendrelUtils/<id>, are put there from the
// installed packages where possible (InstalledComponents.h) and are otherwise fetched once from
// <repository base>/ZendrelUtils/<id>.zip and unzipped in place. Nothing here detects a failed fetch:
// the item simply stays missing and the next request tries again.
//
// All statics, callable from any thread. Downloads block their caller and run one at a time; the
// progress callback is called on the main thread by the "ApplicationSupport.idle" timer, so a download
// started on the main thread reports nothing until it has ended.

#include "app/core/ASItem.h"

#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

using ASProgressCallback = std::function<void(int64_t bytesSoFar)>;

class AS {
public:
    static inline const QString applicationSupportSubfolder = "ZendrelUtils";

    // <generic data location>/Zendrel/ZendrelUtils, without a trailing "/".
    static QString applicationSupportFolder();
    // The folder + "/" + id, with a leading "file://" stripped and "%20" turned into blanks.
    static QString getItemInASFolder(const QString& id);
    // The preference "AS.repositoryBase" without a trailing "/"; "" when none is configured.
    static QString repositoryBase();
    // <repository base>/ZendrelUtils/<id>.zip
    static QString remotePathFor(const QString& id);
    static ASItem itemFor(const QString& id);

    // Fetches remotePath with curl into localPath's folder; a remote ending in "zip" goes to
    // <localPath>.zip and, with autoDezip, is unzipped into that folder and deleted.
    static void httpDownload(const QString& remotePath, const QString& localPath, bool autoDezip,
                             const ASProgressCallback& progressCallback);
    // Makes sure <localFolder>/<id> is there (the components folder when localFolder is ""), fetching
    // it when missing or when forceDownload is set; its path, whether or not the fetch worked.
    static QString requestResource(const QString& id, const QString& localFolder, const QString& remotePath,
                                   bool forceDownload, const ASProgressCallback& progressCallback);
    // Fetches what is missing of the list behind a "please wait" window; with no connection it alerts
    // and ends the process. True when every item is in place afterwards.
    static bool preload(const std::vector<ASItem>& list, const ASProgressCallback& progressCallback);

    // Puts in place what installed packages provide, then gives the items whose file is still absent.
    static std::vector<ASItem> missingItems(const std::vector<ASItem>& list);
    // True when connected; otherwise alerts on the main thread and ends the process with status 0.
    static bool connectedOrQuit();

    // Timer tick: passes the size of the growing download to the progress callback.
    static void idle();

    // Makes the store the tools layer's locator: each tool is the store's item, fetched when missing.
    static void installToolLocator();
};
