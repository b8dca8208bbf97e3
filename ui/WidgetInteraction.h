#pragma once
// The interaction door on widgets: message boxes, file dialogs, the "please wait" window and the
// progress panel. Every call may come from any thread; off the main thread it waits there for the
// answer (so a caller must not hold up the main thread meanwhile). Windows open over the active one.

#include "foundation/Interaction.h"

#include <QPointer>

class PleaseWaitDialog;
class ProgressPanel;

class WidgetInteraction : public UserInteraction {
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

    // The open windows, or null. Main thread.
    PleaseWaitDialog* pleaseWaitWindow() const;
    ProgressPanel* progressWindow() const;

private:
    QPointer<PleaseWaitDialog> pleaseWait_;
    QPointer<ProgressPanel> progress_;
};

// "Images (*.png *.jpg)" from {"png", "jpg"}; every file for an empty list.
QString widgetInteraction_nameFilter(const QStringList& extensions);
