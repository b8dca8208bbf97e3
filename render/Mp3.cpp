#include "render/Mp3.h"

#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "recording/AudioProbes.h"
#include "render/tools/ProcessRunner.h"
#include "render/tools/Shell.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFilePaths.h"
#include "render/tools/ToolPaths.h"

#include <QDate>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTemporaryDir>
#include <mutex>

namespace {

const QString kChannelsKey = "Mp3EncodingSettings.channels";
const QString kBitrateKey = "Mp3EncodingSettings.bitrate";

std::mutex settingsMutex;
Mp3EncodingSettings storedSettings;

bool writeText(const QString& path, const QString& text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(text.toUtf8());
    return file.commit();
}

// Only the END line of a chapter block: an escaped line end in a title is preceded by a backslash,
// never by the digits of START.
QString endlessChaptersToTenHours(QString text) {
    static const QRegularExpression unended("(\\nSTART=\\d+\\n)END=0\\n");
    return text.replace(unended, "\\1END=36000000\n");
}

// kid3 on a folder of its own; the caller moves the file back with the result.
class PrivateCopy {
public:
    explicit PrivateCopy(const QString& filePath) : original_(filePath) {
        const QFileInfo info(filePath);
        // Beside the file first, so both moves are renames on one file system.
        folder_ = std::make_unique<QTemporaryDir>(info.absolutePath() + "/.zendrel-id3-XXXXXX");
        if (!folder_->isValid()) folder_ = std::make_unique<QTemporaryDir>();
        if (!folder_->isValid()) return;
        inside_ = folder_->filePath(info.fileName());
        renamed_ = QFile::rename(original_, inside_);
        placed_ = renamed_ || QFile::copy(original_, inside_);
    }

    bool placed() const { return placed_; }
    QString path() const { return inside_; }

    bool putBack() {
        if (renamed_ ? QFile::rename(inside_, original_)
                     : (QFile::remove(original_) && QFile::copy(inside_, original_)))
            return true;
        // Never let the folder take the only copy with it.
        folder_->setAutoRemove(false);
        return false;
    }

private:
    QString original_;
    QString inside_;
    std::unique_ptr<QTemporaryDir> folder_;
    bool renamed_ = false;
    bool placed_ = false;
};

} // namespace

Mp3EncodingSettings Mp3::encodingSettings() {
    std::lock_guard lock(settingsMutex);
    return storedSettings;
}

void Mp3::setEncodingSettings(const Mp3EncodingSettings& settings) {
    std::lock_guard lock(settingsMutex);
    storedSettings = settings;
}

void Mp3::loadSettings() {
    Mp3EncodingSettings settings;
    settings.channels = prefs_getValueInt(kChannelsKey, 2) == 1 ? Mp3Channels::mono : Mp3Channels::stereo;
    const int64_t bitrate = prefs_getValueInt(kBitrateKey, 128);
    settings.bitrate = bitrate > 0 && bitrate <= 320 ? static_cast<int>(bitrate) : 128;
    setEncodingSettings(settings);
}

void Mp3::saveSettings() {
    const Mp3EncodingSettings settings = encodingSettings();
    prefs_setValueInt(kChannelsKey, static_cast<int>(settings.channels));
    prefs_setValueInt(kBitrateKey, settings.bitrate);
}

void Mp3::setup() {
    userInteraction()->showPleaseWait("Additional installation",
                                      "Installing additional required components. It should take less "
                                      "than a minute. Please wait...");
    soxUt_toolPath(soxUt_kid3Name);
    soxUt_toolPath(soxUt_ffmpegName);
    userInteraction()->hidePleaseWait();
}

QString Mp3::kid3Path() {
    return soxUt_getKid3Path();
}

void Mp3::encode(const QString& from, const QString& to) {
    const Mp3EncodingSettings settings = encodingSettings();
    convertToMp3(from, to, settings.bitrate, settings.channels);
}

void Mp3::convertToMp3(const QString& src, const QString& dst, int kbitrate, Mp3Channels channels) {
    soxUt_runFFMpeg(ffArgs::encodeMp3(src, dst, kbitrate, static_cast<int>(channels)));
}

bool Mp3::encodeWithTags(const QString& from, const QString& to, const QString& title,
                         const QString& picturePath, const QString& showNotes,
                         const std::vector<QXMp3Chapter>& chapters, const QString& audioFilter) {
    qxLog("MP3.encodeWithTags");
    const Mp3EncodingSettings settings = encodingSettings();
    return convertToMp3WithTags(from, to, settings.bitrate, settings.channels, title, picturePath, showNotes,
                                chapters, audioFilter);
}

bool Mp3::convertToMp3WithTags(const QString& src, const QString& dst, int kbitrate,
                               [[maybe_unused]] Mp3Channels channels, const QString& title,
                               [[maybe_unused]] const QString& picturePath, const QString& showNotes,
                               const std::vector<QXMp3Chapter>& chapters, const QString& audioFilter) {
    qxLog("Mp3.convertToMp3WithTags");
    // The destination does not exist yet: the chapters end with the source.
    const auto duration = static_cast<float>(aUt_getAudioDuration(src));
    return withTags(dst, duration, title, showNotes, chapters, [&](const QString& tmp) {
        soxUt_runFFMpeg(ffArgs::encodeMp3Filtered(src, tmp, kbitrate, audioFilter));
    });
}

bool Mp3::encodeStreamWithTags(const std::function<QByteArray()>& pcm, int rate, int channels,
                               double duration, const QString& to, const QString& title,
                               const QString& showNotes, const std::vector<QXMp3Chapter>& chapters,
                               const QString& audioFilter) {
    qxLog("MP3.encodeStreamWithTags");
    const int kbitrate = encodingSettings().bitrate;
    return withTags(to, static_cast<float>(duration), title, showNotes, chapters, [&](const QString& tmp) {
        ProcessRequest request;
        request.program = soxUt_getFFMpegPath();
        request.arguments = ffArgs::encodeMp3FromPipe(rate, channels, tmp, kbitrate, audioFilter);
        request.keepOutput = false;
        request.input = pcm;
        request.logVector = true;
        request.label = "encoder";
        runProcess(request);
    });
}

bool Mp3::withTags(const QString& dst, float duration, const QString& title, const QString& showNotes,
                   const std::vector<QXMp3Chapter>& chapters,
                   const std::function<void(const QString& tmp)>& encode) {
    const QString tmp = toolFilePaths::withoutExtension(dst) + "_temp.mp3";
    QFile::remove(tmp);
    // In a private folder beside the destination: a "metadata.txt" of the user's there stays untouched.
    const QTemporaryDir metadataFolder(QFileInfo(dst).absolutePath() + "/.metadata-XXXXXX");
    const QString metadata = metadataFolder.isValid() ? metadataFolder.path() + "/metadata.txt" : QString();
    if (metadata.isEmpty() || !writeText(metadata, metadataText(dst, duration, title, showNotes, chapters)))
        userInteraction()->alert("Error",
                                 "Cannot write the tags file in " + QFileInfo(dst).absolutePath() + ".");

    qxLog("Convert to: " + tmp);
    encode(tmp);
    soxUt_runFFMpeg(ffArgs::appendMetadata(tmp, metadata, dst));
    qxLog("Appending metadata: " + metadata + " to " + tmp + " to dest " + dst);

    const bool made = QFileInfo::exists(dst);
    if (!made) userInteraction()->alert("Error", "Cannot create the MP3 file " + dst + ".");
    QFile::remove(tmp);
    QFile::remove(metadata);
    return made;
}

QString Mp3::metadataText(const QString& dst, float duration, const QString& title, const QString& showNotes,
                          const std::vector<QXMp3Chapter>& chapters) {
    QXMp3Tags tags(dst, duration);
    if (!title.isEmpty()) tags.addTitle(title);
    tags.addGenre("Podcast");
    if (!showNotes.isEmpty()) tags.addShowNotes(showNotes);
    tags.addYear(QString::number(QDate::currentDate().year()));
    for (const QXMp3Chapter& chapter : chapters)
        tags.addChapter(chapter.time, chapter.text);
    return endlessChaptersToTenHours(tags.getFFMpegString());
}

void Mp3::addTags(const QString& filePath, const std::vector<Mp3Tag>& tagList, bool add) {
    if (tagList.empty()) return;
    shell(kid3Path(), kid3Args::setTags(filePath, tagList, add), true);
}

void Mp3::convertToID3(const QString& filePath) {
    if (!QFileInfo(filePath).isFile()) {
        qxLog("Mp3.convertToID3: no file " + filePath);
        return;
    }
    PrivateCopy copy(filePath);
    if (!copy.placed()) {
        qxLog("Mp3.convertToID3: cannot set " + filePath + " apart");
        return;
    }
    shell(kid3Path(), kid3Args::convertToID3(copy.path()), true);
    if (!copy.putBack()) {
        qxLog("Mp3.convertToID3: cannot put back " + filePath + " from " + copy.path());
        userInteraction()->alert("Error", "Cannot put back " + filePath + ". It is in " + copy.path() + ".");
    }
}

int64_t Mp3::fileSizeByDuration(double duration) {
    return static_cast<int64_t>(encodingSettings().bitrate * 1000.0 * duration / 8.0);
}
