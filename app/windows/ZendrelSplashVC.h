#pragma once
// The first thing on screen. When it first appears it reads the start-up preferences, starts the
// boot step (external components) from a timer so that it overlaps the load, and loads the show
// on the background queue with the load progress on its bar. The loaded show is published as
// zendrelShow on the main thread and handed to onShowLoaded, which brings up the episode list.
// Main thread.

#include <QWidget>
#include <functional>
#include <memory>

class AEShow;
class IH_MinimalProgressBar;
class QLabel;
class QXTimer;
class SplashLogoView;

class ZendrelSplashVC : public QWidget {
public:
    // Gets the completion to call once the components are in place.
    using BootStep = std::function<void(std::function<void()> completion)>;
    using ShowLoaded = std::function<void(const std::shared_ptr<AEShow>&)>;

    explicit ZendrelSplashVC(ShowLoaded onShowLoaded, BootStep bootStep = defaultBootStep(),
                             QWidget* parent = nullptr);
    ~ZendrelSplashVC() override;

    static BootStep defaultBootStep();

    QLabel* buildVersionLabel() const { return buildVersion_; }
    IH_MinimalProgressBar* bar() const { return bar_; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void viewDidAppear();
    void loadShowInfo();

    ShowLoaded onShowLoaded_;
    BootStep bootStep_;
    SplashLogoView* imLogo_;
    QLabel* buildVersion_;
    IH_MinimalProgressBar* bar_;
    std::shared_ptr<QXTimer> bootTimer_;
    bool appeared_ = false;
};
