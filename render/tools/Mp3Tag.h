#pragma once
// One tag edit for the tag editor: a kid3 tag name ("title", "picture:'<path>'", ...) and its text.

#include <QString>

struct Mp3Tag {
    QString tag;
    QString value;
};
