#pragma once
// The sheet that creates an episode: id, title, description and an optional image, dropped or
// chosen, which is ingested into the working folder at once. OK appends the episode to the show,
// saves, and hands it to openDelegate. Main thread.

#include <QDialog>
#include <functional>
#include <memory>

class AEEpisode;
class DragImageAreaView;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

class NewEpisodeViewController : public QDialog {
public:
    explicit NewEpisodeViewController(QWidget* parent = nullptr);

    std::function<void(const std::shared_ptr<AEEpisode>&)> openDelegate;

    // The first image file of the list becomes the episode's image.
    void imageDropped(const QStringList& paths);
    void chooseImage();
    void ok_pressed();

    QLineEdit* fld_id() const { return id_; }
    QLineEdit* fld_title() const { return title_; }
    QPlainTextEdit* fld_description() const { return description_; }
    DragImageAreaView* dragArea() const { return dragArea_; }
    QLabel* lbl_dragImageHere() const { return dragLabel_; }
    QPushButton* okButton() const { return ok_; }
    QPushButton* chooseImageButton() const { return choose_; }
    const QString& draggedImagePath() const { return draggedImagePath_; }
    const QString& ingestedPath() const { return ingestedPath_; }

private:
    QLineEdit* id_;
    QLineEdit* title_;
    QPlainTextEdit* description_;
    DragImageAreaView* dragArea_;
    QLabel* dragLabel_;
    QPushButton* choose_;
    QPushButton* ok_;
    QString draggedImagePath_;
    QString ingestedPath_;
};
