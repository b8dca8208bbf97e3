#pragma once
// The "Probable Uhm" sheet of an asset: rate, shortest hesitation and threshold (kept under their own
// preference keys), "Find" to mark the asset's steady stretches with hesitation markers, and a button
// that empties the show's hesitation database. The delegate hears how many markers were added.
// Main thread.

#include <QDialog>
#include <functional>
#include <memory>

class AEAsset;
class QLabel;
class QPushButton;
class UhmDB;

class UhmVCPC : public QDialog {
public:
    using UhmVCPCDone = std::function<void(int markersAdded)>;

    UhmVCPC(std::shared_ptr<AEAsset> asset, std::shared_ptr<UhmDB> uhmDB, UhmVCPCDone delegate,
            QWidget* parent = nullptr);

    static inline const QString kIntervalKey = "Uhm.AnalisysInterval";
    static inline const QString kMinimumLengthKey = "Uhm.MinimunLength";
    static inline const QString kThresholdKey = "Uhm.Threshold";

    std::shared_ptr<AEAsset> asset;
    std::shared_ptr<UhmDB> uhmDB;
    UhmVCPCDone delegate;

    // The panel's values as the analysis takes them: seconds per analysis, seconds, threshold.
    static double analysisInterval();
    static double minimumLength();
    static float threshold();

    void btnFindPressed();
    void btnDeleteDBPressed();

private:
    void refreshDBCount();
    QLabel* dbCount_ = nullptr;
    QPushButton* find_ = nullptr;
};
