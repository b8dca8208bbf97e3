#pragma once
// The one door through which the core speaks to the person: alerts, questions, file and folder
// choosers, "please wait" and progress panels. The UI library installs a widget implementation;
// headless runs and tests get ScriptedInteraction, which logs and answers from a script, so no call
// can hang on a dialog. Callable from any thread: implementations hop to the main thread themselves.

#include <QString>
#include <QStringList>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

class UserInteraction {
public:
    virtual ~UserInteraction() = default;
    virtual void alert(const QString& title, const QString& text) = 0;
    // OK/Cancel: true for OK.
    virtual bool confirm(const QString& title, const QString& text) = 0;
    // "" when the person cancels.
    virtual QString selectFolder(const QString& title, const QString& message, const QString& startPath) = 0;
    virtual QString selectFile(const QString& title, const QString& message, const QStringList& extensions,
                               const QString& startPath) = 0;
    virtual void showPleaseWait(const QString& title, const QString& text) = 0;
    virtual void hidePleaseWait() = 0;
    // A modal progress panel with a title, the item at work and a free detail line.
    virtual void showProgress(const QString& title, const QString& item) = 0;
    virtual void updateProgress(const QString& item, const QString& detail) = 0;
    virtual void hideProgress() = 0;
};

// Logs every call and answers from queues; an empty queue answers OK / "".
class ScriptedInteraction : public UserInteraction {
public:
    void alert(const QString& title, const QString& text) override;
    bool confirm(const QString& title, const QString& text) override;
    QString selectFolder(const QString& title, const QString& message, const QString& startPath) override;
    QString selectFile(const QString& title, const QString& message, const QStringList& extensions,
                       const QString& startPath) override;
    void showPleaseWait(const QString& title, const QString& text) override;
    void hidePleaseWait() override;
    void showProgress(const QString& title, const QString& item) override;
    void updateProgress(const QString& item, const QString& detail) override;
    void hideProgress() override;

    void queueConfirm(bool answer);
    void queuePath(const QString& path);
    // Every call, one line each, e.g. "alert: Warning | text".
    std::vector<QString> transcript() const;

private:
    void note(const QString& line);
    mutable std::mutex mutex_;
    std::deque<bool> confirms_;
    std::deque<QString> paths_;
    std::vector<QString> transcript_;
};

void setUserInteraction(std::shared_ptr<UserInteraction> door);
std::shared_ptr<UserInteraction> userInteraction();

// The warning helpers every Part uses for messages.
void ih_alertOk(const QString& title, const QString& text);
bool ih_alertOkCancel(const QString& title, const QString& text);
void Warning(const QString& title, const QString& text);
QString fu_selectFolder(const QString& title, const QString& message, const QString& startPath);
QString fu_selectFile(const QString& title, const QString& message, const QStringList& extensions,
                      const QString& startPath);
