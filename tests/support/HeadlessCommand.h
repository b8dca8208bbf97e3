#pragma once
// The real `zendrel` binary run as a user runs a subcommand: without a display, so a command that
// reaches for a window fails instead of passing. ZENDREL_BINARY comes from the test target.

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

namespace testenv {

struct CommandRun {
    int status = -1;
    QString out;
    QString err;
};

inline CommandRun zendrel(const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        env.remove(name);
    process.setProcessEnvironment(env);
    process.start(ZENDREL_BINARY, arguments);
    EXPECT_TRUE(process.waitForFinished(180000));
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace testenv
