#pragma once
// Sorts the paths of a drop from the desktop into the sound files that can become assets and the
// rest, each with the reason a person can act on. Any thread (probes the files).

#include <QString>
#include <QStringList>

struct DroppedFiles {
    QStringList audio;
    // One line per refused path: "<name>: <reason>".
    QStringList refused;

    static DroppedFiles sort(const QStringList& paths);
    // The alert text for the refused paths, "" when none was refused.
    QString refusedMessage() const;
};
