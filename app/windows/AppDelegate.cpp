#include "app/windows/AppDelegate.h"

#include "app/core/RemoveComponentsCommand.h"
#include "app/core/WorkFolderPrefs.h"
#include "app/windows/AppWindow.h"
#include "app/windows/WorkingFolderVC.h"
#include "app/windows/ZendrelSplashVC.h"
#include "cleaning/BrightwashAssets.h"
#include "foundation/Log.h"
#include "project/model/AEIngest.h"
#include "project/model/Globals.h"
#include "project/panels/MainViewController.h"
#include "ui/cleaning/Brightwash_prefsVC.h"

#include <QAction>
#include <QApplication>
#include <QMenuBar>

namespace {
const QSize kSplashSize(520, 400);
const QSize kMainSize(1000, 700);
} // namespace

AppDelegate::AppDelegate() = default;

AppDelegate::~AppDelegate() {
    if (main_ && mainVC == main_.data()) mainVC = nullptr;
}

void AppDelegate::applicationDidFinishLaunching() {
    window_ = std::make_unique<AppWindow>();
    installIngestBrightwash();
    buildMenu();
    splash_ = new ZendrelSplashVC([this](const std::shared_ptr<AEShow>& show) { showLoaded(show); });
    window_->switchTo(splash_, kSplashSize, true);
    window_->show();
}

void AppDelegate::buildMenu() {
    QMenu* file = window_->menuBar()->addMenu(tr("&File"));
    QAction* workingFolder = file->addAction(tr("Working Folder..."));
    connect(workingFolder, &QAction::triggered, this, [this] { menu_WorkingFolder(); });
    QAction* save = file->addAction(tr("&Save"));
    save->setShortcut(QKeySequence::Save);
    connect(save, &QAction::triggered, this, [this] { saveAction(); });
    file->addSeparator();
    QAction* cleaning = file->addAction(tr("Cleaning Settings…"));
    connect(cleaning, &QAction::triggered, this,
            [this] { Brightwash_prefsVC::displayPrefsPanel(window_.get()); });
    file->addSeparator();
    QAction* remove = file->addAction(tr("Remove External Components"));
    connect(remove, &QAction::triggered, this, [] { mnuRemoveExternalcomponents(); });
    file->addSeparator();
    QAction* quit = file->addAction(tr("&Quit"));
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);
    // Quitting saves nothing of its own: the timers and the timeline's close have done it.
    connect(quit, &QAction::triggered, qApp, &QApplication::quit);
}

void AppDelegate::showLoaded(const std::shared_ptr<AEShow>&) {
    auto* main = new MainViewController;
    main_ = main;
    mainVC = main;
    window_->switchTo(main, kMainSize, false);
    if (splash_) window_->discard(splash_);
}

MainViewController* AppDelegate::mainViewController() const {
    return main_;
}

void AppDelegate::menu_WorkingFolder() {
    if (!mainVC) {
        qxLog("menu_WorkingFolder: the show is still loading");
        return;
    }
    saveShow();
    const QString current = AEIngest::getWorkFolder();
    mainVC->stopTimer();
    WorkingFolderVC panel(weak_from_this(), current, QString("Please Choose Zendrel Working Folder"),
                          window_.get());
    panel.setWindowModality(Qt::WindowModal);
    panel.exec();
    // Without the timer the change would never reach the list.
    if (mainVC) mainVC->startTimer();
}

void AppDelegate::saveAction() {
    // Only an open timeline is saved here; the show is saved where it changes and by the timers.
    qxLog("saveAction: no timeline open");
}

void AppDelegate::workingFolderChange(const QString& to) {
    workFolder_changeTo(to);
}

void AppDelegate::workingFolderMove(const QString&) {}
