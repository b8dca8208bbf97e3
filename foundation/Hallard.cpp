#include "foundation/Hallard.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <array>
#include <future>

namespace {
const char* const kSalt = "zNdRl";
// Large slices: files are read at the disk's pace, and few calls keep the digest on its fast path.
constexpr qint64 kSliceBytes = 8 << 20;
} // namespace

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
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return QString();
    QCryptographicHash hash(QCryptographicHash::Md5);
    // Large direct reads: the digest's own reader goes through the file's buffer a kilobyte at a time.
    QByteArray slice(kSliceBytes, Qt::Uninitialized);
    for (;;) {
        const qint64 got = file.read(slice.data(), slice.size());
        if (got < 0) return QString();
        if (got == 0) return QString::fromLatin1(hash.result().toHex());
        hash.addData(QByteArrayView(slice.constData(), got));
    }
}

QString hallard_copyFileWithMd5(const QString& from, const QString& to) {
    QFile source(from);
    QFile target(to);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
        !target.open(QIODevice::NewOnly | QIODevice::Unbuffered))
        return QString();
    QCryptographicHash hash(QCryptographicHash::Md5);
    // The digest is the slow part: while it runs over one slice here, a helper writes that slice out
    // and reads the next into the other, so the copy adds almost nothing to the digest's time. The
    // helper only reads the slice being digested; each file is used by one thread at a time.
    std::array<QByteArray, 2> slices{QByteArray(kSliceBytes, Qt::Uninitialized),
                                     QByteArray(kSliceBytes, Qt::Uninitialized)};
    qint64 got = source.read(slices[0].data(), kSliceBytes);
    for (size_t k = 0; got > 0; k ^= 1) {
        const QByteArray& current = slices[k];
        QByteArray& next = slices[k ^ 1];
        auto writeAndReadAhead = std::async(std::launch::async, [&source, &target, &current, &next, got] {
            if (target.write(current.constData(), got) != got) return qint64{-1};
            return source.read(next.data(), kSliceBytes);
        });
        hash.addData(QByteArrayView(current.constData(), got));
        got = writeAndReadAhead.get();
    }
    if (got == 0 && target.flush()) return QString::fromLatin1(hash.result().toHex());
    target.close();
    target.remove();
    return QString();
}
