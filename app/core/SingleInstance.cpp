#include "app/core/SingleInstance.h"

#include "foundation/Log.h"
#include "foundation/Prefs.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDeadlineTimer>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

// A hand-off is a few paths; anything much larger is not one.
constexpr qint64 kMaxMessage = 1 << 20;
const QByteArray kAck = "ok";

} // namespace

SingleInstance::SingleInstance(const QString& folder) {
    const QString dir =
        folder.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) : folder;
    // Keyed by the preference store, so that a second store (another HOME) is another "user".
    const QByteArray key =
        QCryptographicHash::hash(prefs_filePath().toUtf8(), QCryptographicHash::Md5).toHex().left(12);
    base_ = QDir(dir).filePath("zendrel-" + QString::fromLatin1(key));
}

SingleInstance::~SingleInstance() {
    if (server_) server_->close();
    if (lockFd_ >= 0) ::close(lockFd_);
}

bool SingleInstance::becomePrimary() {
    const QByteArray lockPath = QFile::encodeName(base_ + ".lock");
    lockFd_ = ::open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (lockFd_ < 0) {
        qxLog("SingleInstance: no lock at " + base_ + ".lock, running unguarded");
        return true;
    }
    if (::flock(lockFd_, LOCK_EX | LOCK_NB) != 0) {
        ::close(lockFd_);
        lockFd_ = -1;
        return false;
    }
    // Whoever made a socket there is gone with its lock.
    QLocalServer::removeServer(socketPath());
    server_ = new QLocalServer(this);
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(socketPath()))
        qxLog("SingleInstance: cannot listen on " + socketPath() + ": " + server_->errorString());
    connect(server_, &QLocalServer::newConnection, this, &SingleInstance::serve);
    return true;
}

void SingleInstance::serve() {
    while (QLocalSocket* socket = server_->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (socket->bytesAvailable() > kMaxMessage) return socket->abort();
            QDataStream in(socket);
            in.startTransaction();
            QStringList paths;
            in >> paths;
            if (!in.commitTransaction()) return;
            socket->write(kAck);
            socket->flush();
            qxLog("SingleInstance: handed " + paths.join(", "));
            if (received) received(paths);
        });
    }
}

bool SingleInstance::handOff(const QStringList& paths, int timeoutMs) const {
    QLocalSocket socket;
    // The holder of the lock may not be listening yet: it is starting.
    const QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        socket.connectToServer(socketPath());
        if (socket.waitForConnected(std::min<qint64>(500, deadline.remainingTime()))) break;
        if (deadline.hasExpired()) return false;
        QThread::msleep(50);
    }
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out << paths;
    socket.write(message);
    if (!socket.waitForBytesWritten(deadline.remainingTime())) return false;
    while (socket.bytesAvailable() < kAck.size())
        if (!socket.waitForReadyRead(deadline.remainingTime())) return false;
    return socket.readAll() == kAck;
}
