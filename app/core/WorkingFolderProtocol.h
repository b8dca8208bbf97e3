#pragma once
// What the working folder panel asks of its owner (the application delegate).

#include <QString>

class WorkingFolderProtocol {
public:
    virtual ~WorkingFolderProtocol() = default;
    // `to` is the chosen folder, without a trailing "/".
    virtual void workingFolderChange(const QString& to) = 0;
    virtual void workingFolderMove(const QString& to) = 0;
};
