#pragma once
// A private folder for the intermediate files of one job, made beside its result so that the many
// files land on the same volume as the result and the final moves are renames.

#include <QString>

class TempFU {
public:
    // Makes "<parentPath>/<prefix><digits>/" at once; check created().
    TempFU(const QString& parentPath, const QString& prefix);

    QString tempFolder; // "<prefix><digits>"
    QString tempPath;   // the folder's full path, ending in "/"
    QString parentPath;

    bool created() const;
    // The folder plus the file part of `name`.
    QString getPath(const QString& name) const;
    // Copies the file of that name from the folder to parentPath; false when it did not happen.
    bool copyOutside(const QString& name) const;
    // Deletes the folder and everything in it.
    void remove() const;
};
