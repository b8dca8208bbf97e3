#pragma once
// The shape of automatic dips and the speech threshold: six labelled sliders, each written to the
// saved QXDuckingSettings as soon as it moves. One window for the application: show() brings the open
// one back instead of making a second. A new threshold makes the next analysis of each asset anew.

#include <QDialog>
#include <QPointer>

class QLabel;
class QSlider;

class AEAutoDuckSettingsVC : public QDialog {
    Q_OBJECT
public:
    // Opens the one window, or raises it when it is open.
    static AEAutoDuckSettingsVC* show(QWidget* parent = nullptr);
    static inline QPointer<AEAutoDuckSettingsVC> vc;

    QSlider* thresholdSlider;
    QSlider* attackWindowSlider;
    QSlider* attackPreRollSlider;
    QSlider* releaseWindowSlider;
    QSlider* releasePreRollSlider;
    QSlider* decreaseSlider;

    // The text shown beside a slider.
    QString labelText(const QSlider* slider) const;

private:
    explicit AEAutoDuckSettingsVC(QWidget* parent);
    QSlider* addSlider(const QString& title, int min, int max, int value);
    void slidersChanged();
    void refreshLabels();

    QList<QPair<QSlider*, QLabel*>> labels_;
};
