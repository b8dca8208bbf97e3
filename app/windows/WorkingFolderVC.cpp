#include "app/windows/WorkingFolderVC.h"

#include "foundation/Interaction.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

WorkingFolderVC::WorkingFolderVC(std::weak_ptr<WorkingFolderProtocol> delegate,
                                 std::optional<QString> currentWorkingFolderPath,
                                 std::optional<QString> panelTitle, QWidget* parent)
    : QDialog(parent), delegate_(std::move(delegate)),
      panelTitle_(panelTitle.value_or("Select Working Folder")),
      currentWF_(new QLineEdit(currentWorkingFolderPath.value_or(""), this)),
      change_(new QPushButton(tr("Change..."), this)), move_(new QPushButton(tr("Move..."), this)),
      ok_(new QPushButton(tr("OK"), this)) {
    setWindowTitle(panelTitle_);
    currentWF_->setReadOnly(true);
    currentWF_->setMinimumWidth(360);
    ok_->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(change_);
    buttons->addWidget(move_);
    buttons->addStretch();
    buttons->addWidget(ok_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(panelTitle_, this));
    layout->addWidget(currentWF_);
    layout->addLayout(buttons);

    connect(change_, &QPushButton::clicked, this, &WorkingFolderVC::change);
    connect(move_, &QPushButton::clicked, this, &WorkingFolderVC::move);
    connect(ok_, &QPushButton::clicked, this, &WorkingFolderVC::ok);
}

void WorkingFolderVC::change() {
    const QString chosen = fu_selectFolder(panelTitle_, "", currentWF_->text());
    if (chosen.isEmpty()) return;
    currentWF_->setText(chosen);
    if (auto delegate = delegate_.lock()) delegate->workingFolderChange(chosen);
}

void WorkingFolderVC::move() {
    Warning("Warning", "This feature is not yet implemented.");
}

void WorkingFolderVC::ok() {
    accept();
}
