#pragma once
// The application's settings and information panels: preferences, MP3 encoding, about. Modal
// dialogs that write the preference store on OK. Main thread.

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QButtonGroup;

class Mp3EncodingSettingsVC : public QDialog {
    Q_OBJECT
public:
    static const QList<int> kBitrates;
    explicit Mp3EncodingSettingsVC(QWidget* parent = nullptr);
    QButtonGroup* channels;
    QComboBox* bitrate;
    // The MP3 export's loudness settings for the chosen channels, stored on OK.
    QCheckBox* normalise;
    QDoubleSpinBox* target;
    QDoubleSpinBox* ceiling;

private:
    int channelCount() const;
    void showLoudness();
};

class BasePrefsVC : public QDialog {
    Q_OBJECT
public:
    // The output device's preference; "" is the system's default.
    static constexpr const char* kOutputDeviceKey = "AEPreferences.outputDevice";
    explicit BasePrefsVC(QWidget* parent = nullptr);
    QCheckBox* autoScroll;
    QComboBox* waveFormType;
    QCheckBox* ingestDontAsk;
    QCheckBox* ingestNormalize;
    QCheckBox* ingestBrightwash;
    QComboBox* lanesMode;
    QComboBox* outputDevice;

private:
    void save();
};

class AboutPanel : public QDialog {
    Q_OBJECT
public:
    explicit AboutPanel(QWidget* parent = nullptr);
    static QString versionLine();
};
