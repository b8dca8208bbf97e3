#include "recording/ReadableAudio.h"

#include "foundation/Log.h"
#include "render/tools/ToolPaths.h"

#include <QFileInfo>
#include <QProcess>

namespace {
// An hour of coded audio decodes in well under a minute; this only guards against a hung converter.
constexpr int kDecodeTimeoutMs = 10 * 60 * 1000;
} // namespace

ReadableAudio::ReadableAudio(std::unique_ptr<QTemporaryDir> folder, const QString& path)
    : decodedFolder_(std::move(folder)), file_(path) {}

QStringList ReadableAudio::decodeArguments(const QString& path, const QString& decodedPath) {
    // -rf64 auto keeps outputs past 4 GB readable.
    return {"-nostdin", "-v",    "error", "-i",        "file:" + path,
            "-map",     "0:a:0", "-c:a",  "pcm_f32le", "-rf64",
            "auto",     "-f",    "wav",   "-y",        "file:" + decodedPath};
}

std::unique_ptr<ReadableAudio> ReadableAudio::open(const QString& path) {
    if (path.isEmpty() || !QFileInfo(path).isFile()) return nullptr;
    std::unique_ptr<ReadableAudio> direct(new ReadableAudio(nullptr, path));
    if (direct->file_.isOpen()) return direct;

    auto folder = std::make_unique<QTemporaryDir>();
    if (!folder->isValid()) return nullptr;
    const QString decodedPath = folder->filePath("decoded.wav");
    QProcess process;
    process.start(soxUt_getFFMpegPath(), decodeArguments(path, decodedPath));
    if (!process.waitForStarted() || !process.waitForFinished(kDecodeTimeoutMs)) {
        qxLog("ReadableAudio.open: the converter did not finish with " + path);
        return nullptr;
    }
    // Success is the output file, not the exit code.
    std::unique_ptr<ReadableAudio> decoded(new ReadableAudio(std::move(folder), decodedPath));
    if (!decoded->file_.isOpen()) return nullptr;
    return decoded;
}
