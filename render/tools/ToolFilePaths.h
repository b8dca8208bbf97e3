#pragma once
// Path pieces the tool commands derive their helper files from.

#include <QString>

namespace toolFilePaths {
// The path with its last extension removed: "/a/b.c.wav" -> "/a/b.c"; a path without one is unchanged.
QString withoutExtension(const QString& path);
// The last extension in lower case, without the dot; "" when there is none.
QString extensionLower(const QString& path);
// Relative paths are made absolute, so no file name can reach a tool as an option ("-x.wav") or as a
// SoX pipe ("|cmd"). "" stays "".
QString forTool(const QString& path);
} // namespace toolFilePaths
