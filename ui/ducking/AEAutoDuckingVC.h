#pragma once
// What the music ducks under: four check boxes over AEDuckingSettings. OK saves the set, closes and
// calls okCallback; Cancel closes. Modal.

#include <QDialog>
#include <functional>

class QCheckBox;

class AEAutoDuckingVC : public QDialog {
    Q_OBJECT
public:
    explicit AEAutoDuckingVC(QWidget* parent = nullptr);

    QCheckBox* chkDuckToSpeech;
    QCheckBox* chkDuckToSFX;
    QCheckBox* chkDuckToJingles;
    QCheckBox* chkDeleteKFs;
    std::function<void()> okCallback;

private:
    void okPressed();
};
