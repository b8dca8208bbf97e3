#pragma once
// `zendrel export`: renders one episode of a working folder to an MP3 or WAV file with no window,
// printing progress and, at the end, the export report.

#include <QStringList>

int runExportCommand(const QStringList& arguments);
