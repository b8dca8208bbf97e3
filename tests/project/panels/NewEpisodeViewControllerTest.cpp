// The new-episode sheet: image by drop or by chooser (ingested at once), OK appends and saves,
// Cancel leaves the show alone.

#include "project/panels/NewEpisodeViewController.h"

#include "tests/project/panels/ShowFixture.h"
#include "ui/DragImageAreaView.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUrl>

namespace {

class NewEpisodeViewControllerTest : public ShowFixture {
protected:
    // A small picture outside the working folder, as a person would pick it.
    QString makeImage(const QString& name, Qt::GlobalColor colour) {
        const QString path = dir.path() + "/" + name;
        QImage image(8, 8, QImage::Format_RGB32);
        image.fill(colour);
        EXPECT_TRUE(image.save(path));
        return path;
    }

    void drop(QWidget* target, const QList<QUrl>& urls) {
        QMimeData mime;
        mime.setUrls(urls);
        const QPointF at(target->width() / 2.0, target->height() / 2.0);
        QDragEnterEvent enter(at.toPoint(), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDropEvent dropped(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &dropped);
    }
};

} // namespace

TEST_F(NewEpisodeViewControllerTest, DroppedImageIsIngestedAndOkAppendsSavesAndOpens) {
    addEpisode("E01", -5, -5, -5);
    const QString original = makeImage("My Cover.png", Qt::green);

    NewEpisodeViewController sheet;
    std::shared_ptr<AEEpisode> opened;
    sheet.openDelegate = [&](const std::shared_ptr<AEEpisode>& e) { opened = e; };
    sheet.show();
    // What is not a local image is passed over.
    drop(sheet.dragArea(), {QUrl::fromLocalFile(dir.path() + "/notes.txt"),
                            QUrl("https://example.invalid/a.png"), QUrl::fromLocalFile(original)});

    EXPECT_EQ(sheet.draggedImagePath(), original);
    EXPECT_TRUE(sheet.ingestedPath().startsWith(AEIngest::ingestPath)) << sheet.ingestedPath().toStdString();
    EXPECT_TRUE(QFileInfo::exists(sheet.ingestedPath()));
    EXPECT_EQ(sheet.lbl_dragImageHere()->text(), "My Cover.png");
    EXPECT_EQ(sheet.dragArea()->image().pixelColor(0, 0), QColor(Qt::green));

    sheet.fld_id()->setText("E02");
    sheet.fld_title()->setText("The second");
    sheet.fld_description()->setPlainText("Line one\nLine two");
    sheet.okButton()->click();

    ASSERT_EQ(zendrelShow->episodes.size(), 2u);
    const auto created = zendrelShow->episodes.back();
    EXPECT_EQ(created->episodeId, "E02");
    EXPECT_EQ(created->title, "The second");
    EXPECT_EQ(created->notes, "Line one\nLine two");
    EXPECT_EQ(created->imagePath, sheet.ingestedPath());
    EXPECT_FALSE(created->image.isNull());
    EXPECT_EQ(created->timelineDataPath, folder + created->id + ".AETimeLine");
    EXPECT_EQ(opened, created);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_EQ(sheet.result(), QDialog::Accepted);

    const auto saved = AEShow::load(showPath());
    ASSERT_EQ(saved->episodes.size(), 2u);
    bool found = false;
    for (const auto& e : saved->episodes)
        found |=
            e->id == created->id && e->notes == "Line one\nLine two" && e->imagePath == created->imagePath;
    EXPECT_TRUE(found);
}

TEST_F(NewEpisodeViewControllerTest, ChosenImageGoesThroughTheDoorAndCancelAddsNothing) {
    NewEpisodeViewController sheet;
    bool opened = false;
    sheet.openDelegate = [&](const std::shared_ptr<AEEpisode>&) { opened = true; };
    sheet.show();
    sheet.chooseImageButton()->click();
    EXPECT_TRUE(sheet.ingestedPath().isEmpty());
    EXPECT_EQ(sheet.lbl_dragImageHere()->text(), "Drag an image here");

    const QString original = makeImage("cover.jpg", Qt::yellow);
    door->queuePath(original);
    sheet.chooseImageButton()->click();
    EXPECT_EQ(sheet.draggedImagePath(), original);
    EXPECT_TRUE(QFileInfo::exists(sheet.ingestedPath()));
    EXPECT_EQ(sheet.lbl_dragImageHere()->text(), "cover.jpg");

    sheet.fld_id()->setText("E09");
    sheet.reject();
    EXPECT_TRUE(zendrelShow->episodes.empty());
    EXPECT_FALSE(opened);
    EXPECT_FALSE(QFileInfo::exists(showPath()));
}
