#pragma once
// The sheet shown when files are dropped from the desktop: what to do with them (clean, normalise)
// and whether to ask again. OK hands the answers to `done`; Cancel drops the files. Main thread.

#include <QDialog>
#include <QStringList>
#include <functional>

class QCheckBox;
class QLabel;

class AEAssetIngestVC : public QDialog {
    Q_OBJECT
public:
    using Done = std::function<void(const QStringList& paths, bool brightwash, bool normalize, bool dontAsk)>;

    AEAssetIngestVC(const QStringList& pathList, Done done, QWidget* parent = nullptr);

    QLabel* lblFileName;
    QCheckBox* chkBrightwashAudio;
    QCheckBox* chkNormalizeVolume;
    QCheckBox* chkDontAskMeAgain;

private:
    QStringList pathList_;
    Done done_;
};
