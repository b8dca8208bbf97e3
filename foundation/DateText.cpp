#include "foundation/DateText.h"

#include "foundation/StrUt.h"

#include <QLocale>

namespace {
QString format(const QDateTime& date, const QString& pattern) {
    return QLocale::c().toString(date, pattern);
}
} // namespace

QString du_getCompactDate(const QDateTime& date) {
    return format(date, "ddMMMyy");
}

QString du_getMonthName(const QDateTime& date) {
    return format(date, "MMMM");
}

QString du_getMonth3LettersName(const QDateTime& date) {
    return format(date, "MMM");
}

QString du_getCompactNumericDate(const QDateTime& date) {
    return format(date, "dd.MM.yy");
}

QString du_getCompactTime(const QDateTime& date) {
    return format(date, "HHmm");
}

QString du_getSimpleDate(const QDateTime& date, bool includeTime) {
    return format(date, includeTime ? "dd MMM  HH:mm" : "dd MMM yy");
}

QString du_getSimpleTime(const QDateTime& date) {
    return format(date, "HH:mm");
}

QString du_get8date(const QDateTime& date) {
    return format(date, "yyyyddmm");
}

QString du_getComplete(const QDateTime& date) {
    return format(date, "dd.MMM.yy HH:mm:ss");
}

QString du_getCompactTimeSec(const QDateTime& date) {
    return format(date, "HHmmss");
}

QString du_getCompactTimeSecTC(const QDateTime& date) {
    return format(date, "HH:mm:ss");
}

QString du_getDateString(const QDateTime& date) {
    return format(date, "dd/MM/yyyy");
}

QString du_getCompactDateTime(const QDateTime& date) {
    return du_getCompactDate(date) + "-" + du_getCompactTime(date);
}

QString du_getCompactDateTimeSec(const QDateTime& date) {
    return du_getCompactDate(date) + "-" + du_getCompactTimeSec(date);
}

QString du_get86Date(const QDateTime& date) {
    return du_get8date(date) + "_" + du_getCompactTimeSec(date);
}

std::optional<QDateTime> du_createDate(int d, int m, int y) {
    const QString text = strUt_padN(y, 4) + "/" + strUt_pad2(m) + "/" + strUt_pad2(d);
    const QDate day = QDate::fromString(text, "yyyy/MM/dd");
    if (!day.isValid()) return std::nullopt;
    return day.startOfDay();
}
