#pragma once
// What a test that drives the whole application window sets up and takes down: the working folder
// and drop preferences, the interaction door, and the shell's globals that an open episode leaves.

#include "app/windows/AppDelegate.h"
#include "app/windows/AppWindow.h"
#include "app/windows/TimelineViewController.h"
#include "foundation/Interaction.h"
#include "foundation/Prefs.h"
#include "project/model/Globals.h"
#include "project/panels/EpisodeListModel.h"
#include "project/panels/MainViewController.h"
#include "support/EventWait.h"
#include "support/TestEnvironment.h"
#include "timeline/model/AETimeLine.h"

#include <QListView>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

namespace windowsession {

// Drops ingest without asking and without normalising, from `folder`.
inline void begin(const QString& folder, const std::shared_ptr<UserInteraction>& door) {
    prefs_removeKey("workFolder");
    prefs_setValueString("WorkingFolder", folder);
    prefs_setValueBool("AEIngest.DontAskAtDrag", true);
    prefs_setValueBool("AEIngest.Normalize", false);
    setUserInteraction(door);
}

inline void end() {
    zendrelShow.reset();
    AEEpisodeSelected.reset();
    AEEpisodeSelectedId.reset();
    TimelineWindowStatus = AEWindowStatus::closed;
    for (const char* key : {"WorkingFolder", "AEIngest.DontAskAtDrag", "AEIngest.Normalize"})
        prefs_removeKey(key);
    setUserInteraction(nullptr);
    testenv::useStoreWorkFolder();
}

// Launches the application and opens the only episode of the list with a click, as a person does;
// use under ASSERT_NO_FATAL_FAILURE.
inline void launchAndOpen(std::shared_ptr<AppDelegate>& delegate) {
    delegate = std::make_shared<AppDelegate>();
    delegate->applicationDidFinishLaunching();
    ASSERT_TRUE(testenv::waitUntil([&] { return delegate->mainViewController() != nullptr; }, 10000));
    MainViewController* list = delegate->mainViewController();
    ASSERT_TRUE(testenv::waitUntil([&] { return list->model()->rowCount() == 1; }));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(delegate->window()));
    testenv::pumpEventsFor(100);
    const QRect row = list->tableView_episodeList()->visualRect(list->model()->index(0));
    QTest::mouseClick(list->tableView_episodeList()->viewport(), Qt::LeftButton, {}, row.center());
    ASSERT_TRUE(testenv::waitUntil(
        [&] {
            return delegate->timelineVC() && delegate->timelineVC()->timeline() &&
                   delegate->timelineVC()->timeline()->view;
        },
        10000));
}

} // namespace windowsession
