#include "ui/cleaning/BatchCleanWindow.h"

#include "cleaning/Brightwash.h"
#include "cleaning/BrightwashBatch.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace {

enum Column { nameColumn = 0, barColumn = 1, statusColumn = 2 };

QProgressBar* newBar(QWidget* parent) {
    auto* bar = new QProgressBar(parent);
    bar->setRange(0, 1000);
    bar->setValue(0);
    bar->setTextVisible(false);
    return bar;
}

} // namespace

BatchCleanWindow::BatchCleanWindow(QWidget* parent) : QDialog(parent) {
    setObjectName("BatchCleanWindow");
    setWindowTitle(tr("Batch Clean"));
    setAcceptDrops(true);
    resize(640, 360);
    auto* layout = new QVBoxLayout(this);
    table_ = new QTableWidget(0, 3, this);
    table_->setHorizontalHeaderLabels({tr("File"), tr("Progress"), tr("Status")});
    table_->horizontalHeader()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    table_->horizontalHeader()->setSectionResizeMode(statusColumn, QHeaderView::Stretch);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    layout->addWidget(table_, 1);
    summary_ = new QLabel(tr("Add sound files, or drop them here."), this);
    layout->addWidget(summary_);
    total_ = newBar(this);
    total_->setObjectName("totalBar");
    layout->addWidget(total_);

    auto* buttons = new QHBoxLayout;
    add_ = new QPushButton(tr("Add Files…"), this);
    remove_ = new QPushButton(tr("Remove"), this);
    clean_ = new QPushButton(tr("Clean"), this);
    cancel_ = new QPushButton(tr("Cancel"), this);
    auto* close = new QPushButton(tr("Close"), this);
    add_->setObjectName("btnAdd");
    clean_->setObjectName("btnClean");
    cancel_->setObjectName("btnCancel");
    for (QPushButton* b : {add_, remove_})
        buttons->addWidget(b);
    buttons->addStretch();
    for (QPushButton* b : {clean_, cancel_, close})
        buttons->addWidget(b);
    layout->addLayout(buttons);
    connect(add_, &QPushButton::clicked, this, [this] { chooseFiles(); });
    connect(remove_, &QPushButton::clicked, this, [this] { removeChosen(); });
    connect(clean_, &QPushButton::clicked, this, [this] { startCleaning(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { cancelCleaning(); });
    connect(close, &QPushButton::clicked, this, &QDialog::close);

    refresh_ = new QTimer(this);
    refresh_->setInterval(250);
    connect(refresh_, &QTimer::timeout, this, [this] { refresh(); });
    enableButtons();
}

BatchCleanWindow::~BatchCleanWindow() {
    if (batch_) batch_->cancel();
}

void BatchCleanWindow::enableButtons() {
    const bool running = isRunning();
    add_->setEnabled(!running);
    remove_->setEnabled(!running && !files_.isEmpty());
    clean_->setEnabled(!running && !files_.isEmpty());
    cancel_->setEnabled(running);
}

void BatchCleanWindow::addFiles(const QStringList& paths) {
    if (isRunning()) return;
    for (const QString& path : paths) {
        const QString absolute = QFileInfo(path).absoluteFilePath();
        if (files_.contains(absolute) || !QFileInfo(absolute).isFile()) continue;
        files_ << absolute;
        const int row = table_->rowCount();
        table_->insertRow(row);
        table_->setItem(row, nameColumn, new QTableWidgetItem(QFileInfo(absolute).fileName()));
        table_->setCellWidget(row, barColumn, newBar(table_));
        table_->setItem(row, statusColumn, new QTableWidgetItem(tr("Waiting")));
    }
    enableButtons();
}

void BatchCleanWindow::chooseFiles() {
    addFiles(QFileDialog::getOpenFileNames(this, tr("Files to Clean"), QString(),
                                           tr("Sound files (*.wav *.mp3 *.m4a *.aif *.aiff *.flac)")));
}

void BatchCleanWindow::removeChosen() {
    const auto rows = table_->selectionModel()->selectedRows();
    std::vector<int> chosen;
    for (const QModelIndex& index : rows)
        chosen.push_back(index.row());
    std::sort(chosen.rbegin(), chosen.rend());
    for (int row : chosen) {
        table_->removeRow(row);
        files_.removeAt(row);
    }
    enableButtons();
}

QProgressBar* BatchCleanWindow::fileBar(int row) const {
    return static_cast<QProgressBar*>(table_->cellWidget(row, barColumn));
}

QString BatchCleanWindow::fileStatus(int row) const {
    const QTableWidgetItem* item = table_->item(row, statusColumn);
    return item ? item->text() : QString();
}

void BatchCleanWindow::startCleaning() {
    if (isRunning() || files_.isEmpty()) return;
    const BrightwashSetting settings = Brightwash::loadSettings();
    std::vector<BWBatchData> data;
    for (const QString& file : files_)
        data.push_back({file, settings});
    for (int row = 0; row < table_->rowCount(); ++row) {
        fileBar(row)->setValue(0);
        table_->item(row, statusColumn)->setText(tr("Cleaning…"));
    }
    total_->setValue(0);
    batch_ = BrightwashBatch::make(data);
    enableButtons();
    refresh_->start();
    batch_->start([self = QPointer<BatchCleanWindow>(this)] {
        if (self) self->finished();
    });
}

void BatchCleanWindow::cancelCleaning() {
    if (!batch_) return;
    summary_->setText(tr("Cancelling…"));
    batch_->cancel();
}

void BatchCleanWindow::refresh() {
    if (!batch_) return;
    for (size_t i = 0; i < batch_->count(); ++i) {
        fileBar(int(i))->setValue(int(batch_->progress(i) * 1000.0));
        if (!batch_->jobFinished(i)) continue;
        const QString error = batch_->jobError(i);
        table_->item(int(i), statusColumn)
            ->setText(error.isEmpty() ? tr("Done: %1").arg(QFileInfo(batch_->jobResultPath(i)).fileName())
                                      : tr("Failed: %1").arg(error));
    }
    total_->setValue(int(batch_->getPercentage() * 1000.0));
    summary_->setText(tr("%1 of %2 files done").arg(batch_->getCompleted()).arg(batch_->count()));
}

void BatchCleanWindow::finished() {
    refresh();
    refresh_->stop();
    int failed = 0;
    for (size_t i = 0; i < batch_->count(); ++i)
        failed += batch_->jobError(i).isEmpty() ? 0 : 1;
    summary_->setText(failed == 0 ? tr("All %1 files cleaned.").arg(batch_->count())
                                  : tr("%1 of %2 files failed.").arg(failed).arg(batch_->count()));
    batch_.reset();
    enableButtons();
}

void BatchCleanWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!isRunning() && event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void BatchCleanWindow::dropEvent(QDropEvent* event) {
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
    addFiles(paths);
    event->acceptProposedAction();
}

void BatchCleanWindow::closeEvent(QCloseEvent* event) {
    // The jobs hold nothing of the window, but their results would land unseen.
    if (batch_) batch_->cancel();
    QDialog::closeEvent(event);
}
