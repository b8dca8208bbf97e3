#include "app/windows/AppWindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QStackedWidget>

AppWindow::AppWindow(QWidget* parent) : QMainWindow(parent), stack_(new QStackedWidget(this)) {
    setCentralWidget(stack_);
}

void AppWindow::switchTo(QWidget* content, const QSize& size, bool fixedSize) {
    if (stack_->indexOf(content) < 0) stack_->addWidget(content);
    stack_->setCurrentWidget(content);
    if (fixedSize) {
        setFixedSize(size);
    } else {
        setMinimumSize(640, 420);
        setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        resize(size);
    }
    if (const QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen()) {
        QRect frame = geometry();
        frame.moveCenter(screen->availableGeometry().center());
        move(frame.topLeft());
    }
}

void AppWindow::discard(QWidget* content) {
    if (stack_->indexOf(content) < 0) return;
    stack_->removeWidget(content);
    content->deleteLater();
}

QWidget* AppWindow::content() const {
    return stack_->currentWidget();
}

void AppWindow::closeEvent(QCloseEvent* event) {
    if (closeGuard && closeGuard()) return event->ignore();
    QMainWindow::closeEvent(event);
}
