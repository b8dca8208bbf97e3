#include "foundation/Hallard.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSemaphore>
#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

namespace {
const char* const kSalt = "zNdRl";
// Large slices: files are read at the disk's pace, and few calls keep the digest on its fast path.
constexpr qint64 kSliceBytes = 4 << 20;
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
    // The digest is the slow part: this thread reads and digests each slice, then hands it to a
    // writer of its own, so the copy adds almost nothing to the digest's time. A few slices in
    // flight keep either side from waiting on the other's turn at a busy processor. A slice belongs
    // to one thread at a time; the semaphores pass it on, and a size of 0 ends the writer.
    constexpr size_t kInFlight = 4;
    std::array<QByteArray, kInFlight> slices;
    std::array<qint64, kInFlight> sizes{};
    QSemaphore free(kInFlight);
    QSemaphore filled;
    std::atomic<bool> writeFailed = false;
    std::jthread writer([&] {
        for (size_t i = 0;; i = (i + 1) % kInFlight) {
            filled.acquire();
            if (sizes[i] == 0) return;
            if (!writeFailed && target.write(slices[i].constData(), sizes[i]) != sizes[i]) writeFailed = true;
            free.release();
        }
    });
    qint64 got = 0;
    for (size_t i = 0;; i = (i + 1) % kInFlight) {
        free.acquire();
        if (slices[i].isEmpty()) slices[i] = QByteArray(kSliceBytes, Qt::Uninitialized);
        // A failed write ends the reading too: what was read would go nowhere.
        got = writeFailed ? -1 : source.read(slices[i].data(), kSliceBytes);
        if (got > 0) hash.addData(QByteArrayView(slices[i].constData(), got));
        sizes[i] = std::max<qint64>(got, 0);
        filled.release();
        if (got <= 0) break;
    }
    writer.join();
    if (got == 0 && !writeFailed && target.flush()) return QString::fromLatin1(hash.result().toHex());
    target.close();
    target.remove();
    return QString();
}
