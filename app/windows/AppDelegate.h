#pragma once
// The application delegate: makes the window, shows the splash, brings up the episode list once the
// show is loaded, swaps the list and an episode's editing window, and holds the menu. Commands that
// need a timeline do nothing while none is open. Owner of the working folder panel's delegate role.
// Main thread.

#include "app/core/WorkingFolderProtocol.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>
#include <memory>

class AEEpisode;
class AEShow;
class AppWindow;
class MainViewController;
class QAction;
class QMenu;
class TimelineViewController;
class ZendrelSplashVC;

class AppDelegate : public QObject,
                    public WorkingFolderProtocol,
                    public std::enable_shared_from_this<AppDelegate> {
public:
    AppDelegate();
    ~AppDelegate() override;

    // Builds the window and its menu and starts with the splash.
    void applicationDidFinishLaunching();

    // A bundle given on the command line (or by the desktop): imported once the show is loaded.
    void openBundleWhenReady(const QString& path);
    void menu_WorkingFolder();
    void saveAction();
    void workingFolderChange(const QString& to) override;
    void workingFolderMove(const QString& to) override;

    AppWindow* window() const { return window_.get(); }
    MainViewController* mainViewController() const;
    TimelineViewController* timelineVC() const { return timelineVC_; }
    // Every menu action by its object name (the action's name in the menu table).
    QAction* action(const QString& name) const;

private:
    void buildMenu();
    void buildFileMenu();
    void buildEditMenu();
    void buildViewMenu();
    void buildMarkersMenu();
    void buildHelpMenu();
    QAction* add(QMenu* menu, const QString& name, const QString& text, const QKeySequence& keys,
                 std::function<void()> action);
    // Runs `action` on the open timeline window; nothing when none is open.
    QAction* addTimeline(QMenu* menu, const QString& name, const QString& text, const QKeySequence& keys,
                         std::function<void(TimelineViewController&)> action);
    void showLoaded(const std::shared_ptr<AEShow>& show);
    void openTimeline(const std::shared_ptr<AEEpisode>& episode);
    void timelineClosed();
    void commonAssetWindowToggler();
    void showKeyboardTable();

    std::unique_ptr<AppWindow> window_;
    QPointer<ZendrelSplashVC> splash_;
    QPointer<MainViewController> main_;
    QPointer<TimelineViewController> timelineVC_;
    QPointer<QWidget> commonAssetW_;
    QString pendingBundle_;
};
