#include "project/model/AEIngest.h"

#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Hallard.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "foundation/StrUt.h"
#include "recording/MediaCheck.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

QString AEIngest::workFolder;
QString AEIngest::ingestPath;

namespace {
const QString kSafeChars = "1234567890_-qwertyuiopasdfghjklzxcvbnmQWERTYUIOPASDFGHJKLZXCVBNM";
} // namespace

AEIngest::AEIngest(const QString& path) {
    fu_createFolder(path);
    ingestPath = path + "/";
}

QString AEIngest::documentsFolder() {
    QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (documents.startsWith("file://")) documents.remove(0, 7);
    while (documents.endsWith('/'))
        documents.chop(1);
    return documents;
}

QString AEIngest::getWorkFolder() {
    workFolder = prefs_getValueString("WorkingFolder", documentsFolder() + "/Zendrel/");
    qxLog("AEIngest.getWorkFolder " + workFolder);
    if (workFolder.isEmpty()) {
        workFolder =
            fu_selectFolder("Choose Working Folder", "Choose Working Folder", workFolder) + "/Zendrel";
        fu_createFolder(workFolder);
        workFolder += "/";
        prefs_setValueString("WorkingFolder", workFolder);
    }
    return workFolder;
}

QString AEIngest::savePath(const QString& path) {
    if (workFolder.isEmpty()) return path;
    return QString(path).replace(workFolder, kWorkFolderToken);
}

QString AEIngest::loadPath(const QString& path) {
    return QString(path).replace(kWorkFolderToken, workFolder);
}

bool AEIngest::isIngested(const QString& ingestedName) {
    return !ingestedName.isEmpty() && fu_fileExists(ingestPath + ingestedName);
}

QString AEIngest::ingestedName(const QString& originalFilePath, const QString& md5) {
    const QFileInfo info(originalFilePath);
    const QString ext = info.suffix();
    const QString fileName = info.fileName();
    const QString base = ext.isEmpty() ? fileName : fileName.left(fileName.size() - ext.size() - 1);
    return strUt_acceptChars(base, kSafeChars, "_") + "___" + md5.left(8) + "." + ext;
}

std::optional<QString> AEIngest::ingest(const QString& originalFilePath, const QString& knownMd5) {
    qxLog("AEIngest.ingest " + originalFilePath);
    if (!fu_fileExists(originalFilePath)) {
        qxLog("NNN!!!");
        return std::nullopt;
    }
    if (!fu_isRegularFile(originalFilePath)) {
        qxLog("AEIngest.ingest: not a regular file, nothing copied");
        return std::nullopt;
    }
    // One read both hashes and copies, into a pending file named once the digest is known. A file
    // already in the ingest folder, or one whose digest is known, needs no copy made while hashing.
    QString md5 = knownMd5;
    QString pending;
    if (md5.isEmpty() && !originalFilePath.contains(ingestPath)) {
        pending = ingestPath + ".pending-" + hallard_getNewId() + ".part";
        md5 = hallard_copyFileWithMd5(originalFilePath, pending);
        if (md5.isEmpty()) pending.clear();
    }
    if (md5.isEmpty()) md5 = hallard_fileMd5(originalFilePath);
    if (md5.isEmpty()) {
        qxLog("AEIngest.ingest: cannot be read, nothing copied");
        return std::nullopt;
    }
    const QString name = ingestedName(originalFilePath, md5);
    const QString suffix = name.mid(name.lastIndexOf("___"));
    qxLog("1");
    if (originalFilePath.contains(suffix)) {
        qxLog("2");
        if (originalFilePath.contains(ingestPath)) {
            qxLog("3");
            if (!pending.isEmpty()) QFile::remove(pending);
            return originalFilePath;
        }
    }
    const QString target = ingestPath + name;
    // A copy already there is fine (same content, same name); a copy that could not be made is none.
    if (pending.isEmpty()) {
        if (!fu_copyFile(originalFilePath, target) && !fu_fileExists(target)) return std::nullopt;
    } else if (fu_fileExists(target) || !QFile::rename(pending, target)) {
        QFile::remove(pending);
        if (!fu_fileExists(target)) return std::nullopt;
    }
    return target;
}

std::optional<QString> AEIngest::ingestMedia(const QString& originalFilePath, const QString& knownMd5) {
    if (const auto refusal = mediaRefusal(originalFilePath)) {
        qxLog("AEIngest.ingestMedia: " + mediaRefusalText(originalFilePath, *refusal) + " Nothing copied.");
        return std::nullopt;
    }
    return ingest(originalFilePath, knownMd5);
}

void AEIngest::asyncIngest(const QString& originalFilePath,
                           std::function<void(const QString&, const std::optional<QString>&)> callback,
                           const QString& knownMd5) {
    qxLog("AEIngest.asyncIngest");
    if (originalFilePath.isEmpty()) return;
    qxLog("asyncIngest (originalFilePath: " + originalFilePath + ")");
    Queue::execute([originalFilePath, knownMd5, callback = std::move(callback)] {
        const auto ingested = ingestMedia(originalFilePath, knownMd5);
        if (callback) callback(originalFilePath, ingested);
    });
}
