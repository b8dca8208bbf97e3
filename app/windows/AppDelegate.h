#pragma once
// The application delegate: makes the window, shows the splash, brings up the episode list once the
// show is loaded, and holds the menu. Owner of the working folder panel's delegate role.
// Main thread.

#include "app/core/WorkingFolderProtocol.h"

#include <QObject>
#include <QPointer>
#include <memory>

class AEShow;
class AppWindow;
class MainViewController;
class QAction;
class ZendrelSplashVC;

class AppDelegate : public QObject,
                    public WorkingFolderProtocol,
                    public std::enable_shared_from_this<AppDelegate> {
public:
    AppDelegate();
    ~AppDelegate() override;

    // Builds the window and its menu and starts with the splash.
    void applicationDidFinishLaunching();

    void menu_WorkingFolder();
    void saveAction();
    void workingFolderChange(const QString& to) override;
    void workingFolderMove(const QString& to) override;

    AppWindow* window() const { return window_.get(); }
    MainViewController* mainViewController() const;

private:
    void buildMenu();
    void showLoaded(const std::shared_ptr<AEShow>& show);

    std::unique_ptr<AppWindow> window_;
    QPointer<ZendrelSplashVC> splash_;
    QPointer<MainViewController> main_;
};
