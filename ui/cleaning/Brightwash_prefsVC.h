#pragma once
// The cleaning settings panel: seven pages (general, denoiser, noise gate, compressor, equaliser,
// pauses, hesitations), each optional stage with its on/off switch. It edits globalBWSettings: every
// control stores the JSON form at once, switches and gate sliders also write their per-key preference,
// and OK writes the whole per-key form. Main thread.

#include <QDialog>
#include <functional>
#include <vector>

class QCheckBox;
class QLabel;
class QSlider;
class QStackedWidget;
class QPushButton;
class QVBoxLayout;

class Brightwash_prefsVC : public QDialog {
public:
    explicit Brightwash_prefsVC(QWidget* parent = nullptr);

    // The panel as a modal sheet; delegateReload is told after OK.
    static void displayPrefsPanel(QWidget* parent, std::function<void()> delegateReload = {});

    QStackedWidget* containerTab = nullptr;
    std::vector<QPushButton*> pageButtons; // p1...p7
    std::vector<QCheckBox*> switches;      // s1...s6
    QWidget* removeSilencePane = nullptr;
    QWidget* indecisionEraserPane = nullptr;
    std::function<void()> delegateReload;

    void showPage(int index);
    void okPressed();
    void resetBWSettingsToDefault();
    // The slider of a labelled control, for tests: e.g. "Ratio".
    QSlider* slider(const QString& label) const;
    QLabel* valueLabel(const QString& label) const;

private:
    struct Control {
        QString label;
        QSlider* slider;
        QLabel* value;
        std::function<void()> refill;
    };

    QWidget* page(const QString& title, int switchIndex);
    QSlider* addSlider(QVBoxLayout* layout, const QString& label, double min, double max, double step,
                       int decimals, std::function<double()> get, std::function<void(double)> set,
                       const char* key = nullptr);
    QCheckBox* addCheck(QVBoxLayout* layout, const QString& label, std::function<bool()> get,
                        std::function<void(bool)> set, const char* key);
    void buildGeneral();
    void buildDenoiser();
    void buildGate();
    void buildCompressor();
    void buildEqualizer();
    void buildPauses();
    void buildUhm();
    void fillSwitches();
    void refillAll();

    std::vector<Control> controls_;
    std::vector<std::function<void()>> refills_;
};
