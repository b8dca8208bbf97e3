#include "ui/cleaning/BrightwashProgressWindow.h"

#include "cleaning/Brightwash.h"
#include "foundation/ETA.h"
#include "foundation/Prog.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

BrightwashProgressWindow::BrightwashProgressWindow(std::shared_ptr<Brightwash> run,
                                                   std::shared_ptr<Prog> prog, QWidget* parent)
    : QDialog(parent), run_(std::move(run)), prog_(std::move(prog)) {
    setWindowTitle(tr("Cleaning"));
    setModal(false);
    auto* layout = new QVBoxLayout(this);
    stage = new QLabel;
    bar = new QProgressBar;
    bar->setRange(0, 1000);
    timeLeft = new QLabel;
    cancelButton = new QPushButton(tr("Cancel"));
    layout->addWidget(stage);
    layout->addWidget(bar);
    layout->addWidget(timeLeft);
    layout->addWidget(cancelButton);
    connect(cancelButton, &QPushButton::clicked, this, [this] { cancel(); });
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this] { refresh(); });
    timer->start(250);
    refresh();
}

void BrightwashProgressWindow::refresh() {
    if (!prog_) return;
    const ProgState s = prog_->state();
    stage->setText(s.subPhaseTitle.isEmpty() ? s.phaseTitle : s.phaseTitle + " — " + s.subPhaseTitle);
    const double done = s.getTotalPercentage();
    bar->setValue(int(done * 1000.0));
    timeLeft->setText(done > 0.02 ? ETA::getRemaining(started_, done) : tr("Estimating time left…"));
}

void BrightwashProgressWindow::cancel() {
    if (run_) run_->cancel();
    cancelButton->setEnabled(false);
    stage->setText(tr("Cancelling…"));
}
