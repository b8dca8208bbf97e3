#include "cleaning/BrightwashMC.h"

#include "cleaning/Brightwash.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "render/tools/SoxChannels.h"
#include "render/tools/SoxConvert.h"

#include <QFileInfo>
#include <algorithm>

namespace {

// "<stem>_<n>.wav": the channel number the split gave the file.
int channelNumber(const QString& path) {
    const QString base = QFileInfo(path).completeBaseName();
    return base.mid(base.lastIndexOf('_') + 1).toInt();
}

} // namespace

std::shared_ptr<BrightwashMC> BrightwashMC::make(const QString& srcPath, const BrightwashSetting& pcSettings,
                                                 Callback callback, std::shared_ptr<Prog> prog) {
    return std::shared_ptr<BrightwashMC>(
        new BrightwashMC(srcPath, pcSettings, std::move(callback), std::move(prog)));
}

BrightwashMC::BrightwashMC(const QString& srcPath, const BrightwashSetting& pcSettings, Callback callback,
                           std::shared_ptr<Prog> prog)
    : srcPath(srcPath), pcSettings(pcSettings), callback(std::move(callback)), prog_(std::move(prog)) {
    const QFileInfo info(srcPath);
    dstPath = info.path() + "/" + info.completeBaseName() + "_" + pcSettings.suffix + ".wav";
    // Each channel is an intermediate here; only the joined file is delivered.
    mp3_ = pcSettings.exportFormat == BWExportFormats::mp3;
    this->pcSettings.exportFormat = BWExportFormats::wave;
}

QString BrightwashMC::error() const {
    const std::lock_guard lock(mutex_);
    return error_;
}

void BrightwashMC::cancel() {
    cancelled_ = true;
    const std::lock_guard lock(mutex_);
    if (current_) current_->cancel();
}

void BrightwashMC::start() {
    qxLog("BrightwashMC.start " + srcPath);
    auto self = shared_from_this();
    soxUt_splitChannels(srcPath, dstPath, [self](const QStringList& paths) { self->splitDone(paths); });
}

void BrightwashMC::splitDone(const QStringList& paths) {
    channelPaths = paths;
    // The split reports in the order its jobs ended; the channels go back in their own order.
    std::sort(channelPaths.begin(), channelPaths.end(),
              [](const QString& a, const QString& b) { return channelNumber(a) < channelNumber(b); });
    nChannels = int(channelPaths.size());
    if (channelPaths.isEmpty()) {
        finish(srcPath + ": the sound tool found no channel to clean.");
        return;
    }
    for (const QString& channel : channelPaths) {
        if (cancelled_) break;
        auto run = Brightwash::make(channel, pcSettings, prog_, {});
        {
            const std::lock_guard lock(mutex_);
            current_ = run;
        }
        run->start();
        if (!run->error().isEmpty()) {
            finish(run->error());
            return;
        }
        brightwasherDone(run->resultPath());
    }
    if (cancelled_) finish("Cancelled.");
}

void BrightwashMC::brightwasherDone(const QString& cleanedPath) {
    pcDone += 1;
    cleandedPaths << cleanedPath;
    if (nChannels && pcDone == *nChannels) allBrightwashesDone();
}

void BrightwashMC::allBrightwashesDone() {
    for (const QString& channel : channelPaths)
        fu_deleteFile(channel);
    soxUt_joinChannels(cleandedPaths, dstPath);
    for (const QString& cleaned : cleandedPaths)
        fu_deleteFile(cleaned);
    finish(fu_getFileSize(dstPath) > 0 ? QString()
                                       : dstPath + ": the sound tool could not join the channels.");
}

void BrightwashMC::finish(const QString& failure) {
    if (!failure.isEmpty()) {
        qxLog("BrightwashMC: " + failure);
        for (const QString& path : channelPaths + cleandedPaths)
            fu_deleteFile(path);
        fu_deleteFile(dstPath);
    }
    {
        const std::lock_guard lock(mutex_);
        error_ = failure;
        current_.reset();
    }
    if (callback) callback(dstPath);
}
