#include "app/windows/ZendrelSplashVC.h"

#include "app/core/AEPreferences.h"
#include "app/core/Preloads.h"
#include "app/core/WorkFolderPrefs.h"
#include "app/windows/SplashLogoView.h"
#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "foundation/Slowder.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "render/Mp3.h"
#include "ui/AEColors.h"
#include "ui/MinimalProgressBar.h"

#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

namespace {
// Long enough for the splash to be painted before the boot step may bring up a panel of its own.
constexpr double kBootDelaySeconds = 0.1;
} // namespace

ZendrelSplashVC::BootStep ZendrelSplashVC::defaultBootStep() {
    return [](std::function<void()> completion) { Preloads::doExtendedZendrelUtils(std::move(completion)); };
}

ZendrelSplashVC::ZendrelSplashVC(ShowLoaded onShowLoaded, BootStep bootStep, QWidget* parent)
    : QWidget(parent), onShowLoaded_(std::move(onShowLoaded)), bootStep_(std::move(bootStep)),
      imLogo_(new SplashLogoView(this)),
      buildVersion_(new QLabel(QString("Version %1 (%2)").arg(ZENDREL_VERSION, ZENDREL_BUILD), this)),
      bar_(new IH_MinimalProgressBar(AEColors::darkGrey, AEColors::mediumGrey, this)) {
    setObjectName("ZendrelSplashVC");
    auto* name = new QLabel("Zendrel", this);
    QFont big = name->font();
    big.setPointSizeF(big.pointSizeF() * 2.2);
    big.setBold(true);
    name->setFont(big);
    name->setAlignment(Qt::AlignCenter);
    buildVersion_->setAlignment(Qt::AlignCenter);
    buildVersion_->setForegroundRole(QPalette::PlaceholderText);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 32, 40, 28);
    layout->setSpacing(10);
    layout->addStretch();
    layout->addWidget(imLogo_, 0, Qt::AlignHCenter);
    layout->addSpacing(6);
    layout->addWidget(name);
    layout->addWidget(buildVersion_);
    layout->addStretch();
    layout->addWidget(bar_);
}

// The boot step outlives the splash: the list often replaces it before the step has even begun.
ZendrelSplashVC::~ZendrelSplashVC() = default;

void ZendrelSplashVC::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (appeared_) return;
    appeared_ = true;
    viewDidAppear();
}

void ZendrelSplashVC::viewDidAppear() {
    AEPreferences::load();
    Mp3::loadSettings();
    qxLog("ZendrelSplashVC: workFolder " + workFolder_readAtStartup());
    window()->setWindowTitle("");
    bootTimer_ = QXTimer::fireOnce(kBootDelaySeconds, false, [boot = bootStep_] {
        if (boot) boot([] { qxLog("ZendrelSplashVC: external components in place"); });
    });
    loadShowInfo();
}

void ZendrelSplashVC::loadShowInfo() {
    // Made here, before the load starts, so that the loader only reads the global.
    slowder = std::make_shared<Slowder>("Episodes");
    slowder->onProgress = [bar = QPointer<IH_MinimalProgressBar>(bar_)](int loaded, int total) {
        if (bar && total > 0) bar->setFraction(static_cast<double>(loaded) / total);
    };
    Queue::execute([done = onShowLoaded_] {
        auto show = workFolder_loadShow();
        XMain::execute(
            [show, done] {
                zendrelShow = show;
                qxLog("ZendrelSplashVC: show loaded, " + QString::number(show->episodes.size()) +
                      " episodes");
                if (done) done(show);
            },
            true);
    });
}
