#pragma once
// The commands the components store runs: the argument vectors, built apart from running them, and the
// one runner.

#include <QString>
#include <QStringList>

inline const QString asCmd_curlPath = "/usr/bin/curl";
inline const QString asCmd_unzipPath = "/usr/bin/unzip";

// -f keeps an HTTP error page from being saved as the archive; -L follows a server's redirect.
QStringList asCmd_curlDownload(const QString& remotePath, const QString& localPath);
// A HEAD request that succeeds on any HTTP answer, bounded in time.
QStringList asCmd_curlProbe(const QString& url);
// -o: an archive fetched again replaces what is there instead of asking on a closed standard input.
QStringList asCmd_unzip(const QString& archivePath, const QString& folder);

// Runs the program with the arguments (no shell) and waits; output is discarded. The exit code, or -1
// when the program could not start or crashed.
int asCmd_run(const QString& program, const QStringList& arguments);
