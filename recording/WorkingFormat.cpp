#include "recording/WorkingFormat.h"

#include "recording/AudioProbes.h"
#include "render/tools/SoxConvert.h"

#include <optional>

void soxUt_convertToMono16(const QString& srcFilePath, const QString& dstFilePath, bool normalize) {
    const int frequency = aUt_getAudioFrequency(srcFilePath);
    // An unreadable rate is left to SoX, which keeps the source's.
    soxUt_convert(srcFilePath, dstFilePath, frequency > 0 ? std::optional<int>(frequency) : std::nullopt, 1,
                  16, normalize);
}
