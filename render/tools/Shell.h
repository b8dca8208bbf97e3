#pragma once
// Synchronous runners of external programs. Arguments always travel as a list straight to the
// program: no shell ever parses a file name. Standard input is the null device, so a tool that asks a
// question reads end of file instead of waiting. Exit statuses are not looked at: a failed run shows
// as a missing or empty output file. Any thread; each call blocks until the program has ended.

#include <QString>
#include <QStringList>

// Standard output on a pipe, read to end of file (so a talkative tool cannot block on a full pipe),
// decoded as UTF-8, its last character (the final newline) dropped. Standard error is forwarded to
// ours. "" when ignoreOut (output discarded, the run still awaited), when the output is empty or not
// UTF-8, and when launchPath does not exist, which also raises the "Warning" alert.
QString shell(const QString& launchPath, const QStringList& arguments, bool ignoreOut = false);

// As shell, but standard error shares the pipe with standard output and nothing is dropped.
QString shell2(const QString& launchPath, const QStringList& arguments);

// Finds a program on the user's search path with a login shell's "which", then runs it with the
// arguments through shell. The shell only ever sees "which" and the name, so a name that is not
// letters, digits and "-_.+" (or starts with "-") is refused: a log line and "".
QString bash(const QString& command, const QStringList& arguments);

// True when the program is there; otherwise raises the "Warning" alert naming it (headless: a log line).
bool launchPathOrAlert(const QString& launchPath);

// The program's standard output, run with no arguments.
QString fu_executeShell(const QString& launchPath);
