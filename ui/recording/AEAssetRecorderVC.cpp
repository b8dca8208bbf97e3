#include "ui/recording/AEAssetRecorderVC.h"

#include "foundation/DateText.h"
#include "foundation/FileUtils.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "foundation/Timecode.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEMarker.h"
#include "project/model/AEShow.h"
#include "project/model/AESubsamples.h"
#include "recording/MediaCheck.h"
#include "recording/Recorder.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/VirtualScroller.h"
#include "ui/IHImages.h"
#include "ui/recording/GrowingTakeView.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace {

// The summary reads the recorder's meter while the take grows.
class RecorderMeter : public AERecordingMeter {
public:
    explicit RecorderMeter(std::weak_ptr<Recorder> recorder) : recorder_(std::move(recorder)) {}
    void setMeteringEnabled(bool) override {}
    void updateMeters() override {}
    float averagePowerForChannel(int channel) override {
        const auto recorder = recorder_.lock();
        return recorder ? recorder->getMeteringPower(channel) : -160.0f;
    }

private:
    std::weak_ptr<Recorder> recorder_;
};

QString safeFileName(const QString& name) {
    QString safe;
    for (const QChar c : name.trimmed())
        safe += c.isLetterOrNumber() || c == '-' || c == '_' || c == ' ' ? c : QChar('_');
    return safe;
}

// path itself, or path with " 2", " 3"... before the extension when it is taken.
QString unusedPath(const QString& path) {
    if (!QFileInfo::exists(path)) return path;
    const QFileInfo info(path);
    for (int n = 2;; ++n) {
        const QString candidate =
            info.path() + "/" + info.completeBaseName() + " " + QString::number(n) + "." + info.suffix();
        if (!QFileInfo::exists(candidate)) return candidate;
    }
}

} // namespace

AEAssetRecorderVC::AEAssetRecorderVC(QWidget* parent, std::shared_ptr<AEShow> show,
                                     std::shared_ptr<AEEpisode> episode,
                                     std::function<void(const std::shared_ptr<AEAsset>&)> assetAdded)
    : QDialog(parent), show_(std::move(show)), episode_(std::move(episode)),
      assetAdded_(std::move(assetAdded)) {
    setWindowTitle("Asset Recorder");
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);

    auto* names = new QHBoxLayout;
    name_ = new QLabel(this);
    nameField = new QLineEdit(this);
    nameField->setPlaceholderText(tr("Name of the asset"));
    connect(nameField, &QLineEdit::textChanged, this, [this](const QString& text) {
        setWindowTitle(text.isEmpty() ? QString("Asset Recorder") : "Asset Recorder: " + text);
    });
    names->addWidget(nameField);
    names->addWidget(name_);
    layout->addLayout(names);

    auto* types = new QHBoxLayout;
    const std::pair<AEAssetType, QString> typeNames[] = {
        {AEAssetType::speech, tr("Speech")}, {AEAssetType::jingle, tr("Jingle")},
        {AEAssetType::music, tr("Music")},   {AEAssetType::bgm, tr("BGM")},
        {AEAssetType::ad, tr("Ad")},         {AEAssetType::effect, tr("Effect")}};
    for (const auto& [type, text] : typeNames) {
        auto* button = new QToolButton(this);
        button->setText(text);
        button->setCheckable(true);
        connect(button, &QToolButton::clicked, this, [this, type] { setAssetType(type); });
        typeButtons_.emplace_back(type, button);
        types->addWidget(button);
    }
    layout->addLayout(types);

    takeView_ = new GrowingTakeView(this);
    layout->addWidget(takeView_, 1);

    auto* labels = new QGridLayout;
    timecode_ = new QLabel(this);
    fileSize_ = new QLabel(this);
    duration_ = new QLabel(this);
    frequency_ = new QLabel(this);
    channels_ = new QLabel(this);
    bitsPerSample_ = new QLabel(this);
    level_ = new QLabel(this);
    const std::pair<QString, QLabel*> rows[] = {{tr("Time"), timecode_},     {tr("Size"), fileSize_},
                                                {tr("Duration"), duration_}, {tr("Frequency"), frequency_},
                                                {tr("Channels"), channels_}, {tr("Bits"), bitsPerSample_},
                                                {tr("Level"), level_}};
    int row = 0;
    for (const auto& [text, label] : rows) {
        labels->addWidget(new QLabel(text, this), row / 4, (row % 4) * 2);
        labels->addWidget(label, row / 4, (row % 4) * 2 + 1);
        ++row;
    }
    layout->addLayout(labels);

    auto* buttons = new QHBoxLayout;
    recordButton = new QPushButton(ih_icon("pd_icon_recording"), tr("Record"), this);
    pauseButton = new QPushButton(tr("Pause"), this);
    pauseButton->setEnabled(false);
    markerButton = new QPushButton(tr("Marker (M)"), this);
    markerButton->setEnabled(false);
    setupButton = new QPushButton(tr("Setup…"), this);
    auto* closeButton = new QPushButton(tr("Close"), this);
    for (QPushButton* b : {recordButton, pauseButton, markerButton, setupButton, closeButton}) {
        b->setAutoDefault(false);
        buttons->addWidget(b);
    }
    connect(recordButton, &QPushButton::clicked, this, &AEAssetRecorderVC::record_pressed);
    connect(pauseButton, &QPushButton::clicked, this, &AEAssetRecorderVC::pause_pressed);
    connect(markerButton, &QPushButton::clicked, this, &AEAssetRecorderVC::openMarkerVC);
    connect(setupButton, &QPushButton::clicked, this, &AEAssetRecorderVC::recordingSetup_pressed);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::accept);
    layout->addLayout(buttons);

    startupRecorder();
}

AEAssetRecorderVC::~AEAssetRecorderVC() {
    globalStop(true);
}

void AEAssetRecorderVC::startupRecorder() {
    audioRecorder = std::make_shared<Recorder>();
    audioRecorder->onFailure = [this](const QString&) { globalStop(true); };
    prepareRecordingAsset();
    const auto settings = show_ && show_->recorderSettings ? show_->recorderSettings
                                                           : AudioRecorderSettings::loadFromDefaults();
    availableDevices = Recorder::getDeviceListV2();
    audioRecorder->apply(*settings);
    audioRecorder->setRecordingTimeLabel([this](const QString& text) { timecode_->setText(text); });
    audioRecorder->setfileSizeLabel([this](const QString& text) { fileSize_->setText(text); });
    audioRecorder->setMetering(
        [this](double) {
            level_->setText(QString("%1 dB").arg(audioRecorder->getMeteringPower(0), 0, 'f', 1));
        },
        0.0, 1.0, Recorder::kLabelInterval);
    displayIcons();
    updateLables();
}

QString AEAssetRecorderVC::newRecordingName() const {
    const QString stamp = du_getCompactDateTimeSec(QDateTime::currentDateTime());
    QString name = "recording_" + stamp + ".wav";
    // Two takes within a second, or a name still in use, get a counter.
    for (int n = 2; QFileInfo::exists(AEIngest::ingestPath + name) || name == recordingName; ++n)
        name = "recording_" + stamp + "_" + QString::number(n) + ".wav";
    return name;
}

void AEAssetRecorderVC::prepareRecordingAsset() {
    recordingName = newRecordingName();
    recordingPath = AEIngest::ingestPath + recordingName;
    AEAsset::Args args;
    args.filePath = recordingPath;
    args.type = assetType;
    args.generateSubsamples = false; // the file grows: the summary comes from the meter
    args.recording = true;
    args.isIngestedCopy = true;
    recordingAsset = AEAsset::make(args);
    if (audioRecorder) audioRecorder->setRecordingFile(recordingPath);
    assetTimeline = AETimeLine::make("assetRecorder");
    // An asset's own editor: its ticks must not stop the episode window's, and the growing take is
    // never cleaned away as too short.
    assetTimeline->timelineEditor = AETimelineEditor::asset;
    // A headless view: the model edits only a timeline that has one.
    assetTimeline->setView(takeView_->width(), takeView_->height(), QPointF(0, 0));
    assetTimeline->setInsetViewSize();
    showRange(0, 10.0);
    takeMarkers_.clear();
    actualMarker.reset();
    takeView_->setTimeline(assetTimeline);
}

void AEAssetRecorderVC::showRange(double i, double o) {
    assetTimeline->virtualScroller->setTotalRange(0, std::max(o, assetTimeline->getRightBound()));
    assetTimeline->setViewportRange(i, o);
    assetTimeline->currentViewRange = AETimeRange(i, o);
}

void AEAssetRecorderVC::setAssetType(AEAssetType type) {
    assetType = type;
    displayIcons();
}

void AEAssetRecorderVC::displayIcons() {
    for (const auto& [type, button] : typeButtons_)
        button->setChecked(type == assetType);
}

void AEAssetRecorderVC::record_pressed() {
    if (recording) {
        globalStop(true);
        return;
    }
    qxLog("startRecording");
    if (!audioRecorder->record()) return; // the person has been told; the sheet stays idle
    recording = true;
    t = QDateTime::currentMSecsSinceEpoch() / 1000.0;
    assetTimeline->appendItemInMainLane(recordingAsset, AETimeRange(0, 0.001), false);
    recordingAsset->recording = true;
    recordingAsset->subsamples->startRecording(std::make_shared<RecorderMeter>(audioRecorder));
    recordButton->setIcon(ih_icon("pd_icon_stop"));
    recordButton->setText(tr("Stop"));
    pauseButton->setEnabled(true);
    markerButton->setEnabled(true);
    QPointer<AEAssetRecorderVC> self(this);
    timer = QXTimer::loop(kUpdateTimerName, kUpdateInterval, false, [self] {
        if (self) self->update();
    });
}

void AEAssetRecorderVC::pause_pressed() {
    if (!recording) return;
    if (audioRecorder->isPaused()) {
        audioRecorder->resumeRecord();
        pauseButton->setText(tr("Pause"));
    } else {
        audioRecorder->pause();
        pauseButton->setText(tr("Resume"));
    }
}

// The length is what the file holds, so a pause does not stretch the item.
void AEAssetRecorderVC::update() {
    if (!recording) return;
    const double length = std::max(0.001, audioRecorder->getLength());
    if (!assetTimeline->mainLane.empty()) assetTimeline->removeItemInMainLane(0, false, false);
    const auto item = assetTimeline->appendItemInMainLane(recordingAsset, AETimeRange(0, length), false);
    if (item) item->markers = takeMarkers_;
    const double end = std::max(10.0, assetTimeline->getTimelineOutTime());
    showRange(std::max(0.0, end - kVisibleSeconds), end);
    takeView_->update();
    updateLables();
}

void AEAssetRecorderVC::updateLables() {
    name_->setText(recordingName);
    duration_->setText(tc_getFloatTimecode(audioRecorder->getLength()));
    frequency_->setText(QString::number(audioRecorder->frequency) + " Hz");
    channels_->setText(
        audioRecorder->nChannels == 0 && !recording
            ? tr("device")
            : QString::number(recording ? audioRecorder->recordedChannels() : audioRecorder->nChannels));
    bitsPerSample_->setText(QString::number(audioRecorder->bitDepth));
}

void AEAssetRecorderVC::recordingSetup_pressed() {
    if (recording) {
        Warning("Warning", "You Cannot Change Recording Settings while Recording!");
        return;
    }
    AudioRecorderSetupVC::showPanel(
        this, this, show_ ? show_->recorderSettings : AudioRecorderSettings::loadFromDefaults());
}

void AEAssetRecorderVC::audioRecordingSetupUpdate(
    const std::shared_ptr<AudioRecorderSettings>& recorderSettings) {
    if (show_) show_->recorderSettings = recorderSettings;
    audioRecorder->apply(*recorderSettings);
    updateLables();
}

void AEAssetRecorderVC::openMarkerVC() {
    if (!recording) return;
    actualMarker = std::make_shared<AEMarker>(audioRecorder->getLength());
    takeMarkers_.push_back(actualMarker);
    if (!assetTimeline->mainLane.empty()) assetTimeline->mainLane.front()->markers = takeMarkers_;
    takeView_->update();
}

void AEAssetRecorderVC::markerVCDone(const std::shared_ptr<AEMarker>& marker, AEMarkerVCDoneAction action) {
    if (!actualMarker || !marker) return;
    if (action == AEMarkerVCDoneAction::remove) {
        std::erase(takeMarkers_, actualMarker);
    } else if (action == AEMarkerVCDoneAction::ok) {
        actualMarker->notes = marker->notes;
        actualMarker->type = marker->type;
    }
    actualMarker.reset();
}

QString AEAssetRecorderVC::finalPathFor(const QString& finishedPath) const {
    const QString given = safeFileName(nameField->text());
    if (given.isEmpty()) return finishedPath;
    return unusedPath(AEIngest::ingestPath + given + ".wav");
}

void AEAssetRecorderVC::globalStop(bool doSave) {
    if (!recording) return;
    if (timer) timer->stop();
    timer.reset();
    recording = false;
    audioRecorder->stop();
    recordingAsset->subsamples->stopRecording();
    recordingAsset->recording = false;
    ++currentAssetN;
    recordButton->setIcon(ih_icon("pd_icon_recording"));
    recordButton->setText(tr("Record"));
    pauseButton->setEnabled(false);
    pauseButton->setText(tr("Pause"));
    markerButton->setEnabled(false);

    const QString finished = recordingPath;
    const std::vector<std::shared_ptr<AEMarker>> markers = takeMarkers_;
    const double length = audioRecorder->recorderLength;
    prepareRecordingAsset();
    if (!doSave || length <= 0) return;

    QString finalPath = finalPathFor(finished);
    if (finalPath != finished && !QDir().rename(finished, finalPath)) {
        qxLog("AEAssetRecorderVC.globalStop: cannot rename " + finished + " to " + finalPath);
        finalPath = finished;
    }
    // A take the probes cannot read stays on disk, told, and out of the list.
    if (!mediaAcceptedOrTold(finalPath)) return;
    AEAsset::Args args;
    args.filePath = finalPath;
    args.name = nameField->text().trimmed().isEmpty() ? QFileInfo(finalPath).completeBaseName()
                                                      : nameField->text().trimmed();
    args.type = assetType;
    args.isIngestedCopy = true;
    args.isNew = true;
    const auto asset = AEAsset::make(args);
    asset->markers = markers;
    AEAssetDB::saveAsset(asset);
    if (episode_) {
        AEEpisode::appendAsset(episode_->assets, asset);
        episode_->modified();
    }
    qxLog("AEAssetRecorderVC.globalStop " + finalPath);
    if (assetAdded_) assetAdded_(asset);
    updateLables();
}

void AEAssetRecorderVC::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_M && !nameField->hasFocus()) {
        openMarkerVC();
        return;
    }
    QDialog::keyPressEvent(event);
}

void AEAssetRecorderVC::done(int result) {
    globalStop(true);
    QDialog::done(result);
}
