#pragma once
// A name for an asset: one field, OK hands it to the delegate and announces it (assetName), so the
// asset lists can follow. returnTo tells a list which of its rows asked. Main thread.

#include <QDialog>
#include <functional>

class QLineEdit;

class AEAssetNameVC : public QDialog {
    Q_OBJECT
public:
    explicit AEAssetNameVC(const QString& current, QWidget* parent = nullptr);

    std::function<void(const QString& name)> delegate;
    int returnTo = -1;
    QLineEdit* assetName;

    void ok_pressed();

signals:
    // "AEAssetNameVC:assetName": the chosen name.
    void assetNameChosen(const QString& assetName, int returnTo);
};
