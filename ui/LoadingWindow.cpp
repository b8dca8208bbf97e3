#include "ui/LoadingWindow.h"

#include "foundation/Execution.h"
#include "foundation/QXTimer.h"
#include "ui/RollingWheel.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>
#include <algorithm>
#include <vector>

namespace {
constexpr int kBarSteps = 1000;

// Windows waiting to be closed by the idle timer; main thread only.
std::vector<std::shared_ptr<LoadingWindow>>& pendingDismissals() {
    static std::vector<std::shared_ptr<LoadingWindow>> pending;
    return pending;
}

// Reports its first showing, after which the window has been laid out and can paint.
class LoadingDialog : public QDialog {
public:
    std::function<void()> onShown;

protected:
    void showEvent(QShowEvent* event) override {
        QDialog::showEvent(event);
        if (onShown) XMain::asyncExecute(onShown);
    }
};
} // namespace

LoadingWindow::LoadingWindow(std::function<void()> callback) : callback_(std::move(callback)) {}

LoadingWindow::~LoadingWindow() {
    if (dialog_) dialog_->deleteLater();
}

std::shared_ptr<LoadingWindow> LoadingWindow::make(const QString& windowTitle, const QString& title,
                                                   const QString& description, std::function<void()> callback,
                                                   const QString& imPrefix, bool modal) {
    std::shared_ptr<LoadingWindow> window(new LoadingWindow(std::move(callback)));
    XMain::execute([&] { window->build(windowTitle, title, description, imPrefix, modal); });
    return window;
}

void LoadingWindow::build(const QString& windowTitle, const QString& title, const QString& description,
                          const QString& imPrefix, bool modal) {
    auto* dialog = new LoadingDialog;
    dialog->setWindowTitle(windowTitle);
    dialog->setModal(modal);
    dialog->onShown = [weak = weak_from_this()] {
        if (auto self = weak.lock()) self->viewHasAppeared();
    };

    auto* titleLabel = new QLabel(title);
    titleLabel->setObjectName("title");
    QFont bold = titleLabel->font();
    bold.setBold(true);
    titleLabel->setFont(bold);
    auto* descriptionLabel = new QLabel(description);
    descriptionLabel->setObjectName("description");
    descriptionLabel->setWordWrap(true);
    auto* bar = new QProgressBar;
    bar->setRange(0, kBarSteps);
    bar->setTextVisible(false);
    auto* etaLabel = new QLabel("ETA: ");
    etaLabel->setObjectName("eta");
    auto* wheel = new RollingWheel;
    wheel->setObjectName(imPrefix);

    auto* texts = new QVBoxLayout;
    texts->addWidget(titleLabel);
    texts->addWidget(descriptionLabel);
    texts->addWidget(bar);
    texts->addWidget(etaLabel);
    auto* row = new QHBoxLayout(dialog);
    row->addWidget(wheel, 0, Qt::AlignTop);
    row->addLayout(texts, 1);
    dialog->setMinimumWidth(360);

    dialog_ = dialog;
    bar_ = bar;
    etaLabel_ = etaLabel;
    description_ = descriptionLabel;
    dialog->show();
}

QDialog* LoadingWindow::dialog() const {
    return dialog_;
}

void LoadingWindow::viewHasAppeared() {
    if (appeared_.exchange(true)) return;
    XMain::execute([this] {
        eta_.startTime = QDateTime::currentDateTime();
        if (callback_) callback_();
    });
}

void LoadingWindow::setPercentage(double fraction) {
    const double f = std::clamp(fraction, 0.0, 1.0);
    XMain::execute(
        [weak = weak_from_this(), f] {
            auto self = weak.lock();
            if (!self || !self->bar_) return;
            self->bar_->setValue(static_cast<int>(f * kBarSteps));
            self->etaLabel_->setText("ETA: " + DiscorsiveETA::getString(self->eta_.secondsToGo(f)));
        },
        true);
}

void LoadingWindow::setDescription(const QString& text) {
    XMain::execute(
        [weak = weak_from_this(), text] {
            auto self = weak.lock();
            if (self && self->description_) self->description_->setText(text);
        },
        true);
}

void LoadingWindow::dismiss() {
    XMain::execute(
        [self = shared_from_this()] {
            auto& pending = pendingDismissals();
            if (std::find(pending.begin(), pending.end(), self) == pending.end()) pending.push_back(self);
            QXTimer::loop("LoadingWindow.dismissIdle", 0.05, false, &LoadingWindow::dismissIdle);
        },
        true);
}

void LoadingWindow::dismissIdle() {
    auto& pending = pendingDismissals();
    std::erase_if(pending, [](const std::shared_ptr<LoadingWindow>& window) {
        if (!window->appeared_) return false;
        if (window->dialog_) window->dialog_->close();
        return true;
    });
    if (pending.empty()) QXTimer::stopByName("LoadingWindow.dismissIdle");
}
