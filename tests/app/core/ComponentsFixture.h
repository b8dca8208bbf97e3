#pragma once
// Shared set-up for tests of the external components store: a fresh components folder, a scripted
// door, an exit hook that records instead of ending the process, and a copy of what was logged.

#include "app/core/AS.h"
#include "app/core/Boot.h"
#include "app/core/ProcessExit.h"
#include "foundation/Prefs.h"
#include "support/EventWait.h"
#include "support/ScriptedSession.h"

#include <QProcess>
#include <QStringList>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>

class ComponentsFixture : public ::testing::Test, protected ScriptedSession {
protected:
    void SetUp() override {
        previousHook = setProcessExitHook([this](int status) { exitStatus = status; });
        Boot::removeZendrelUtils();
        prefs_setValueString("AS.repositoryBase", "");
    }

    void TearDown() override {
        setProcessExitHook(previousHook);
        prefs_removeKey("AS.repositoryBase");
        Boot::removeZendrelUtils();
    }

    static QString run(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        process.waitForFinished(30000);
        return QString::fromUtf8(process.readAll());
    }

    std::atomic<int> exitStatus{-1};

private:
    ProcessExitHook previousHook;
};
