#include "cleaning/Brightwash.h"

#include "cleaning/AudioAnalysis.h"
#include "cleaning/ClusterGate.h"
#include "cleaning/DenoiseDefault.h"
#include "cleaning/Uhm.h"
#include "dsp/GaussianReduction.h"
#include "dsp/SndFile.h"
#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "foundation/Prog.h"
#include "recording/WorkingFormat.h"
#include "render/tools/ProcessRunner.h"
#include "render/tools/SoxConvert.h"
#include "render/tools/SoxEdit.h"
#include "render/tools/SoxFilters.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>

namespace {

QString withoutExtension(const QString& path) {
    const QFileInfo info(path);
    return info.path() + "/" + info.completeBaseName();
}

// A stage's output is sound when it holds more than a header.
bool holdsSound(const QString& path) {
    SndFile file(path);
    return file.isOpen() && file.frames() > 0;
}

} // namespace

std::shared_ptr<Brightwash> Brightwash::make(const QString& srcFilePath, const BrightwashSetting& settings,
                                             std::shared_ptr<Prog> prog, Callback callback) {
    return std::shared_ptr<Brightwash>(
        new Brightwash(srcFilePath, settings, std::move(prog), std::move(callback)));
}

Brightwash::Brightwash(const QString& srcFilePath, const BrightwashSetting& settings,
                       std::shared_ptr<Prog> prog, Callback callback)
    : settings(settings), prog(std::move(prog)), srcFilePath(srcFilePath),
      callbackHandler(std::move(callback)), currentFilePath(srcFilePath),
      srcFolder(QFileInfo(srcFilePath).absolutePath()),
      tempFU(QFileInfo(srcFilePath).absolutePath(), "temp_") {}

Brightwash::~Brightwash() {
    // A run that never started still made its folder.
    if (tempFU.created()) tempFU.remove();
}

QString Brightwash::resultPath() const {
    return withoutExtension(srcFilePath) + "_" + settings.suffix + ".wav";
}

QString Brightwash::deliveredPath() const {
    return settings.exportFormat == BWExportFormats::mp3 ? withoutExtension(resultPath()) + ".mp3"
                                                         : resultPath();
}

QString Brightwash::error() const {
    return error_;
}

int Brightwash::getNphases(const BrightwashSetting& s) {
    int n = 2;
    if (s.doDenoiser) n = 10; // the denoiser's own analyses take the place of the count so far
    if (s.doNoiseGate) n += 9;
    n += int(s.doEqualizer) + int(s.doCompressor) + int(s.doRemovePauses) + int(s.doEraseUhm);
    if (s.exportFormat == BWExportFormats::mp3) n += 1;
    return n;
}

void Brightwash::ingestFile(const QString& source, const QString& target, std::function<void()> callback) {
    qxLog("Brightwash.ingestFile " + source + " to " + target);
    auto ingestReal = [source, target] {
        qxLog("Brightwash.ingestReal " + source + " to " + target);
        const QString extension = QFileInfo(source).suffix();
        if (extension == "mp3" || extension == "m4a" || extension == "wav")
            soxUt_convertMp3ToWavMono16(source, target, std::nullopt, true);
        else
            soxUt_convertToMono16(source, target, true);
    };
    if (!callback) {
        ingestReal();
        return;
    }
    Queue::execute([ingestReal, callback] {
        ingestReal();
        callback();
    });
}

void Brightwash::progressNewPhase(const QString& label) {
    if (prog) prog->newPhase(label);
}

void Brightwash::progressNewSubPhase(const QString& label, const QString& target) {
    if (prog) prog->newSubPhase(label, SubPhaseType::fileSize, destFileSize, target);
}

QString Brightwash::temporaryPath(const QString& suffix) const {
    return tempFU.getPath(withoutExtension(originalFilePath) + suffix);
}

void Brightwash::fail(const QString& message) {
    if (error_.isEmpty()) error_ = message;
    qxLog("Brightwash: " + message);
}

bool Brightwash::stageDone(const QString& stage, const QString& output) {
    if (cancelled_)
        fail("Cancelled.");
    else if (!fu_fileExists(srcFilePath))
        fail(srcFilePath + ": the file disappeared while it was being cleaned.");
    else if (!holdsSound(output))
        fail(stage + " left no sound (" + QFileInfo(output).fileName() +
             "): the temporary folder may be full or the source unreadable.");
    return error_.isEmpty();
}

void Brightwash::start() {
    // Cancel kills the tool in flight, however deep in the stage it was started.
    const ProcessCancelScope cancelScope([this] { return cancelled_.load(); });
    const QString result = resultPath();
    if (!fu_fileExists(srcFilePath)) {
        fail(srcFilePath + ": no such file.");
        if (callbackHandler) callbackHandler(result);
    }
    originalFilePath = srcFilePath;
    currentFilePath = srcFilePath;
    if (const SndFile source(srcFilePath); source.isOpen() && source.sampleRate() > 0)
        destFileSize = source.frames() * 2; // duration × rate × 2 bytes: mono, 16 bit
    if (error_.isEmpty() && !tempFU.created())
        fail(srcFolder + ": cannot make a temporary folder there (is it read-only?).");
    if (prog) prog->start();

    // Pauses come out, and hesitations are erased, only after dynamics and equalisation.
    const std::vector<void (Brightwash::*)()> stages{
        &Brightwash::ingest,         &Brightwash::denoise,     &Brightwash::gate,    &Brightwash::compEq,
        &Brightwash::pausesRemoving, &Brightwash::uhmRemoving, &Brightwash::cleaning};
    for (auto stage : stages) {
        if (!error_.isEmpty()) break;
        (this->*stage)();
    }
    if (error_.isEmpty() && settings.exportFormat == BWExportFormats::mp3) exporting();
    if (!error_.isEmpty()) removeTemporaries();
    if (prog) prog->stop();
    if (callbackHandler) callbackHandler(result);
}

void Brightwash::startAsync() {
    auto self = shared_from_this();
    Queue::execute([self] { self->start(); }, true);
}

void Brightwash::ingest() {
    fileIngestPathS = temporaryPath("_ingest.wav");
    progressNewPhase("Ingest");
    progressNewSubPhase("Ingesting...", fileIngestPathS);
    if (!fu_fileExists(fileIngestPathS)) ingestFile(currentFilePath, fileIngestPathS);
    if (stageDone("Ingest", fileIngestPathS)) currentFilePath = fileIngestPathS;
}

void Brightwash::denoise() {
    fileDenoisePathS = temporaryPath("_den.wav");
    if (!settings.doDenoiser) return;
    progressNewPhase("Denoise");
    soxUt_denoiseDefault(currentFilePath, fileDenoisePathS, settings.denoiserLevel, prog);
    if (stageDone("Denoise", fileDenoisePathS)) currentFilePath = fileDenoisePathS;
}

void Brightwash::gate() {
    fileGatePathS = temporaryPath("_gate.wav");
    if (!settings.doNoiseGate) return;
    progressNewPhase("Noise Gate");
    BWGateSettings& g = settings.gate;
    if (g.autoThreshold) g.threshold = 0.0;
    double t = g.threshold;
    if (t == 0.0) {
        const auto analysis = AudioAnalysis::make(currentFilePath, -90, -3);
        const std::vector<double> bins = analysis->subThresholdDouble();
        t = std::max(analysis->getAverage(),
                     double(GaussianReduction::getValley(bins)) - double(bins.size()));
        if (g.noisyEnironment) t = analysis->getThresholdOldAlgo();
    }
    performClusterGate(currentFilePath, fileGatePathS, t, g.decay, g.minDuration, g.fadeInDuration,
                       g.fadeOutDuration, settings.doRemovePauses, settings.pauseLength, g.noisyEnironment,
                       g.environmentNoiseLevel, g.hysteresis, g.normalizeEachCluster, g.preRoll, prog);
    if (stageDone("Noise gate", fileGatePathS)) currentFilePath = fileGatePathS;
}

void Brightwash::compEq() {
    fileCompEqPathS = temporaryPath("_ceq.wav");
    const BWCompressorSetings& c = settings.compressor;
    // Hum removal exists only inside the equaliser's command.
    const double hum = settings.doRemoveHum ? 50.0 : 0.0;
    if (settings.doCompressor && settings.doEqualizer) {
        progressNewPhase("Dynamic");
        progressNewPhase("Equalizing and Compressing...");
        progressNewSubPhase("Equalizing and Compressing...", fileCompEqPathS);
        soxUt_eqComp(currentFilePath, fileCompEqPathS, c.ratio, c.gain, c.attack, c.decay, settings.equalizer,
                     hum);
    } else if (settings.doCompressor) {
        progressNewPhase("Dynamic");
        progressNewSubPhase("Compressing...", fileCompEqPathS);
        soxUt_compressor(currentFilePath, fileCompEqPathS, c.ratio, c.gain, c.attack, c.decay);
    } else if (settings.doEqualizer) {
        progressNewSubPhase("Equalizing...", fileCompEqPathS);
        soxUt_equalize(currentFilePath, fileCompEqPathS, settings.equalizer, hum);
    } else {
        return;
    }
    if (stageDone("Dynamics", fileCompEqPathS)) currentFilePath = fileCompEqPathS;
}

void Brightwash::pausesRemoving() {
    if (!settings.doRemovePauses) return;
    fileDePausesPathS = temporaryPath("_dep.wav");
    progressNewSubPhase("Removing Pauses...", fileDePausesPathS);
    soxUt_removePauses(currentFilePath, fileDePausesPathS, settings.pauseLength, settings.pausesThreshold);
    if (stageDone("Pause removal", fileDePausesPathS)) currentFilePath = fileDePausesPathS;
}

void Brightwash::uhmRemoving() {
    if (!settings.doEraseUhm) return;
    fileDeUhmPathS = temporaryPath("_deuhm.wav");
    progressNewPhase("Uhm Removal");
    progressNewSubPhase("Removing Uhms...", fileDeUhmPathS);
    const BWUhmSettings& u = settings.uhmPrefs;
    Uhm uhm(currentFilePath, nullptr);
    uhm.analysisInterval = 1.0 / std::max(1, u.analisysInterval);
    if (!uhm.performAnalysisAndCuts(fileDeUhmPathS, u.minimumLength, u.threshold, u.crossDissolveMS)) {
        // Nothing would be left: a file that is one long held sound is passed on rather than lost.
        qxLog("Brightwash: no speech left after hesitation removal; " + currentFilePath +
              " passes unchanged");
        return;
    }
    if (stageDone("Hesitation removal", fileDeUhmPathS)) currentFilePath = fileDeUhmPathS;
}

void Brightwash::cleaning() {
    progressNewPhase("Cleaning Up");
    const QString result = resultPath();
    // Written beside the result and renamed over it, so a failed copy never leaves half a file.
    const QString partial = result + ".part";
    QFile::remove(partial);
    if (!QFile::copy(currentFilePath, partial)) {
        fail(result + ": cannot write the result (is the folder read-only or full?).");
        QFile::remove(partial);
        return;
    }
    QFile::remove(result);
    if (!QFile::rename(partial, result)) {
        fail(result + ": cannot write the result.");
        QFile::remove(partial);
    }
    removeTemporaries();
}

void Brightwash::removeTemporaries() {
    for (const QString& path : {fileIngestPathS, fileDenoisePathS, fileGatePathS, fileCompEqPathS,
                                fileDePausesPathS, fileDeUhmPathS})
        if (!path.isEmpty()) fu_deleteFile(path);
    tempFU.remove();
    const QString stem = withoutExtension(originalFilePath.isEmpty() ? srcFilePath : originalFilePath);
    fu_deleteFile(stem + "_ingest_subs.dat");
    fu_deleteFile(stem + "_ingest_analisys.dat");
}

void Brightwash::exporting() {
    progressNewPhase("Exporting");
    const QString wav = resultPath();
    fu_deleteFile(deliveredPath()); // the encoder keeps an existing file
    const QString mp3 = soxUt_convertToMp3InTheSameFolder(wav, 128);
    if (fu_getFileSize(mp3) <= 0) fail(mp3 + ": the MP3 encoder left no file.");
    fu_deleteFile(wav);
}
