#pragma once
// What to do when one or both copies of a user's file are missing: restore the one from the other,
// or ask the person where the original went.

#include <QString>
#include <optional>

struct IngestCheckResult {
    std::optional<QString> originalPath;
    std::optional<QString> ingestedPath;
    bool ingested = false;
};

class Ingest {
public:
    static bool ingested(const QString& ingestedPath);
    // Asks the person for the original; nothing when they cancel.
    static std::optional<QString> find(const QString& originalPath);
    static IngestCheckResult check(const QString& originalPath, const QString& ingestedPath,
                                   bool forceIngest = true, bool forceOutgest = false,
                                   bool askIfMissing = true);
};
