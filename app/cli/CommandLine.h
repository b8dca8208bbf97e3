#pragma once
// The application's one command-line parser. `zendrel` alone opens the window; `zendrel <command> ...`
// runs that command with no window and no display (QCoreApplication), prints to the terminal and
// ends with its exit status. Each command lives in its own <Name>Command file and has one entry in
// the table of CommandLine.cpp.

#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <vector>

struct CliCommand {
    QString name;
    QString summary;
    // arguments[0] is the program name, the command's own options and positionals follow.
    int (*run)(const QStringList& arguments);
};

const std::vector<CliCommand>& cli_commands();

// True when argv asks for a command, --help or --version rather than the window.
bool cli_isCommandLine(int argc, char** argv);
// Runs the command argv names under a QCoreApplication; the process exit status.
int cli_run(int argc, char** argv);

// Exit statuses of every command.
constexpr int kCliOk = 0;
constexpr int kCliFailed = 1;
constexpr int kCliUsage = 2;

// Parses a command's arguments. --help prints the command's help and gives kCliOk; a parse error
// prints one line on stderr and gives kCliUsage; otherwise -1 and the parser holds the values.
int cli_parse(QCommandLineParser& parser, const QString& command, const QStringList& arguments);
// "zendrel <command>: <message>" on stderr; returns status.
int cli_fail(const QString& command, const QString& message, int status = kCliFailed);
// The tools a command runs write to this process's standard error; by default that goes nowhere, so
// that a failing command's one line stands alone. On shows their output again.
void cli_showToolOutput(bool on);
// One line on stdout, flushed at once (progress lines are read while the command runs).
void cli_print(const QString& line);
