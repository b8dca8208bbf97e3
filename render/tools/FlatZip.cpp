#include "render/tools/FlatZip.h"

#include "render/tools/ProcessRunner.h"
#include "render/tools/ToolArgs.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QStorageInfo>
#include <sys/stat.h>

namespace {

// Far beyond any real episode, far below what would fill a disk by surprise.
constexpr int64_t kMaxEntries = 20000;
// Bytes unzip may write past the declared total before it is stopped (a poll's worth).
constexpr int64_t kWriteSlack = 1 << 20;

QString tool(const QString& name) {
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? "/usr/bin/" + name : found;
}

FlatZipResult failure(const QString& error) {
    FlatZipResult result;
    result.error = error;
    return result;
}

QString readable(int64_t bytes) {
    return QString::number(static_cast<double>(bytes) / (1024.0 * 1024.0 * 1024.0), 'f', 1) + " GB";
}

// Sum of the sizes of what lies in the folder, links not followed.
int64_t bytesIn(const QString& folder) {
    int64_t total = 0;
    const QFileInfoList infos =
        QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& info : infos)
        total += info.isSymLink() ? 0 : info.size();
    return total;
}

} // namespace

std::optional<FlatZipListing> flatZip_parseListing(const QByteArray& text) {
    // "-rw-r--r--  3.0 unx   3 tx   5 defN 26-Nov-24 00:43 name": mode, version, system, size,
    // type and encryption (upper case when encrypted), compressed size, method, date, time, name.
    static const QRegularExpression entryLine(
        R"(^(\S)\S{9}\s+\S+\s+\S+\s+(\d+)\s+(\S)\S?\s+(\d+)\s+\S+\s+\S+\s+\S+ (.*)$)");
    static const QRegularExpression header(R"(^Zip file size: \d+ bytes, number of entries: (\d+)$)");
    FlatZipListing listing;
    bool sawHeader = false;
    for (const QByteArray& raw : text.split('\n')) {
        const QString line = QString::fromUtf8(raw);
        if (const auto m = header.match(line); m.hasMatch()) {
            listing.declaredEntries = m.captured(1).toLongLong();
            sawHeader = true;
        } else if (const auto e = entryLine.match(line); e.hasMatch() && sawHeader) {
            FlatZipEntry entry;
            entry.kind = e.captured(1).at(0).toLatin1();
            entry.size = e.captured(2).toLongLong();
            entry.encrypted = e.captured(3).at(0).isUpper();
            entry.compressedSize = e.captured(4).toLongLong();
            entry.name = e.captured(5);
            listing.entries.push_back(entry);
        }
    }
    if (!sawHeader) return std::nullopt;
    return listing;
}

QString flatZip_nameProblem(const QString& name) {
    if (name.isEmpty()) return "an entry without a name";
    if (name == "." || name == "..") return "an entry named \"" + name + "\"";
    if (name.contains('/') || name.contains('\\')) return "an entry with a folder in its name (" + name + ")";
    for (const QChar c : name)
        if (c.category() == QChar::Other_Control) return "an entry with a control character in its name";
    if (name.toUtf8().size() > 255) return "an entry with a name longer than 255 bytes";
    return {};
}

QString flatZip_listingProblem(const FlatZipListing& listing, int64_t maxTotalBytes) {
    if (listing.declaredEntries != static_cast<int64_t>(listing.entries.size()))
        return "its list of entries cannot be read";
    if (listing.declaredEntries > kMaxEntries)
        return "it holds more than " + QString::number(kMaxEntries) + " entries";
    QSet<QString> seen;
    int64_t total = 0;
    for (const FlatZipEntry& entry : listing.entries) {
        if (const QString problem = flatZip_nameProblem(entry.name); !problem.isEmpty())
            return "it holds " + problem;
        switch (entry.kind) {
        case '-':
        case '?':
            break;
        case 'd':
            return "it holds a folder (" + entry.name + ")";
        case 'l':
            return "it holds a symbolic link (" + entry.name + ")";
        default:
            return "it holds a device, pipe or socket (" + entry.name + ")";
        }
        if (entry.encrypted) return "it holds an encrypted entry (" + entry.name + ")";
        if (seen.contains(entry.name)) return "it holds two entries named \"" + entry.name + "\"";
        seen.insert(entry.name);
        if (entry.size < 0 || entry.size > maxTotalBytes - total)
            return "it would unpack to more than " + readable(maxTotalBytes);
        total += entry.size;
    }
    return {};
}

FlatZipResult flatZip_create(const QString& zipPath, const QStringList& files,
                             std::function<bool()> cancelled) {
    QSet<QString> names;
    for (const QString& file : files) {
        const QString name = QFileInfo(file).fileName();
        if (names.contains(name)) return failure("two files named \"" + name + "\"");
        names.insert(name);
    }
    // zip adds to an archive that is there already.
    QFile::remove(zipPath);
    const ProcessResult run = runProcess({.program = tool("zip"),
                                          .arguments = zipArgs::create(zipPath, files),
                                          .errors = ProcessErrors::merge,
                                          .cancelled = std::move(cancelled),
                                          .label = "zip"});
    if (!run.finished || run.exitCode != 0 || !QFileInfo(zipPath).isFile()) {
        QFile::remove(zipPath);
        return failure(run.finished ? "zip failed: " + QString::fromUtf8(run.output).trimmed()
                                    : QString("zip was stopped"));
    }
    FlatZipResult result;
    result.ok = true;
    result.files = QStringList(names.cbegin(), names.cend());
    return result;
}

FlatZipResult flatZip_extract(const QString& zipPath, const QString& folder, int64_t maxTotalBytes) {
    if (!QFileInfo(zipPath).isFile()) return failure("it is not a file");
    const ProcessResult listed = runProcess({.program = tool("unzip"),
                                             .arguments = zipArgs::list(zipPath),
                                             .errors = ProcessErrors::discard,
                                             .timeoutMs = 60000,
                                             .label = "unzip -Z"});
    const auto listing =
        listed.finished && listed.exitCode == 0 ? flatZip_parseListing(listed.output) : std::nullopt;
    if (!listing) return failure("it is not a zip archive");
    const int64_t available = QStorageInfo(folder).bytesAvailable();
    const int64_t bound = available > 0 ? std::min(maxTotalBytes, available) : maxTotalBytes;
    if (const QString problem = flatZip_listingProblem(*listing, bound); !problem.isEmpty())
        return failure(problem);

    int64_t declared = 0;
    for (const FlatZipEntry& entry : listing->entries)
        declared += entry.size;
    bool overrun = false;
    const ProcessResult unpacked = runProcess({.program = tool("unzip"),
                                               .arguments = zipArgs::extract(zipPath, folder),
                                               .errors = ProcessErrors::discard,
                                               .keepOutput = false,
                                               .cancelled =
                                                   [&] {
                                                       overrun = bytesIn(folder) > declared + kWriteSlack;
                                                       return overrun;
                                                   },
                                               .label = "unzip"});
    if (overrun) return failure("its content is larger than its directory declares");
    if (!unpacked.finished || unpacked.exitCode != 0)
        return failure("it is damaged (unzip could not unpack it)");

    // The folder must hold exactly the listed plain files, each of its declared size.
    QStringList files;
    const QStringList present =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (present.size() != static_cast<qsizetype>(listing->entries.size()))
        return failure("it unpacked to other files than it lists");
    for (const FlatZipEntry& entry : listing->entries) {
        struct stat st {};
        const QByteArray local = QFile::encodeName(folder + "/" + entry.name);
        if (lstat(local.constData(), &st) != 0 || !S_ISREG(st.st_mode))
            return failure("it unpacked to other files than it lists");
        if (static_cast<int64_t>(st.st_size) != entry.size)
            return failure("the size of \"" + entry.name + "\" differs from what its directory declares");
        files << entry.name;
    }
    FlatZipResult result;
    result.ok = true;
    result.files = files;
    return result;
}
