#pragma once
// Runs the media prober on a file for its format and first audio stream as JSON. Blocks the caller;
// any thread.

#include <QByteArray>
#include <QString>

// The JSON text; empty when the prober is missing, fails or takes longer than a few seconds.
QByteArray runMediaProbe(const QString& path);
