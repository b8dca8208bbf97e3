#pragma once
// For the life of a test: the scripted door answers core code's dialogs, and every logged line is
// kept so the test can read what was said.

#include "foundation/Interaction.h"

#include <QStringList>
#include <memory>
#include <mutex>

class ScriptedSession {
public:
    ScriptedSession();
    ~ScriptedSession();
    ScriptedSession(const ScriptedSession&) = delete;
    ScriptedSession& operator=(const ScriptedSession&) = delete;

    QStringList logged() const;
    int loggedCount(const QString& line) const;
    int loggedStartingWith(const QString& prefix) const;
    // What the door was asked and answered, one line each ("alert: ...").
    QStringList transcript() const;

    std::shared_ptr<ScriptedInteraction> door = std::make_shared<ScriptedInteraction>();

private:
    int logToken_ = 0;
    mutable std::mutex logMutex_;
    QStringList logLines_;
};
