#include "foundation/FileUtils.h"

#include "foundation/Log.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <fcntl.h>
#include <unistd.h>

bool fu_fileExists(const QString& path) {
    return !path.isEmpty() && QFileInfo::exists(path);
}

bool fu_createFolder(const QString& path) {
    if (QDir().mkpath(path)) return true;
    qxLog("fu_createFolder: cannot create " + path);
    return false;
}

bool fu_isRegularFile(const QString& path) {
    return !path.isEmpty() && QFileInfo(path).isFile();
}

bool fu_copyFile(const QString& from, const QString& to) {
    if (QFileInfo::exists(to)) {
        qxLog("fu_copyFile: " + to + " is already there");
        return false;
    }
    QFile source(from);
    if (!source.copy(to)) {
        qxLog("fu_copyFile: " + from + " -> " + to + ": " + source.errorString());
        return false;
    }
    return true;
}

bool fu_linkOrCopyFile(const QString& from, const QString& to) {
    // Following a link, as the copy would: the new name is always a file of its own.
    if (::linkat(AT_FDCWD, QFile::encodeName(from).constData(), AT_FDCWD, QFile::encodeName(to).constData(),
                 AT_SYMLINK_FOLLOW) == 0)
        return true;
    return fu_copyFile(from, to);
}

bool fu_deleteFile(const QString& path) {
    return QFile::remove(path);
}

bool fu_deleteFolder(const QString& path) {
    return QDir(path).removeRecursively();
}

int64_t fu_getFileSize(const QString& path) {
    return QFileInfo(path).size();
}

QString fu_getReadableFileSizeBySize(int64_t bytes) {
    if (bytes < 1024) return QString::number(bytes) + " bytes";
    const char* units[] = {"KB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes);
    int unit = -1;
    while (value >= 1024.0 && unit < 3) {
        value /= 1024.0;
        ++unit;
    }
    return QString::number(value, 'f', 1) + " " + units[unit];
}

QStringList fu_listFilesRecursively(const QString& folder) {
    QStringList out;
    QDirIterator it(folder, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        out.append(it.next());
    return out;
}
