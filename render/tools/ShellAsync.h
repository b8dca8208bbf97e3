#pragma once
// Runners that return at once and report a program's standard output as it comes, for tools whose
// progress is followed while they work. The program runs on a worker thread of the background pool;
// the callbacks are called on that thread, the output one once per chunk (decoded as UTF-8, a
// character split between chunks is kept whole), the end one exactly once, also when the program is
// missing (after the "Warning" alert of shell) or cannot start. Standard error is forwarded to ours.

#include <QString>
#include <QStringList>
#include <functional>

using ShellOutputCallback = std::function<void(const QString& chunk)>;
using ShellEndCallback = std::function<void()>;

void shellC(const QString& launchPath, const QStringList& arguments, ShellOutputCallback runningCallback,
            ShellEndCallback terminationCallback);

// The same, prepared first and started by perform; perform may be called again for another run.
class QXShell {
public:
    QXShell(QString launchPath, QStringList arguments, ShellOutputCallback outputCallback,
            ShellEndCallback endCallback);
    void perform();

private:
    QString launchPath_;
    QStringList arguments_;
    ShellOutputCallback outputCallback_;
    ShellEndCallback endCallback_;
};
