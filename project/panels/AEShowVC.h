#pragma once
// The show's metadata: name, description, image, site and feed addresses, the suffix that follows
// every episode's notes, and the count and lengths of its episodes. A dropped image is ingested at
// once (even if the panel is then cancelled); OK writes the fields and saves the show. Main thread.

#include <QDialog>
#include <QImage>
#include <memory>

class AEShow;
class DragImageAreaView;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

class AEShowVC : public QDialog {
    Q_OBJECT
public:
    explicit AEShowVC(std::shared_ptr<AEShow> show, QWidget* parent = nullptr);

    void fill();
    void dragged(const QStringList& paths);
    void ok_pressed();

    std::shared_ptr<AEShow> editedShow;
    QLineEdit* titleField;
    DragImageAreaView* imageArea;
    QLabel* imageLabel;
    QPlainTextEdit* descriptionField;
    QLabel* nEpisodes;
    QLabel* averageLength;
    QLabel* totalLength;
    QLineEdit* urlField;
    QLineEdit* feedField;
    QPlainTextEdit* notesSuffix;
    QPushButton* okButton;
    QString tmpImagePath;
    QString droppedImagePath;
    QImage tmpImage;
};
