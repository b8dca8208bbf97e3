#include "recording/TimeReference.h"

#include "recording/AudioProbes.h"
#include "render/tools/Shell.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolPaths.h"

int64_t aUt_timeReferenceFromDescription(const QString& description) {
    const QString label = "time_reference  : ";
    const qsizetype at = description.indexOf(label);
    if (at < 0) return 0;
    const qsizetype start = at + label.size();
    const qsizetype end = description.indexOf(u'\n', start);
    bool ok = false;
    const qlonglong value = description.mid(start, end < 0 ? -1 : end - start).trimmed().toLongLong(&ok);
    return ok ? value : 0;
}

int64_t aUt_getAudioTimeReference(const QString& path) {
    return aUt_timeReferenceFromDescription(shell2(soxUt_getFFMpegPath(), ffArgs::describe(path)));
}

double aUt_getTimeStart(const QString& path) {
    const int64_t reference = aUt_getAudioTimeReference(path);
    const int frequency = aUt_getAudioFrequency(path);
    if (reference == 0 || frequency <= 0) return 0.0;
    return static_cast<double>(reference) / frequency;
}
