#pragma once
// The marker sheet: type, notes and the marker's in/out time codes, with OK, Cancel, Delete and
// "Remove Selection". It edits a working copy and hands it to the timeline with what was pressed;
// every button closes it. Main thread.

#include "timeline/model/AETimeLine.h"

#include <QDialog>
#include <memory>

class AETimeLine;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

class MarkerInspectorVC : public QDialog {
    Q_OBJECT
public:
    MarkerInspectorVC(const std::shared_ptr<AEMarker>& marker, const std::shared_ptr<AETimeLine>& delegate,
                      QWidget* parent = nullptr);

    std::shared_ptr<AEMarker> marker;
    std::shared_ptr<AEMarker> aMarker;
    QComboBox* popType;
    QLineEdit* notesField;
    QLabel* lblInOutTC;
    QPushButton* btnRemoveSelection;
    QPushButton* btnDelete;

private:
    void finish(AEMarkerVCDoneAction action);
    std::weak_ptr<AETimeLine> delegate_;
};
