#pragma once
// A non-modal window over one clean: the stage, a bar and the time left, and Cancel, which stops the
// run (the source stays as it was and no temporary file is left). It closes itself when the run ends.
// Main thread.

#include <QDateTime>
#include <QDialog>
#include <memory>

class Brightwash;
class Prog;
class QLabel;
class QProgressBar;
class QPushButton;

class BrightwashProgressWindow : public QDialog {
public:
    BrightwashProgressWindow(std::shared_ptr<Brightwash> run, std::shared_ptr<Prog> prog,
                             QWidget* parent = nullptr);

    QLabel* stage = nullptr;
    QProgressBar* bar = nullptr;
    QLabel* timeLeft = nullptr;
    QPushButton* cancelButton = nullptr;

    // Reads the Prog; the window's timer calls it.
    void refresh();
    void cancel();

private:
    std::shared_ptr<Brightwash> run_;
    std::shared_ptr<Prog> prog_;
    QDateTime started_ = QDateTime::currentDateTime();
};
