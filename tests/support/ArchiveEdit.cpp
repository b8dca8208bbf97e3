#include "support/ArchiveEdit.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace testenv {

QByteArray editArchivedData(const QByteArray& archive, const QString& className, const KeyEdit& edit) {
    QJsonObject top = QJsonDocument::fromJson(archive).object();
    QJsonArray objects = top["objects"].toArray();
    for (int i = 0; i < objects.size(); ++i) {
        QJsonObject object = objects[i].toObject();
        if (object["class"].toString() != className) continue;
        QJsonObject keys = object["keys"].toObject();
        edit(keys);
        object["keys"] = keys;
        objects[i] = object;
        break;
    }
    top["objects"] = objects;
    return QJsonDocument(top).toJson();
}

bool editArchiveFile(const QString& path, const QString& className, const KeyEdit& edit) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray edited = editArchivedData(file.readAll(), className, edit);
    file.close();
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(edited) == edited.size();
}

} // namespace testenv
