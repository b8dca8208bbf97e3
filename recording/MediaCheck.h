#pragma once
// The one check at the door of every place where a path becomes media (a drop, an ingest, a new
// asset, a relink, a recorder's finished file, a bundle's import): a regular, readable file, links
// resolved, that the probes read as audio with at least one frame, a known codec, 1-32 channels and
// 8-384 kHz. Special files are refused from their metadata alone, so no check ever opens a pipe or
// a device and waits on it. Any thread; a check may run the media prober once per file version.

#include <QString>
#include <optional>

// Nothing when the file is acceptable media, otherwise why not, phrased to follow the file's name:
// "cannot be found", "is a folder", "is not a regular file", "cannot be read", "is not audio",
// "has no sound in it".
std::optional<QString> mediaRefusal(const QString& path);

// "“<file name>” <reason>."
QString mediaRefusalText(const QString& path, const QString& reason);

// The check, and on refusal the message through the interaction door (title "Not Added").
// True when the file may go on.
bool mediaAcceptedOrTold(const QString& path);
