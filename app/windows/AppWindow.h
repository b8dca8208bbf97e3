#pragma once
// The application's one window. Its content is switched: the splash, then the episode list (and
// later the timeline), each sized to suit it. Main thread.

#include <QMainWindow>
#include <functional>

class QStackedWidget;

class AppWindow : public QMainWindow {
public:
    explicit AppWindow(QWidget* parent = nullptr);

    // Shows `content` (taking it over if new) at `size`; fixed sizes cannot be resized by the person.
    void switchTo(QWidget* content, const QSize& size, bool fixedSize);
    // Drops a content that is no longer needed.
    void discard(QWidget* content);
    QWidget* content() const;
    // Asked when the person closes the window; true when the close was handled (the window stays).
    std::function<bool()> closeGuard;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QStackedWidget* stack_;
};
