#pragma once
// Dates as the user reads them. Month names are English whatever the user's locale, so texts
// written into file names and logs stay the same on every machine.

#include <QDateTime>
#include <QString>
#include <optional>

QString du_getCompactDate(const QDateTime& date);        // "05Mar24"
QString du_getMonthName(const QDateTime& date);          // "March"
QString du_getMonth3LettersName(const QDateTime& date);  // "Mar"
QString du_getCompactNumericDate(const QDateTime& date); // "05.03.24"
QString du_getCompactTime(const QDateTime& date);        // "1437"
// "05 Mar 24", or "05 Mar  14:37" with the time (no year then).
QString du_getSimpleDate(const QDateTime& date, bool includeTime);
QString du_getSimpleTime(const QDateTime& date); // "14:37"
// Year, day, then *minutes*: "20240537" for 5 March 2024 14:37. Kept as it always was; not a sort key.
QString du_get8date(const QDateTime& date);
QString du_getComplete(const QDateTime& date);           // "05.Mar.24 14:37:09"
QString du_getCompactTimeSec(const QDateTime& date);     // "143709"
QString du_getCompactTimeSecTC(const QDateTime& date);   // "14:37:09"
QString du_getDateString(const QDateTime& date);         // "05/03/2024"
QString du_getCompactDateTime(const QDateTime& date);    // "05Mar24-1437"
QString du_getCompactDateTimeSec(const QDateTime& date); // "05Mar24-143709"
QString du_get86Date(const QDateTime& date);             // "20240537_143709"

// Local midnight of that day; empty when the numbers name no day (31 February).
std::optional<QDateTime> du_createDate(int d, int m, int y);
