#include "foundation/Interaction.h"

#include "foundation/Log.h"

namespace {
std::mutex doorMutex;
std::shared_ptr<UserInteraction> currentDoor;
} // namespace

void ScriptedInteraction::note(const QString& line) {
    qxLog(line);
    std::lock_guard lock(mutex_);
    transcript_.push_back(line);
}

void ScriptedInteraction::alert(const QString& title, const QString& text) {
    note("alert: " + title + " | " + text);
}

bool ScriptedInteraction::confirm(const QString& title, const QString& text) {
    bool answer = true;
    {
        std::lock_guard lock(mutex_);
        if (!confirms_.empty()) {
            answer = confirms_.front();
            confirms_.pop_front();
        }
    }
    note("confirm: " + title + " | " + text + (answer ? " -> OK" : " -> Cancel"));
    return answer;
}

QString ScriptedInteraction::selectFolder(const QString& title, const QString& message,
                                          const QString& startPath) {
    QString answer;
    {
        std::lock_guard lock(mutex_);
        if (!paths_.empty()) {
            answer = paths_.front();
            paths_.pop_front();
        }
    }
    note("selectFolder: " + title + " | " + message + " | " + startPath + " -> " + answer);
    return answer;
}

QString ScriptedInteraction::selectFile(const QString& title, const QString& message,
                                        const QStringList& extensions, const QString& startPath) {
    QString answer;
    {
        std::lock_guard lock(mutex_);
        if (!paths_.empty()) {
            answer = paths_.front();
            paths_.pop_front();
        }
    }
    note("selectFile: " + title + " | " + message + " | " + extensions.join(",") + " | " + startPath +
         " -> " + answer);
    return answer;
}

void ScriptedInteraction::showPleaseWait(const QString& title, const QString& text) {
    note("pleaseWait: " + title + " | " + text);
}

void ScriptedInteraction::hidePleaseWait() {
    note("pleaseWait: hidden");
}

void ScriptedInteraction::showProgress(const QString& title, const QString& item) {
    note("progress: " + title + " | " + item);
}

void ScriptedInteraction::updateProgress(const QString& item, const QString& detail) {
    std::lock_guard lock(mutex_);
    transcript_.push_back("progress update: " + item + " | " + detail);
}

void ScriptedInteraction::hideProgress() {
    note("progress: hidden");
}

void ScriptedInteraction::queueConfirm(bool answer) {
    std::lock_guard lock(mutex_);
    confirms_.push_back(answer);
}

void ScriptedInteraction::queuePath(const QString& path) {
    std::lock_guard lock(mutex_);
    paths_.push_back(path);
}

std::vector<QString> ScriptedInteraction::transcript() const {
    std::lock_guard lock(mutex_);
    return transcript_;
}

void setUserInteraction(std::shared_ptr<UserInteraction> door) {
    std::lock_guard lock(doorMutex);
    currentDoor = std::move(door);
}

std::shared_ptr<UserInteraction> userInteraction() {
    std::lock_guard lock(doorMutex);
    if (!currentDoor) currentDoor = std::make_shared<ScriptedInteraction>();
    return currentDoor;
}

void ih_alertOk(const QString& title, const QString& text) {
    userInteraction()->alert(title, text);
}

bool ih_alertOkCancel(const QString& title, const QString& text) {
    return userInteraction()->confirm(title, text);
}

void Warning(const QString& title, const QString& text) {
    userInteraction()->alert(title, text);
}

QString fu_selectFolder(const QString& title, const QString& message, const QString& startPath) {
    return userInteraction()->selectFolder(title, message, startPath);
}

QString fu_selectFile(const QString& title, const QString& message, const QStringList& extensions,
                      const QString& startPath) {
    return userInteraction()->selectFile(title, message, extensions, startPath);
}
