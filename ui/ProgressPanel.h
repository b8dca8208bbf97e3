#pragma once
// The modal panel of a long job made of items (downloads, installs): a title, the item at work and
// a free detail line (bytes so far, say) over a busy bar. No window buttons: the job closes it.
// Main thread.

#include <QDialog>

class QLabel;

class ProgressPanel : public QDialog {
public:
    ProgressPanel(const QString& title, const QString& item, QWidget* parent = nullptr);

    void setItem(const QString& item, const QString& detail);
    QString title() const;
    QString item() const;
    QString detail() const;

public slots:
    void reject() override {}

private:
    QLabel* title_;
    QLabel* item_;
    QLabel* detail_;
};
