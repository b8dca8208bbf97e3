#pragma once
// "Batch Clean…": sound files gathered by a file dialog or dropped on the window, then cleaned side by
// side with the saved cleaning settings. One bar per file and one for the whole batch; Cancel stops the
// tool processes at once. The window may close while a batch runs: the batch is cancelled. Main thread.

#include <QDialog>
#include <QStringList>
#include <memory>
#include <vector>

class BrightwashBatch;
class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;
class QTimer;

class BatchCleanWindow : public QDialog {
public:
    explicit BatchCleanWindow(QWidget* parent = nullptr);
    ~BatchCleanWindow() override;

    // Files already listed are not added twice.
    void addFiles(const QStringList& paths);
    void startCleaning();
    void cancelCleaning();
    bool isRunning() const { return batch_ != nullptr; }

    QStringList files() const { return files_; }
    QProgressBar* fileBar(int row) const;
    QProgressBar* totalBar() const { return total_; }
    QString fileStatus(int row) const;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void chooseFiles();
    void removeChosen();
    void refresh();
    void finished();
    void enableButtons();

    QStringList files_;
    QTableWidget* table_ = nullptr;
    QProgressBar* total_ = nullptr;
    QLabel* summary_ = nullptr;
    QPushButton* add_ = nullptr;
    QPushButton* remove_ = nullptr;
    QPushButton* clean_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QTimer* refresh_ = nullptr;
    std::shared_ptr<BrightwashBatch> batch_;
};
