#pragma once
// Flat zip archives through the distribution's zip and unzip. Unpacking an archive that came from
// elsewhere is where a hostile file meets the program, so it reads the archive's directory first and
// refuses, before anything is written, entries that are not plain files with plain names (folders,
// links, devices, pipes, "../", absolute paths), duplicate or encrypted entries, and sizes past a
// bound; while unzip runs it watches the bytes written against what the directory declared, and at the
// end the folder must hold exactly the declared files. Any thread; blocking.

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

struct FlatZipEntry {
    QString name;
    char kind = '-'; // first letter of the mode: '-' (or '?' for no type) a file, 'd', 'l', 'p', 'c'...
    bool encrypted = false;
    int64_t size = 0;
    int64_t compressedSize = 0;
};

struct FlatZipListing {
    std::vector<FlatZipEntry> entries;
    // What the archive's header says, against the entries read: a mismatch means an unreadable line.
    int64_t declaredEntries = -1;
};

// The text of `unzip -Z -l`; nothing when it is not such a listing.
std::optional<FlatZipListing> flatZip_parseListing(const QByteArray& text);
// "" when a name can be a file of a flat folder: not empty, no "/" or "\", not "." or "..", no control
// character, at most 255 bytes.
QString flatZip_nameProblem(const QString& name);
// "" when every entry may be unpacked into a flat folder within maxTotalBytes; else the reason.
QString flatZip_listingProblem(const FlatZipListing& listing, int64_t maxTotalBytes);

struct FlatZipResult {
    bool ok = false;
    QString error;     // one line for a person, when not ok
    QStringList files; // ok: the names unpacked
};

// Zips the files (absolute paths, distinct file names) into a new archive at zipPath.
FlatZipResult flatZip_create(const QString& zipPath, const QStringList& files,
                             std::function<bool()> cancelled = {});
// Unpacks into folder, which must exist and be empty, after the checks above. maxTotalBytes bounds
// the whole; the free space of folder's volume bounds it too. On failure the folder may hold part of
// the files: the caller removes it.
FlatZipResult flatZip_extract(const QString& zipPath, const QString& folder, int64_t maxTotalBytes);
