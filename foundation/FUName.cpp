#include "foundation/FUName.h"

#include <QFileInfo>
#include <QUuid>

QString FUName::addSuffix(const QString& path, const QString& suffix) {
    const QFileInfo info(path);
    const QString ext = info.suffix();
    if (ext.isEmpty()) return path + suffix;
    return path.left(path.size() - ext.size() - 1) + suffix + "." + ext;
}

QString FUName::newId() {
    return QUuid::createUuid().toString(QUuid::Id128);
}
