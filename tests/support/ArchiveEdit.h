#pragma once
// Damages archives on purpose: edits the keys of the first object of a class, as a hand-edited or
// older file would have them.

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <functional>

namespace testenv {
using KeyEdit = std::function<void(QJsonObject& keys)>;
QByteArray editArchivedData(const QByteArray& archive, const QString& className, const KeyEdit& edit);
// Rewrites the file in place; false when it cannot be read or written.
bool editArchiveFile(const QString& path, const QString& className, const KeyEdit& edit);
} // namespace testenv
