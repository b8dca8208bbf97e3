#include "project/panels/AEAssetIngestVC.h"

#include "foundation/Prefs.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QVBoxLayout>

AEAssetIngestVC::AEAssetIngestVC(const QStringList& pathList, Done done, QWidget* parent)
    : QDialog(parent), lblFileName(new QLabel(this)),
      chkBrightwashAudio(new QCheckBox(tr("Clean the speech (Brightwash)"), this)),
      chkNormalizeVolume(new QCheckBox(tr("Normalize volume"), this)),
      chkDontAskMeAgain(new QCheckBox(tr("Don't ask me again"), this)), pathList_(pathList),
      done_(std::move(done)) {
    setObjectName("AEAssetIngestVC");
    setWindowTitle(tr("Add Files"));
    lblFileName->setText(pathList.size() == 1 ? QFileInfo(pathList.first()).fileName()
                                              : QString::number(pathList.size()) + " Files");
    QFont bold = lblFileName->font();
    bold.setBold(true);
    lblFileName->setFont(bold);
    chkBrightwashAudio->setChecked(prefs_getValueBool("AEIngest.Brightwash", false));
    chkNormalizeVolume->setChecked(prefs_getValueBool("AEIngest.Normalize", true));
    chkDontAskMeAgain->setChecked(prefs_getValueBool("AEIngest.DontAskAtDrag", false));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblFileName);
    layout->addWidget(chkBrightwashAudio);
    layout->addWidget(chkNormalizeVolume);
    layout->addWidget(chkDontAskMeAgain);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        const auto done = done_;
        const QStringList paths = pathList_;
        const bool brightwash = chkBrightwashAudio->isChecked();
        const bool normalize = chkNormalizeVolume->isChecked();
        const bool dontAsk = chkDontAskMeAgain->isChecked();
        accept();
        if (done) done(paths, brightwash, normalize, dontAsk);
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}
