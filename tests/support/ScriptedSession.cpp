#include "support/ScriptedSession.h"

#include "foundation/Log.h"

#include <algorithm>

ScriptedSession::ScriptedSession() {
    setUserInteraction(door);
    logToken_ = addLogSink([this](const QString& line) {
        std::lock_guard lock(logMutex_);
        logLines_ << line;
    });
}

ScriptedSession::~ScriptedSession() {
    removeLogSink(logToken_);
    setUserInteraction(nullptr);
}

QStringList ScriptedSession::logged() const {
    std::lock_guard lock(logMutex_);
    return logLines_;
}

int ScriptedSession::loggedCount(const QString& line) const {
    std::lock_guard lock(logMutex_);
    return static_cast<int>(logLines_.count(line));
}

int ScriptedSession::loggedStartingWith(const QString& prefix) const {
    std::lock_guard lock(logMutex_);
    return static_cast<int>(std::count_if(logLines_.begin(), logLines_.end(),
                                          [&](const QString& line) { return line.startsWith(prefix); }));
}

QStringList ScriptedSession::transcript() const {
    QStringList lines;
    for (const QString& line : door->transcript())
        lines << line;
    return lines;
}
