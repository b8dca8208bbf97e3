#include "ui/cleaning/UhmVCPC.h"

#include "cleaning/UhmDB.h"
#include "cleaning/UhmMarkers.h"
#include "foundation/Execution.h"
#include "foundation/Prefs.h"
#include "project/model/AEAsset.h"
#include "ui/cleaning/UhmSliders.h"

#include <QDialogButtonBox>
#include <QPointer>
#include <QPushButton>

double UhmVCPC::analysisInterval() {
    const int rate = prefs_getValueString(kIntervalKey, "32").toInt();
    return 1.0 / (rate == 16 || rate == 8 ? rate : 32);
}

double UhmVCPC::minimumLength() {
    return prefs_getValueDouble(kMinimumLengthKey, 0.5);
}

float UhmVCPC::threshold() {
    return float(prefs_getValueDouble(kThresholdKey, 0.1));
}

UhmVCPC::UhmVCPC(std::shared_ptr<AEAsset> asset, std::shared_ptr<UhmDB> uhmDB, UhmVCPCDone delegate,
                 QWidget* parent)
    : QDialog(parent), asset(std::move(asset)), uhmDB(std::move(uhmDB)), delegate(std::move(delegate)) {
    setObjectName("UhmVCPC");
    setWindowTitle(tr("Probable Uhm"));
    auto* layout = new QVBoxLayout(this);
    uhmPanels::addRates(this, layout, int(std::lround(1.0 / analysisInterval())),
                        [](int rate) { prefs_setValueString(kIntervalKey, QString::number(rate)); });
    // Positions are tenths of a second and hundredths of the threshold.
    uhmPanels::addSlider(this, layout, tr("Shortest hesitation (s)"), "minimumLength", 0.1, 3.0, 0.1, 1,
                         minimumLength(), [](double v) { prefs_setValueDouble(kMinimumLengthKey, v); });
    uhmPanels::addSlider(this, layout, tr("Threshold"), "threshold", 0.0, 0.5, 0.01, 2, threshold(),
                         [](double v) { prefs_setValueDouble(kThresholdKey, v); });
    dbCount_ = new QLabel(this);
    layout->addWidget(dbCount_);
    auto* buttons = new QDialogButtonBox(this);
    find_ = buttons->addButton(tr("Find"), QDialogButtonBox::AcceptRole);
    find_->setObjectName("btnFind");
    auto* deleteDB = buttons->addButton(tr("Delete Uhm DB"), QDialogButtonBox::DestructiveRole);
    deleteDB->setObjectName("btnDeleteDB");
    deleteDB->setEnabled(this->uhmDB != nullptr);
    buttons->addButton(QDialogButtonBox::Cancel);
    connect(find_, &QPushButton::clicked, this, [this] { btnFindPressed(); });
    connect(deleteDB, &QPushButton::clicked, this, [this] { btnDeleteDBPressed(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    refreshDBCount();
}

void UhmVCPC::refreshDBCount() {
    dbCount_->setText(uhmDB ? tr("Hesitations learnt: %1").arg(uhmDB->fingerprintList.size())
                            : tr("No show open: nothing learnt."));
}

void UhmVCPC::btnFindPressed() {
    find_->setEnabled(false);
    find_->setText(tr("Finding…"));
    uhmAnalysis(asset, analysisInterval(), minimumLength(), threshold(),
                [self = QPointer<UhmVCPC>(this), done = delegate](int added) {
                    if (done) done(added);
                    if (self) self->accept();
                });
}

void UhmVCPC::btnDeleteDBPressed() {
    if (!uhmDB) return;
    uhmDB->fingerprintList.clear();
    uhmDB->saveToFile();
    XMain::asyncExecute([self = QPointer<UhmVCPC>(this)] {
        if (self) self->refreshDBCount();
    });
}
