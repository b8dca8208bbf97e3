#pragma once
// One external component: its name in the components folder, where it lies, where it is fetched from.

#include <QString>

struct ASItem {
    QString id;
    QString localPath;
    QString remotePath;
};
