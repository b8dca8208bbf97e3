#pragma once
// The panel that shows the working folder and lets the person choose another one. Choosing goes through
// the interaction door's folder chooser; the delegate does the actual change.

#include "app/core/WorkingFolderProtocol.h"

#include <QDialog>
#include <memory>
#include <optional>

class QLineEdit;
class QPushButton;

class WorkingFolderVC : public QDialog {
    Q_OBJECT
public:
    WorkingFolderVC(std::weak_ptr<WorkingFolderProtocol> delegate,
                    std::optional<QString> currentWorkingFolderPath, std::optional<QString> panelTitle,
                    QWidget* parent = nullptr);

    void change();
    void move();
    void ok();

    QLineEdit* currentWF() const { return currentWF_; }
    QPushButton* changeButton() const { return change_; }
    QPushButton* moveButton() const { return move_; }
    QPushButton* okButton() const { return ok_; }

private:
    std::weak_ptr<WorkingFolderProtocol> delegate_;
    QString panelTitle_;
    QLineEdit* currentWF_;
    QPushButton* change_;
    QPushButton* move_;
    QPushButton* ok_;
};
