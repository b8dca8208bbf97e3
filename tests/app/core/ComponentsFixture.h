#pragma once
// Shared set-up for tests of the external components store: a fresh components folder, a scripted
// door, an exit hook that records instead of ending the process, and a copy of what was logged.

#include "app/core/AS.h"
#include "app/core/Boot.h"
#include "app/core/ProcessExit.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"

#include <QProcess>
#include <QStringList>
#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>

class ComponentsFixture : public ::testing::Test {
protected:
    void SetUp() override {
        door = std::make_shared<ScriptedInteraction>();
        setUserInteraction(door);
        previousHook = setProcessExitHook([this](int status) { exitStatus = status; });
        logToken = addLogSink([this](const QString& line) {
            std::lock_guard lock(logMutex);
            logLines << line;
        });
        Boot::removeZendrelUtils();
        prefs_setValueString("AS.repositoryBase", "");
    }

    void TearDown() override {
        removeLogSink(logToken);
        setProcessExitHook(previousHook);
        setUserInteraction(nullptr);
        prefs_removeKey("AS.repositoryBase");
        Boot::removeZendrelUtils();
    }

    QStringList logged() {
        std::lock_guard lock(logMutex);
        return logLines;
    }

    int loggedStartingWith(const QString& prefix) {
        std::lock_guard lock(logMutex);
        return static_cast<int>(std::count_if(logLines.begin(), logLines.end(),
                                              [&](const QString& line) { return line.startsWith(prefix); }));
    }

    QStringList transcript() const {
        QStringList lines;
        for (const QString& line : door->transcript())
            lines << line;
        return lines;
    }

    static QString run(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        process.waitForFinished(30000);
        return QString::fromUtf8(process.readAll());
    }

    std::shared_ptr<ScriptedInteraction> door;
    std::atomic<int> exitStatus{-1};

private:
    ProcessExitHook previousHook;
    int logToken = 0;
    std::mutex logMutex;
    QStringList logLines;
};
