#include "ui/PleaseWaitDialog.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

PleaseWaitDialog::PleaseWaitDialog(const QString& title, const QString& text, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      text_(new QLabel(text, this)) {
    setWindowTitle(title);
    setWindowModality(Qt::ApplicationModal);
    text_->setWordWrap(true);
    text_->setMinimumWidth(320);
    auto* bar = new QProgressBar(this);
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setFixedHeight(6);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 18);
    layout->setSpacing(12);
    layout->addWidget(text_);
    layout->addWidget(bar);
}

QString PleaseWaitDialog::text() const {
    return text_->text();
}
