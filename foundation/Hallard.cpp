#include "foundation/Hallard.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

namespace {
const char* const kSalt = "zNdRl";
}

QString hallard_getNewId(const QString& prefix) {
    const QString appName =
        QCoreApplication::instance() ? QCoreApplication::applicationFilePath() : "zendrel";
    const QString seed = QDateTime::currentDateTime().toString("y-MM-dd H:m:ss.zzz") + appName +
                         QString::number(QRandomGenerator::global()->bounded(12345678)) + kSalt + prefix;
    return hallard_md5(seed);
}

QString hallard_md5(const QString& text) {
    return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
}

QString hallard_fileMd5(const QString& path) {
    // A pipe or a device would block the open or never end: only regular files are read.
    if (!QFileInfo(path).isFile()) return QString();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return QString();
    QCryptographicHash hash(QCryptographicHash::Md5);
    if (!hash.addData(&file)) return QString();
    return QString::fromLatin1(hash.result().toHex());
}

QString hallard_copyFileWithMd5(const QString& from, const QString& to) {
    QFile source(from);
    QFile target(to);
    if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::NewOnly)) return QString();
    QCryptographicHash hash(QCryptographicHash::Md5);
    // Large slices: the copy is bound by the disk, and fewer calls keep the hash on its fast path.
    QByteArray slice(4 << 20, Qt::Uninitialized);
    for (;;) {
        const qint64 got = source.read(slice.data(), slice.size());
        if (got < 0) break;
        if (got == 0) {
            if (target.flush()) return QString::fromLatin1(hash.result().toHex());
            break;
        }
        hash.addData(QByteArrayView(slice.constData(), got));
        if (target.write(slice.constData(), got) != got) break;
    }
    target.close();
    target.remove();
    return QString();
}
