#pragma once
// The two path globals of a show and the translation of stored paths. workFolder and ingestPath
// are written at start-up and on a change of working folder, on the main thread; every path that
// goes into an archive passes savePath so that a working folder can move as a whole.

#include <QString>
#include <functional>
#include <optional>

class AEIngest {
public:
    // Creates the folder and fixes ingestPath (with a trailing "/").
    explicit AEIngest(const QString& ingestPath);

    static QString workFolder; // always ends with "/"
    static QString ingestPath; // workFolder + "AssetIngests/"

    static constexpr const char* kWorkFolderToken = "[%WORKFOLDER%]";

    // Reads "WorkingFolder" (asking the person only when it is ""), sets and returns workFolder.
    static QString getWorkFolder();
    // The user's Documents folder, without a trailing "/".
    static QString documentsFolder();
    static QString savePath(const QString& path);
    static QString loadPath(const QString& path);
    // False for an empty name: the folder itself is no ingested file.
    static bool isIngested(const QString& ingestedName);
    // The name a file with this content digest gets in the ingest folder.
    static QString ingestedName(const QString& originalFilePath, const QString& md5);
    // Copies a file into the ingest folder as <safe name>___<8 hex>.<ext>; nothing when it is missing,
    // not a regular file (never opened), unreadable, or the copy could not be made. Any content: images
    // of shows and episodes come this way too.
    // knownMd5, when given, is the file's digest already taken, which spares a second full read.
    static std::optional<QString> ingest(const QString& originalFilePath,
                                         const QString& knownMd5 = QString());
    // ingest for sound: nothing, and nothing copied, for a file the media check refuses (logged).
    static std::optional<QString> ingestMedia(const QString& originalFilePath,
                                              const QString& knownMd5 = QString());
    // ingestMedia on a background queue; the callback runs there, with the original path and the result.
    static void asyncIngest(const QString& originalFilePath,
                            std::function<void(const QString&, const std::optional<QString>&)> callback,
                            const QString& knownMd5 = QString());
};
