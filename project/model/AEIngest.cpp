#include "project/model/AEIngest.h"

#include "foundation/FileUtils.h"
#include "foundation/Hallard.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "foundation/StrUt.h"

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
    if (documents.startsWith("file://"))
        documents.remove(0, 7);
    while (documents.endsWith('/'))
        documents.chop(1);
    return documents;
}

QString AEIngest::getWorkFolder() {
    workFolder = prefs_getValueString("WorkingFolder", documentsFolder() + "/Zendrel/");
    qxLog("AEIngest.getWorkFolder " + workFolder);
    if (workFolder.isEmpty()) {
        workFolder = fu_selectFolder("Choose Working Folder", "Choose Working Folder", workFolder) + "/Zendrel";
        fu_createFolder(workFolder);
        workFolder += "/";
        prefs_setValueString("WorkingFolder", workFolder);
    }
    return workFolder;
}

QString AEIngest::savePath(const QString& path) {
    if (workFolder.isEmpty())
        return path;
    return QString(path).replace(workFolder, kWorkFolderToken);
}

QString AEIngest::loadPath(const QString& path) { return QString(path).replace(kWorkFolderToken, workFolder); }

bool AEIngest::isIngested(const QString& ingestedName) { return fu_fileExists(ingestPath + ingestedName); }

std::optional<QString> AEIngest::ingest(const QString& originalFilePath) {
    qxLog("AEIngest.ingest " + originalFilePath);
    const QFileInfo info(originalFilePath);
    const QString ext = info.suffix();
    const QString fileName = info.fileName();
    const QString base = ext.isEmpty() ? fileName : fileName.left(fileName.size() - ext.size() - 1);
    const QString safe = strUt_acceptChars(base, kSafeChars, "_");
    if (!fu_fileExists(originalFilePath)) {
        qxLog("NNN!!!");
        return std::nullopt;
    }
    const QString suffix = "___" + hallard_fileMd5(originalFilePath).left(8) + "." + ext;
    qxLog("1");
    if (originalFilePath.contains(suffix)) {
        qxLog("2");
        if (originalFilePath.contains(ingestPath)) {
            qxLog("3");
            return originalFilePath;
        }
    }
    const QString name = safe + suffix;
    fu_copyFile(originalFilePath, ingestPath + name); // a copy already there is fine
    return ingestPath + name;
}
