#include "recording/ReadableAudio.h"

#include "foundation/Log.h"
#include "render/tools/ProcessRunner.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolPaths.h"

#include <QFileInfo>

namespace {
// An hour of coded audio decodes in well under a minute; this only guards against a hung converter.
constexpr int kDecodeTimeoutMs = 10 * 60 * 1000;
} // namespace

ReadableAudio::ReadableAudio(std::unique_ptr<QTemporaryDir> folder, const QString& path)
    : decodedFolder_(std::move(folder)), file_(path) {}

std::unique_ptr<ReadableAudio> ReadableAudio::open(const QString& path) {
    if (path.isEmpty() || !QFileInfo(path).isFile()) return nullptr;
    std::unique_ptr<ReadableAudio> direct(new ReadableAudio(nullptr, path));
    if (direct->file_.isOpen()) return direct;

    auto folder = std::make_unique<QTemporaryDir>();
    if (!folder->isValid()) return nullptr;
    const QString decodedPath = folder->filePath("decoded.wav");
    ProcessRequest request{.program = soxUt_getFFMpegPath(),
                           .arguments = ffArgs::decodeToFloatWav(path, decodedPath),
                           .errors = ProcessErrors::discard,
                           .keepOutput = false,
                           .timeoutMs = kDecodeTimeoutMs};
    request.label = "ReadableAudio.open";
    if (!runProcess(request).finished) {
        qxLog("ReadableAudio.open: the converter did not finish with " + path);
        return nullptr;
    }
    // Success is the output file, not the exit code.
    std::unique_ptr<ReadableAudio> decoded(new ReadableAudio(std::move(folder), decodedPath));
    if (!decoded->file_.isOpen()) return nullptr;
    return decoded;
}
