#include "recording/MediaProbe.h"

#include "foundation/Log.h"
#include "render/tools/ProcessRunner.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolPaths.h"

namespace {
constexpr int kProbeTimeoutMs = 20000;
}

QByteArray runMediaProbe(const QString& path) {
    ProcessRequest request{.program = soxUt_getFFProbePath(),
                           .arguments = ffprobeArgs::probeJson(path),
                           .errors = ProcessErrors::discard,
                           .timeoutMs = kProbeTimeoutMs};
    request.label = "runMediaProbe";
    const ProcessResult result = runProcess(request);
    if (!result.finished) {
        qxLog("runMediaProbe: no answer for " + path);
        return {};
    }
    // The exit status says nothing useful here: an unreadable file simply gives no audio stream.
    return result.output;
}
