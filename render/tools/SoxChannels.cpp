#include "render/tools/SoxChannels.h"

#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFilePaths.h"
#include "render/tools/ToolPaths.h"

#include <memory>
#include <mutex>

void soxUt_combineLRChannels(const QString& srcLeftPath, const QString& srcRightPath,
                             const QString& dstPath) {
    fu_deleteFile(dstPath);
    soxUt_runSox(soxArgs::combineLRChannels(srcLeftPath, srcRightPath, dstPath));
}

void soxUt_joinChannels(const QStringList& srcPaths, const QString& dstPath) {
    fu_deleteFile(dstPath);
    soxUt_runSox(soxArgs::joinChannels(srcPaths, dstPath));
}

void soxUt_extractChannel(const QString& srcPath, const QString& dstPath, int channelN) {
    fu_deleteFile(dstPath);
    soxUt_runSox(soxArgs::extractChannel(srcPath, dstPath, channelN));
}

int soxUt_getNChannels(const QString& srcPath) {
    if (!fu_fileExists(srcPath)) return 0;
    bool ok = false;
    const int n = soxUt_runSox(soxArgs::channelCount(srcPath)).trimmed().toInt(&ok);
    return ok && n > 0 ? n : 0;
}

void soxUt_splitChannels(const QString& srcPath, const QString& dstPath,
                         std::function<void(const QStringList& paths)> callback) {
    const int nChannels = soxUt_getNChannels(srcPath);
    if (nChannels == 0) {
        if (callback) callback({});
        return;
    }
    struct Collected {
        std::mutex mutex;
        QStringList paths;
    };
    auto collected = std::make_shared<Collected>();
    const QString stem = toolFilePaths::withoutExtension(dstPath);
    const QString extension = dstPath.mid(stem.size());
    for (int n = 1; n <= nChannels; ++n) {
        const QString path = stem + "_" + QString::number(n) + extension;
        Queue::execute(
            [=] {
                soxUt_extractChannel(srcPath, path, n);
                QStringList all;
                {
                    std::lock_guard lock(collected->mutex);
                    collected->paths << path;
                    if (collected->paths.size() < nChannels) return;
                    all = collected->paths;
                }
                if (callback) callback(all);
            },
            true);
    }
}
