#pragma once
// What podcast directories ask of cover art: JPEG or PNG, square, 1400 to 3000 pixels a side. An image
// that misses gets a warning naming what is wrong and is still taken.

#include <QString>

// "" when the file passes; otherwise one sentence for the person.
QString artwork_problem(const QString& imagePath);
// Warns through the door when artwork_problem has something to say.
void artwork_warnIfRejected(const QString& imagePath);
