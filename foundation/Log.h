#pragma once
// Plain log lines to standard output. Tests may add a sink to read what was logged.

#include <QString>
#include <functional>

void qxLog(const QString& line);

using LogSink = std::function<void(const QString&)>;

// Returns a token to pass to removeLogSink; sinks may be called from any thread.
int addLogSink(LogSink sink);
void removeLogSink(int token);
