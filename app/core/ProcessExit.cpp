#include "app/core/ProcessExit.h"

#include "foundation/Log.h"

#include <QCoreApplication>
#include <QThread>
#include <cstdlib>
#include <mutex>

namespace {
std::mutex hookMutex;
ProcessExitHook currentHook;

void defaultExit(int status) {
    qxLog("Exit with status " + QString::number(status));
    auto* app = QCoreApplication::instance();
    // Leaving the loop lets main() return and Qt tear down in order; without a loop nothing would happen.
    if (app && QThread::currentThread() == app->thread() && app->thread()->loopLevel() > 0) {
        QCoreApplication::exit(status);
        return;
    }
    std::exit(status);
}
} // namespace

ProcessExitHook setProcessExitHook(ProcessExitHook hook) {
    std::lock_guard lock(hookMutex);
    ProcessExitHook previous = std::move(currentHook);
    currentHook = std::move(hook);
    return previous;
}

void processExit(int status) {
    ProcessExitHook hook;
    {
        std::lock_guard lock(hookMutex);
        hook = currentHook;
    }
    if (hook)
        hook(status);
    else
        defaultExit(status);
}
