#pragma once
// A small window for a long job: titles, a bar, the time left in words and a rolling wheel. It
// runs its callback once, on the main thread, after it has first appeared; the job then reports
// through setPercentage and ends with dismiss. Pending dismissals keep their windows alive until
// closed, so a job may drop its reference right after dismiss.
// Widgets live on the main thread; every public member may be called from any thread.

#include "foundation/ETA.h"

#include <QPointer>
#include <QString>
#include <atomic>
#include <functional>
#include <memory>

class QDialog;
class QLabel;
class QProgressBar;

class LoadingWindow : public std::enable_shared_from_this<LoadingWindow> {
public:
    // Shows the window. imPrefix names the rolling wheel's frames.
    static std::shared_ptr<LoadingWindow> make(const QString& windowTitle, const QString& title,
                                               const QString& description, std::function<void()> callback,
                                               const QString& imPrefix, bool modal = true);
    ~LoadingWindow();

    // Runs the callback, the first time only.
    void viewHasAppeared();
    // The line under the title (the phase of a job).
    void setDescription(const QString& text);
    // Fraction done, 0...1.
    void setPercentage(double fraction);
    // Closes the window on the idle timer "LoadingWindow.dismissIdle", once it has appeared.
    void dismiss();

    QDialog* dialog() const; // main thread

private:
    explicit LoadingWindow(std::function<void()> callback);
    void build(const QString& windowTitle, const QString& title, const QString& description,
               const QString& imPrefix, bool modal);
    static void dismissIdle();

    std::function<void()> callback_;
    std::atomic<bool> appeared_{false};
    LocalETA eta_; // main thread
    QPointer<QDialog> dialog_;
    QPointer<QProgressBar> bar_;
    QPointer<QLabel> etaLabel_;
    QPointer<QLabel> description_;
};
