#include "ui/ProgressPanel.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

ProgressPanel::ProgressPanel(const QString& title, const QString& item, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      title_(new QLabel(title, this)), item_(new QLabel(item, this)), detail_(new QLabel(this)) {
    setWindowTitle(title);
    setWindowModality(Qt::ApplicationModal);
    QFont big = title_->font();
    big.setPointSizeF(big.pointSizeF() * 1.3);
    big.setBold(true);
    title_->setFont(big);
    detail_->setForegroundRole(QPalette::PlaceholderText);
    auto* bar = new QProgressBar(this);
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setFixedHeight(6);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(22, 18, 22, 18);
    layout->setSpacing(8);
    layout->addWidget(title_);
    layout->addWidget(item_);
    layout->addWidget(bar);
    layout->addWidget(detail_);
    setMinimumWidth(360);
}

void ProgressPanel::setItem(const QString& item, const QString& detail) {
    item_->setText(item);
    detail_->setText(detail);
}

QString ProgressPanel::title() const {
    return title_->text();
}
QString ProgressPanel::item() const {
    return item_->text();
}
QString ProgressPanel::detail() const {
    return detail_->text();
}
