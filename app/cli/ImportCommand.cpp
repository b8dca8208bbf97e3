#include "app/cli/ImportCommand.h"

#include "app/cli/CommandLine.h"
#include "foundation/LogOutput.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

namespace {
const QString kCommand = "import";
} // namespace

int runImportCommand(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription("Add the episode of a .zendepisode bundle to a show, with no window.");
    const QCommandLineOption workFolder("work-folder", "The working folder of the show (show.AEShow).",
                                        "DIR");
    const QCommandLineOption verbose("verbose", "Print the log as well.");
    parser.addOptions({workFolder, verbose});
    parser.addPositionalArgument("FILE", "The bundle to import.", "FILE.zendepisode");
    if (const int status = cli_parse(parser, kCommand, arguments); status >= 0) return status;
    setLogToStandardOutput(parser.isSet(verbose));
    cli_showToolOutput(parser.isSet(verbose));

    if (!parser.isSet(workFolder)) return cli_fail(kCommand, "--work-folder is required", kCliUsage);
    if (parser.positionalArguments().size() != 1)
        return cli_fail(kCommand, "give exactly one bundle", kCliUsage);
    const QString bundle = QFileInfo(parser.positionalArguments().front()).absoluteFilePath();
    if (!QFileInfo(bundle).isFile()) return cli_fail(kCommand, "no such bundle: " + bundle);
    const QString folder = QDir(parser.value(workFolder)).absolutePath() + "/";
    if (!QFileInfo(folder).isDir()) return cli_fail(kCommand, "no such folder: " + folder);

    // A folder without a show receives its first episode into a new one.
    const QString showPath = folder + "show.AEShow";
    AEIngest::workFolder = folder;
    AEIngest ingest(folder + "AssetIngests");
    const auto show = QFileInfo::exists(showPath) ? AEShow::load(showPath) : std::make_shared<AEShow>("");
    if (QFileInfo::exists(showPath) && show->name.isEmpty() && show->episodes.empty())
        return cli_fail(kCommand, "cannot read the show " + showPath);
    zendrelShow = show;
    AEAssetListVCGlobal = show->commonAssets;

    const AEEpisodeImport imported = AEEpisode::importEpisode(bundle);
    if (!imported.episode) return cli_fail(kCommand, imported.error);
    if (!show->save(showPath)) return cli_fail(kCommand, "cannot write " + showPath);
    cli_print("Imported " + imported.episode->episodeId + " \"" + imported.episode->title + "\" into " +
              folder);
    return kCliOk;
}
