#include "app/cli/CommandLine.h"

#include "app/cli/CleanCommand.h"
#include "app/cli/ExportCommand.h"
#include "app/cli/ImportCommand.h"
#include "foundation/Interaction.h"

#include <QCoreApplication>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

const std::vector<CliCommand>& cli_commands() {
    static const std::vector<CliCommand> table{
        {"export", "Render an episode to an MP3 or WAV file, with loudness, tags and chapters.",
         &runExportCommand},
        {"clean", "Clean speech files: noise, hum, levels and dead air, beside each source.",
         &runCleanCommand},
        {"import", "Add the episode of a .zendepisode bundle to a show.", &runImportCommand},
    };
    return table;
}

namespace {

// Our own standard error, kept apart from descriptor 2, which the tools inherit.
FILE* ownStderr = stderr;
int toolStderrBackup = -1;

const CliCommand* findCommand(const QString& name) {
    for (const CliCommand& command : cli_commands())
        if (command.name == name) return &command;
    return nullptr;
}

// Qt names the program by the path it was started with; the usage line names it as people type it,
// with the command when there is one.
QString helpWithUsage(const QCommandLineParser& parser, const QString& command) {
    QString text = parser.helpText();
    const qsizetype at = text.indexOf("[options]");
    if (at < 0) return text;
    const QString program = QCoreApplication::applicationName();
    return "Usage: " + program + (command.isEmpty() ? QString() : " " + command) + " " + text.mid(at);
}

QString topLevelHelp(const QCommandLineParser& parser) {
    QString text = helpWithUsage(parser, {});
    text += "\nCommands:\n";
    for (const CliCommand& command : cli_commands())
        text += "  " + command.name.leftJustified(10) + " " + command.summary + "\n";
    text += "\nWithout a command the window opens. \"zendrel <command> --help\" describes a command.\n";
    return text;
}

int runTopLevel(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription("Zendrel: produce a podcast episode.");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument("command", "One of the commands below.", "[command]");
    if (!parser.parse(arguments)) return cli_fail("", parser.errorText(), kCliUsage);
    if (parser.isSet("version")) {
        cli_print(QCoreApplication::applicationName() + " " + QCoreApplication::applicationVersion());
        return kCliOk;
    }
    if (parser.isSet("help")) {
        std::fputs(qPrintable(topLevelHelp(parser)), stdout);
        return kCliOk;
    }
    const QStringList rest = parser.positionalArguments();
    return cli_fail("", rest.isEmpty() ? QString("no command given") : "unknown command \"" + rest[0] + "\"",
                    kCliUsage);
}

} // namespace

bool cli_isCommandLine(int argc, char** argv) {
    if (argc < 2) return false;
    const QString first = QString::fromLocal8Bit(argv[1]);
    // A bundle opened from the desktop: the window imports it.
    if (first.endsWith(".zendepisode", Qt::CaseInsensitive)) return false;
    // Anything else starting with "-" is an option of the window (Qt's own -platform, -style...).
    return !first.startsWith('-') || first == "--help" || first == "-h" || first == "--version" ||
           first == "-v" || first == "--help-all";
}

int cli_run(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("zendrel");
    QCoreApplication::setApplicationVersion(ZENDREL_VERSION);
    // No person to answer: alerts become log lines and every question gets OK.
    setUserInteraction(std::make_shared<ScriptedInteraction>());
    QStringList arguments = QCoreApplication::arguments();
    int status = kCliUsage;
    if (const CliCommand* command = findCommand(arguments.value(1))) {
        arguments.removeAt(1);
        cli_showToolOutput(false);
        status = command->run(arguments);
        cli_showToolOutput(true);
    } else {
        status = runTopLevel(arguments);
    }
    setUserInteraction(nullptr);
    return status;
}

int cli_parse(QCommandLineParser& parser, const QString& command, const QStringList& arguments) {
    const QCommandLineOption help(QStringList{"h", "help"}, "Show this help.");
    parser.addOption(help);
    if (!parser.parse(arguments)) return cli_fail(command, parser.errorText(), kCliUsage);
    if (parser.isSet(help)) {
        std::fputs(qPrintable(helpWithUsage(parser, command)), stdout);
        return kCliOk;
    }
    return -1;
}

int cli_fail(const QString& command, const QString& message, int status) {
    const QString prefix = command.isEmpty() ? QString("zendrel: ") : "zendrel " + command + ": ";
    std::fprintf(ownStderr, "%s\n", qPrintable(prefix + message));
    std::fflush(ownStderr);
    return status;
}

void cli_showToolOutput(bool on) {
    std::fflush(stderr);
    if (on && toolStderrBackup >= 0) {
        dup2(toolStderrBackup, STDERR_FILENO);
        if (ownStderr != stderr) std::fclose(ownStderr);
        ownStderr = stderr;
        close(toolStderrBackup);
        toolStderrBackup = -1;
    } else if (!on && toolStderrBackup < 0) {
        toolStderrBackup = dup(STDERR_FILENO);
        const int ownCopy = dup(STDERR_FILENO);
        const int nowhere = open("/dev/null", O_WRONLY);
        if (toolStderrBackup < 0 || ownCopy < 0 || nowhere < 0) return;
        dup2(nowhere, STDERR_FILENO);
        close(nowhere);
        if (FILE* own = fdopen(ownCopy, "w")) ownStderr = own;
    }
}

void cli_print(const QString& line) {
    std::fprintf(stdout, "%s\n", qPrintable(line));
    std::fflush(stdout);
}
