#pragma once
// A save dialog with a choice of formats, each shown with the size its file is expected to have.
// Choosing a format swaps the extension of the name. Main thread.

#include <QDialog>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <vector>

class QComboBox;
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

    QLineEdit* nameField;
    QLineEdit* folderField;
    QComboBox* formatPopup;
    QLabel* sizeLabel;
    QPushButton* browseButton;

private:
    void formatChanged(int index);

    QStringList availableExtensions_;
    std::optional<std::vector<int64_t>> sizes_;
};
