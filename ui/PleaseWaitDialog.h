#pragma once
// "Please wait": a small modal window with a title, a line of text and a busy bar, shown while
// the caller goes on working. It cannot be dismissed by the person; the caller hides it. Main thread.

#include <QDialog>

class QLabel;

class PleaseWaitDialog : public QDialog {
public:
    PleaseWaitDialog(const QString& title, const QString& text, QWidget* parent = nullptr);
    QString text() const;

public slots:
    // Escape and the window's close button do nothing: only the caller ends the wait.
    void reject() override {}

private:
    QLabel* text_;
};
