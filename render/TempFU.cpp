#include "render/TempFU.h"

#include "foundation/FUName.h"
#include "foundation/FileUtils.h"

#include <QDir>
#include <QFileInfo>

namespace {
QString digitsOf(const QString& id) {
    QString digits;
    for (const QChar c : id)
        if (c.isDigit()) digits += c;
    return digits;
}
} // namespace

TempFU::TempFU(const QString& parentPath, const QString& prefix) : parentPath(parentPath) {
    // A fresh id may, rarely, have no digit or match a leftover folder: draw again.
    do {
        tempFolder = prefix + digitsOf(FUName::newId());
        tempPath = QDir(parentPath).filePath(tempFolder) + "/";
    } while (tempFolder == prefix || QFileInfo::exists(tempPath));
    fu_createFolder(tempPath);
}

TempFU::~TempFU() {
    remove();
}

bool TempFU::created() const {
    return QFileInfo(tempPath).isDir();
}

QString TempFU::getPath(const QString& name) const {
    return tempPath + QFileInfo(name).fileName();
}

bool TempFU::copyOutside(const QString& name) const {
    const QString file = QFileInfo(name).fileName();
    return fu_copyFile(tempPath + file, QDir(parentPath).filePath(file));
}

void TempFU::remove() const {
    fu_deleteFolder(tempPath);
}
