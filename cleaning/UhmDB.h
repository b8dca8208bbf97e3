#pragma once
// The hesitation fingerprint database of a show. For now it only knows where it lives.

#include <QString>

class UhmDB {
public:
    explicit UhmDB(QString path) : path(std::move(path)) {}
    QString path;
};
