#include "project/model/Ingest.h"

#include "foundation/FileUtils.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "project/model/AEIngest.h"

#include <QFileInfo>

bool Ingest::ingested(const QString& ingestedPath) {
    return fu_fileExists(ingestedPath);
}

std::optional<QString> Ingest::find(const QString& originalPath) {
    qxLog("Ingest.find (" + originalPath + ")");
    const QFileInfo info(originalPath);
    const QString chosen =
        fu_selectFile("Find original path", "Find " + info.fileName(), {info.suffix()}, info.path());
    if (chosen.isEmpty()) return std::nullopt;
    return chosen;
}

IngestCheckResult Ingest::check(const QString& original, const QString& copy, bool forceIngest,
                                bool forceOutgest, bool askIfMissing) {
    qxLog("Ingest.check (" + original + ", " + copy + ")");
    IngestCheckResult result{original, copy, false};
    const bool originalThere = fu_fileExists(original);
    const bool copyThere = fu_fileExists(copy);
    if (originalThere && copyThere) {
        result.ingested = true;
    } else if (!originalThere && copyThere) {
        if (forceOutgest) {
            fu_copyFile(copy, original);
            if (!fu_fileExists(original)) result.originalPath.reset();
        }
    } else if (originalThere && !copyThere) {
        if (forceIngest) {
            result.ingestedPath = AEIngest::ingestMedia(original);
            if (result.ingestedPath) {
                fu_copyFile(original, *result.ingestedPath); // no-op when ingest made it
                if (fu_fileExists(*result.ingestedPath))
                    result.ingested = true;
                else
                    result.ingestedPath.reset();
            }
        }
    } else if (askIfMissing && (!original.isEmpty() || !copy.isEmpty())) {
        result.originalPath = find(original);
        if (result.originalPath) return check(*result.originalPath, copy, forceIngest, forceOutgest, false);
    } else {
        result.originalPath.reset();
        result.ingestedPath.reset();
    }
    return result;
}
