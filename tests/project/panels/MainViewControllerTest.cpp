// The episode list driven through its buttons: sorting, removing, the row texts and the timer's
// hand-over of changes made elsewhere.

#include "project/panels/MainViewController.h"

#include "foundation/DateText.h"
#include "project/model/AEAsset.h"
#include "project/panels/AEEpisodeCell.h"
#include "project/panels/EpisodeListModel.h"
#include "project/panels/NewEpisodeViewController.h"
#include "support/EventWait.h"
#include "tests/project/panels/ShowFixture.h"

#include <QFile>
#include <QListView>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

namespace {

class MainViewControllerTest : public ShowFixture {
protected:
    void SetUp() override {
        ShowFixture::SetUp();
        // Each date field orders the three differently.
        addEpisode("A", -3, -1, -10);
        addEpisode("B", -2, -3, -5);
        addEpisode("C", -1, -2, 4);
        controller = std::make_unique<MainViewController>();
        mainVC = controller.get();
        controller->resize(900, 500);
    }

    void TearDown() override {
        controller.reset();
        ShowFixture::TearDown();
    }

    QStringList listed() const {
        QStringList ids;
        for (int row = 0; row < controller->model()->rowCount(); ++row)
            ids << controller->model()
                       ->data(controller->model()->index(row), EpisodeListModel::EpisodeIdRole)
                       .toString();
        return ids;
    }

    QString image(sortEpisodesBy by) const {
        return controller->sortButton(by)->property("imageName").toString();
    }

    void push(sortEpisodesBy by) { controller->sortButton(by)->click(); }

    // Clicks the remove button painted in a row.
    void clickRemove(int row) {
        controller->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(controller.get()));
        QListView* list = controller->tableView_episodeList();
        const QRect rowRect = list->visualRect(controller->model()->index(row));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          AEEpisodeCell::removeButtonRect(rowRect).center());
    }

    std::unique_ptr<MainViewController> controller;
};

const QString kNeutral = "miniIcon_sort (0-00-00-00)";
const QString kAsc = "miniIcon_sort-asc (0-00-00-00)";
const QString kDesc = "miniIcon_sort-disc (0-00-00-00)";

} // namespace

TEST_F(MainViewControllerTest, EverySortPushInvertsTheDirection) {
    push(sortEpisodesBy::published);
    EXPECT_FALSE(zendrelShow->sort.ascending);
    EXPECT_EQ(listed(), QStringList({"A", "B", "C"}));
    EXPECT_EQ(image(sortEpisodesBy::published), kDesc);

    push(sortEpisodesBy::published);
    EXPECT_TRUE(zendrelShow->sort.ascending);
    EXPECT_EQ(listed(), QStringList({"C", "B", "A"}));
    EXPECT_EQ(image(sortEpisodesBy::published), kAsc);

    // Another column also inverts: from newest-first to oldest-created first.
    push(sortEpisodesBy::created);
    EXPECT_EQ(zendrelShow->sort.by, sortEpisodesBy::created);
    EXPECT_FALSE(zendrelShow->sort.ascending);
    EXPECT_EQ(listed(), QStringList({"A", "B", "C"}));
    EXPECT_EQ(image(sortEpisodesBy::created), kDesc);
    EXPECT_EQ(image(sortEpisodesBy::published), kNeutral);

    push(sortEpisodesBy::modified);
    EXPECT_TRUE(zendrelShow->sort.ascending);
    EXPECT_EQ(listed(), QStringList({"A", "C", "B"}));
    EXPECT_EQ(image(sortEpisodesBy::modified), kAsc);
    EXPECT_EQ(image(sortEpisodesBy::created), kNeutral);

    // Sorting is a matter of display: nothing is written.
    EXPECT_FALSE(QFileInfo::exists(showPath()));
}

TEST_F(MainViewControllerTest, RemoveAsksCancelKeepsEverythingAndOkDeletesMediaAndSaves) {
    const auto c = zendrelShow->episodes.front();
    door->queueConfirm(false);
    clickRemove(0);
    EXPECT_EQ(
        transcript(),
        QStringList({"confirm: Warning! | You *really* want to remove this episode? (Title C) -> Cancel"}));
    EXPECT_EQ(listed(), QStringList({"C", "B", "A"}));
    EXPECT_FALSE(c->deleted);
    EXPECT_FALSE(QFileInfo::exists(showPath()));

    const auto b = zendrelShow->episodes[1];
    const QString media = AEIngest::ingestPath + "take___0badf00d.wav";
    QFile file(media);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    // A record only: an empty file is no sound an asset could be made of.
    auto asset = AEAsset::makePlaceholder();
    asset->originalFilePath = media;
    asset->ingestedFilePath = media;
    b->assets = {asset};
    b->assetsLoaded = true;
    door->queueConfirm(true);
    clickRemove(1);
    EXPECT_TRUE(b->deleted);
    EXPECT_FALSE(QFileInfo::exists(media));
    EXPECT_EQ(listed(), QStringList({"C", "A"}));
    EXPECT_EQ(savedIds(), QStringList({"A", "C"}));
    EXPECT_TRUE(mustUpdate);
}

TEST_F(MainViewControllerTest, TimerSavesPendingChangesAndTakesBackTheClosedTimelinesEpisode) {
    controller->timerUpdate();
    EXPECT_FALSE(QFileInfo::exists(showPath())) << "nothing pending, nothing written";

    zendrelShow->episodes.push_back(std::make_shared<AEEpisode>("D", "Title D", "", folder));
    mustUpdate = true;
    controller->timerUpdate();
    EXPECT_FALSE(mustUpdate);
    EXPECT_EQ(savedIds(), QStringList({"A", "B", "C", "D"}));
    EXPECT_EQ(listed().size(), 4);

    // The timeline hands back its own copy of B.
    const auto stale = zendrelShow->episodes[1];
    auto edited = std::make_shared<AEEpisode>(*stale);
    edited->title = "Edited in the timeline";
    AEEpisodeSelected = edited;
    AEEpisodeSelectedId = 1;
    TimelineWindowStatus = AEWindowStatus::yetClosed;
    controller->timerUpdate();

    EXPECT_EQ(zendrelShow->episodes[1], edited);
    EXPECT_EQ(TimelineWindowStatus, AEWindowStatus::closed);
    EXPECT_FALSE(AEEpisodeSelected);
    EXPECT_FALSE(AEEpisodeSelectedId);
    bool savedEdit = false;
    const auto saved = AEShow::load(showPath());
    for (const auto& e : saved->episodes)
        savedEdit |= e->id == stale->id && e->title == "Edited in the timeline";
    EXPECT_TRUE(savedEdit);
}

TEST_F(MainViewControllerTest, TimerRunsOnlyBetweenStartAndStop) {
    controller->startTimer();
    EXPECT_TRUE(controller->timerRunning());
    mustUpdate = true;
    EXPECT_TRUE(testenv::waitUntil([] { return !mustUpdate; }, 2000));
    EXPECT_EQ(savedIds(), QStringList({"A", "B", "C"}));

    controller->stopTimer();
    EXPECT_FALSE(controller->timerRunning());
    mustUpdate = true;
    testenv::pumpEventsFor(600);
    EXPECT_TRUE(mustUpdate);
}

TEST_F(MainViewControllerTest, NewEpisodeButtonOpensTheSheet) {
    controller->show();
    controller->btn_addNewEpisode()->click();
    auto* sheet = controller->findChild<NewEpisodeViewController*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    sheet->reject();
}

// Rows of the model, outside any window: texts, status icon rule and image fallback.
class EpisodeRowsTest : public ShowFixture {};

TEST_F(EpisodeRowsTest, PlannedOrPublishedTextAndIconFollowTheDateThenTheStatus) {
    const QDateTime now = QDateTime::currentDateTime();
    const auto plannedNotReady = addEpisode("P0", -2, -1, 3, AEEpisodeStatus::notReady);
    const auto plannedReady = addEpisode("P1", -2, -1, 4, AEEpisodeStatus::ready);
    const auto plannedMarkedPublished = addEpisode("P2", -2, -1, 5, AEEpisodeStatus::published);
    const auto pastNotReady = addEpisode("D0", -2, -1, -1, AEEpisodeStatus::notReady);
    pastNotReady->duration = 150;

    EpisodeListModel model;
    model.reload(zendrelShow, now);
    auto row = [&](const std::shared_ptr<AEEpisode>& e, int role) {
        for (int r = 0; r < model.rowCount(); ++r)
            if (model.episodeAt(r) == e) return model.data(model.index(r), role).toString();
        return QString("<missing>");
    };
    auto date = [](const QDateTime& d) { return du_getSimpleDate(d, true); };

    EXPECT_EQ(row(plannedNotReady, EpisodeListModel::PublishedRole),
              "Planned: " + date(plannedNotReady->publicationDate));
    EXPECT_EQ(row(plannedNotReady, EpisodeListModel::StatusIconRole), "ZD_EpisodeStatus_00001");
    EXPECT_EQ(row(plannedReady, EpisodeListModel::StatusIconRole), "ZD_EpisodeStatus_00002");
    EXPECT_EQ(row(plannedMarkedPublished, EpisodeListModel::StatusIconRole), "ZD_EpisodeStatus_00002");

    EXPECT_EQ(row(pastNotReady, EpisodeListModel::PublishedRole),
              "Published: " + date(pastNotReady->publicationDate));
    EXPECT_EQ(row(pastNotReady, EpisodeListModel::StatusIconRole), "ZD_EpisodeStatus_00003");
    EXPECT_EQ(row(pastNotReady, EpisodeListModel::CreatedRole),
              "Created: " + date(pastNotReady->creationDate));
    EXPECT_EQ(row(pastNotReady, EpisodeListModel::ModifiedRole),
              "Modified: " + date(pastNotReady->modificationDate));
    EXPECT_EQ(row(pastNotReady, EpisodeListModel::DurationRole), "2.5m");
    EXPECT_EQ(row(pastNotReady, EpisodeListModel::EpisodeIdRole), "D0");
    EXPECT_EQ(row(pastNotReady, EpisodeListModel::TitleRole), "Title D0");

    // Planned turns published the moment it passes.
    model.reload(zendrelShow, plannedNotReady->publicationDate.addSecs(-1));
    EXPECT_TRUE(row(plannedNotReady, EpisodeListModel::PublishedRole).startsWith("Planned: "));
    model.reload(zendrelShow, plannedNotReady->publicationDate);
    EXPECT_TRUE(row(plannedNotReady, EpisodeListModel::PublishedRole).startsWith("Published: "));
}

TEST_F(EpisodeRowsTest, ImageIsTheEpisodesElseTheShowsElseNone) {
    const auto own = addEpisode("own", -1, -1, -1);
    own->image = QImage(4, 4, QImage::Format_RGB32);
    own->image.fill(Qt::red);
    addEpisode("bare", -1, -1, -2);

    EpisodeListModel model;
    model.reload(zendrelShow, QDateTime::currentDateTime());
    EXPECT_EQ(model.data(model.index(0), EpisodeListModel::ImageRole).value<QImage>().pixelColor(0, 0),
              QColor(Qt::red));
    EXPECT_TRUE(model.data(model.index(1), EpisodeListModel::ImageRole).value<QImage>().isNull());

    zendrelShow->image = QImage(4, 4, QImage::Format_RGB32);
    zendrelShow->image.fill(Qt::blue);
    model.reload(zendrelShow, QDateTime::currentDateTime());
    EXPECT_EQ(model.data(model.index(0), EpisodeListModel::ImageRole).value<QImage>().pixelColor(0, 0),
              QColor(Qt::red));
    EXPECT_EQ(model.data(model.index(1), EpisodeListModel::ImageRole).value<QImage>().pixelColor(0, 0),
              QColor(Qt::blue));
}
