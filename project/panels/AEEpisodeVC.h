#pragma once
// An episode's metadata: title, code, notes, address, publication date and state, image and channel
// count, with its length and dates for reference. Every change waits in the controls until OK, which
// writes them to the episode and hands it to episodeVCDone; Cancel leaves the episode as it was. The
// image, dropped or chosen, is ingested at once. Also exports the episode as a bundle. Main thread.

#include <QDialog>
#include <functional>
#include <memory>

class AEEpisode;
class DragImageAreaView;
class QCheckBox;
class QDateTimeEdit;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QXTimer;

class AEEpisodeVC : public QDialog {
    Q_OBJECT
public:
    explicit AEEpisodeVC(std::shared_ptr<AEEpisode> episode, QWidget* parent = nullptr);
    ~AEEpisodeVC() override;

    std::function<void(const std::shared_ptr<AEEpisode>&)> episodeVCDone;

    void fill();
    void updateDate();
    void dragged(const QStringList& paths);
    void showNotesCopy_pressed();
    // Asks where, then doExport.
    void exportEpisode();
    // Writes the bundle off the main thread behind a loading window; done gets "" or the reason.
    void doExport(const QString& path, std::function<void(const QString& error)> done = {});
    void ok_pressed();

    std::shared_ptr<AEEpisode> episode;
    QLineEdit* titleF;
    QLineEdit* id;
    QLabel* lenght;
    QLabel* created;
    QLabel* modified;
    QLineEdit* url;
    QLabel* dragImageLabel;
    DragImageAreaView* image;
    QDateTimeEdit* publicationDate;
    QCheckBox* chkReady;
    QPlainTextEdit* notes;
    QRadioButton* mono;
    QRadioButton* stereo;
    QPushButton* okButton;
    QPushButton* exportButton;
    QString draggedImagePath;
    QString ingestedImagePath;

private:
    std::shared_ptr<QXTimer> t;
};
