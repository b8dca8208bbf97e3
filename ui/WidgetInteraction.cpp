#include "ui/WidgetInteraction.h"

#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "ui/PleaseWaitDialog.h"
#include "ui/ProgressPanel.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

namespace {

QWidget* dialogParent() {
    return QApplication::activeWindow();
}

void closeLater(QDialog* dialog) {
    if (!dialog) return;
    dialog->hide();
    dialog->deleteLater();
}

} // namespace

QString widgetInteraction_nameFilter(const QStringList& extensions) {
    if (extensions.isEmpty()) return "All files (*)";
    QStringList patterns;
    for (const QString& ext : extensions)
        patterns << "*." + ext;
    return "Files (" + patterns.join(' ') + ")";
}

PleaseWaitDialog* WidgetInteraction::pleaseWaitWindow() const {
    return pleaseWait_;
}

ProgressPanel* WidgetInteraction::progressWindow() const {
    return progress_;
}

void WidgetInteraction::alert(const QString& title, const QString& text) {
    qxLog("alert: " + title + " | " + text);
    XMain::execute([&] {
        QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, dialogParent());
        box.exec();
    });
}

bool WidgetInteraction::confirm(const QString& title, const QString& text) {
    bool ok = false;
    XMain::execute([&] {
        QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok | QMessageBox::Cancel,
                        dialogParent());
        box.setDefaultButton(QMessageBox::Ok);
        ok = box.exec() == QMessageBox::Ok;
    });
    qxLog("confirm: " + title + (ok ? " -> OK" : " -> Cancel"));
    return ok;
}

QString WidgetInteraction::selectFolder(const QString& title, const QString& message,
                                        const QString& startPath) {
    QString chosen;
    XMain::execute([&] {
        // A folder chooser has no room for a message of its own: it goes into the caption.
        const QString caption = message.isEmpty() || message == title ? title : title + " — " + message;
        chosen = QFileDialog::getExistingDirectory(dialogParent(), caption, startPath);
    });
    while (chosen.endsWith('/') && chosen.size() > 1)
        chosen.chop(1);
    return chosen;
}

QString WidgetInteraction::selectFile(const QString& title, const QString& message,
                                      const QStringList& extensions, const QString& startPath) {
    QString chosen;
    XMain::execute([&] {
        const QString caption = message.isEmpty() || message == title ? title : title + " — " + message;
        chosen = QFileDialog::getOpenFileName(dialogParent(), caption, startPath,
                                              widgetInteraction_nameFilter(extensions));
    });
    return chosen;
}

void WidgetInteraction::showPleaseWait(const QString& title, const QString& text) {
    qxLog("pleaseWait: " + title + " | " + text);
    XMain::execute([&] {
        closeLater(pleaseWait_);
        pleaseWait_ = new PleaseWaitDialog(title, text, dialogParent());
        pleaseWait_->show();
    });
}

void WidgetInteraction::hidePleaseWait() {
    XMain::execute([&] {
        closeLater(pleaseWait_);
        pleaseWait_ = nullptr;
    });
}

void WidgetInteraction::showProgress(const QString& title, const QString& item) {
    qxLog("progress: " + title + " | " + item);
    XMain::execute([&] {
        closeLater(progress_);
        progress_ = new ProgressPanel(title, item, dialogParent());
        progress_->show();
    });
}

void WidgetInteraction::updateProgress(const QString& item, const QString& detail) {
    XMain::execute([&] {
        if (progress_) progress_->setItem(item, detail);
    });
}

void WidgetInteraction::hideProgress() {
    XMain::execute([&] {
        closeLater(progress_);
        progress_ = nullptr;
    });
}
