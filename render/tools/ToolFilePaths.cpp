#include "render/tools/ToolFilePaths.h"

#include <QDir>
#include <QFileInfo>

namespace toolFilePaths {

QString withoutExtension(const QString& path) {
    const qsizetype slash = path.lastIndexOf(u'/');
    const qsizetype dot = path.lastIndexOf(u'.');
    // A leading dot names a hidden file, not an extension.
    if (dot <= slash + 1) return path;
    return path.left(dot);
}

QString extensionLower(const QString& path) {
    const QString stem = withoutExtension(path);
    if (stem.size() == path.size()) return {};
    return path.mid(stem.size() + 1).toLower();
}

QString forTool(const QString& path) {
    if (path.isEmpty() || QDir::isAbsolutePath(path)) return path;
    return QDir::current().absoluteFilePath(path);
}

} // namespace toolFilePaths
