#pragma once
// Names derived from file names.

#include <QString>

namespace FUName {
// "<folder>/<name><suffix>.<ext>": the suffix goes before the extension ("a/b.wav" with "x" gives
// "a/bx.wav"); a name without an extension gets it at the end.
QString addSuffix(const QString& path, const QString& suffix);
// Digits and letters that no earlier call gave, fit for a file name.
QString newId();
} // namespace FUName
