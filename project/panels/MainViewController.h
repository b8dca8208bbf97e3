#pragma once
// The episode list: creates and removes episodes, sorts the list, and holds the timer that
// carries changes made elsewhere (the mustUpdate flag, a closed timeline) into the list and onto
// disk. Also saves the show every two minutes. Installed as mainVC once the show is loaded.
// Main thread; update() may be called from any thread and reloads on the main thread.

#include "project/model/AEShow.h"
#include "project/model/Globals.h"

#include <QWidget>
#include <functional>
#include <memory>

class AEEpisode;
class AEEpisodeCell;
class EpisodeListModel;
class QListView;
class QPushButton;
class QStackedWidget;
class QToolButton;
class QXTimer;

class MainViewController : public QWidget, public EpisodeListController {
    Q_OBJECT
public:
    // Short against a person's reaction, long enough to cost nothing when idle.
    static constexpr double kTimerPeriodSeconds = 0.25;
    static constexpr double kAutoSaveSeconds = 120.0;

    explicit MainViewController(QWidget* parent = nullptr);
    ~MainViewController() override;

    void startTimer() override;
    void stopTimer() override;
    // Sorts the show, then reloads the list on the main thread.
    void update() override;

    void timerUpdate();
    void autoSave();
    void applySort();
    void sortByCreated_pushed();
    void sortByModified_pushed();
    void sortByPublished_pushed();
    void btn_newEpisode_pressed();
    void removeButton_pressed(int row);
    void infoButton_pressed(int row);
    void clicOnTable(int row);
    void open(const std::shared_ptr<AEEpisode>& episode);
    // The metadata panel's OK: the list and the show file carry the change.
    void episodeVCDone(const std::shared_ptr<AEEpisode>& episode);
    // Asks for a bundle, then imports it behind a loading window.
    void importEpisode();
    void importEpisodeBehindWindow(const QString& path);
    // Imports the bundle and saves the show; false (the person told why) when nothing was imported.
    bool importEpisode(const QString& path);

    // Puts the timeline window of the episode in place of the list; set by the application, which owns
    // the window. Runs once the episode's assets are loaded and checked.
    std::function<void(const std::shared_ptr<AEEpisode>&)> timelineOpener;

    QListView* tableView_episodeList() const { return list_; }
    EpisodeListModel* model() const { return model_; }
    QPushButton* btn_addNewEpisode() const { return newEpisode_; }
    QToolButton* sortButton(sortEpisodesBy by) const;
    bool timerRunning() const;

signals:
    // "AEAssetNameVC:update": the common assets changed (an import brought some).
    void assetListsChanged();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void sortPushed(sortEpisodesBy by);
    void removeEpisode(const std::shared_ptr<AEEpisode>& episode);
    void reloadTable();
    void refreshSortImages();

    QPushButton* newEpisode_;
    QToolButton* sortByCreated_;
    QToolButton* sortByModified_;
    QToolButton* sortByPublished_;
    QStackedWidget* pages_;
    QListView* list_;
    EpisodeListModel* model_;
    AEEpisodeCell* cell_;
    std::shared_ptr<QXTimer> idleTimer_;
    std::shared_ptr<QXTimer> autoSaveTimer_;
};
