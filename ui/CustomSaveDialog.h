#pragma once
// A save dialog with a choice of formats, each shown with the size its file is expected to have.
// Choosing a format swaps the extension of the name. An export can offer the loudness settings, which
// follow the chosen format. Main thread.

#include "render/Loudness.h"

#include <QDialog>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;

class CustomSaveDialog : public QDialog {
    Q_OBJECT
public:
    CustomSaveDialog(const QString& title, const QString& name, const QString& folder,
                     const QStringList& availableExtensions, std::optional<std::vector<int64_t>> sizes,
                     QWidget* parent = nullptr);

    // Folder + name with the chosen extension.
    QString selectedPath() const;
    void selectExtension(int index);
    static QString sizeText(int64_t bytes);

    // Adds "Normalise loudness" with its target and true-peak ceiling, filled from the stored
    // settings of each format for `channels`, and the choice of report and chapter files.
    void offerLoudness(int channels);
    // What the controls say now; nothing when offerLoudness was not called.
    std::optional<LoudnessSettings> loudness() const;
    bool sideFilesWanted() const;

    QCheckBox* normaliseBox = nullptr;
    QDoubleSpinBox* targetField = nullptr;
    QDoubleSpinBox* ceilingField = nullptr;
    QCheckBox* sideFilesBox = nullptr;

    QLineEdit* nameField;
    QLineEdit* folderField;
    QComboBox* formatPopup;
    QLabel* sizeLabel;
    QPushButton* browseButton;

private:
    void formatChanged(int index);
    void showLoudness(const LoudnessSettings& settings);

    QStringList availableExtensions_;
    std::optional<std::vector<int64_t>> sizes_;
    QFormLayout* form_ = nullptr;
    int channels_ = 2;
};
