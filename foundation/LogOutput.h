#pragma once
// Where qxLog's lines go besides the sinks: standard output, unless switched off by a command of the
// command line that keeps standard output for its own lines.

void setLogToStandardOutput(bool on);
