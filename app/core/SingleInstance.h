#pragma once
// One Zendrel for each user and preference store: two would save over each other's show. The first
// to start holds a lock and listens on a local socket; a later start (a bundle opened from the file
// manager, or a second launch) hands its bundle paths over and ends. The lock is an flock on an open
// file, so the kernel drops it when its holder dies: a socket left by a crashed instance is taken
// over, never waited on. Main thread.

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

class QLocalServer;

class SingleInstance : public QObject {
public:
    // The folder of the lock and the socket: the user's runtime folder unless told otherwise.
    explicit SingleInstance(const QString& folder = QString());
    ~SingleInstance() override;

    // True when this process is now the one Zendrel and listens for hand-offs; false when another
    // holds the lock. A lock that cannot be made at all (no writable folder) lets the process run.
    bool becomePrimary();
    // Gives the paths (none: only "come to the front") to the running instance; true once it has
    // acknowledged them.
    bool handOff(const QStringList& paths, int timeoutMs = 5000) const;

    // In the primary: paths handed over by a later start, in their order.
    std::function<void(const QStringList& paths)> received;

    QString socketPath() const { return base_ + ".sock"; }

private:
    void serve();

    QString base_;
    int lockFd_ = -1;
    QLocalServer* server_ = nullptr;
};
