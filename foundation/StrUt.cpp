#include "foundation/StrUt.h"

#include <QList>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace {
QString fromChars(const char* begin, const char* end) {
    return QString::fromLatin1(begin, static_cast<qsizetype>(end - begin));
}
} // namespace

QString strUt_padN(int64_t value, int n) {
    const QString digits =
        QString::number(value < 0 ? -static_cast<uint64_t>(value) : static_cast<uint64_t>(value));
    const QString padded = digits.rightJustified(n, u'0');
    return value < 0 ? "-" + padded : padded;
}

QString strUt_pad2(int64_t value) {
    return strUt_padN(value, 2);
}

QString strUt_pad3(int64_t value) {
    return strUt_padN(value, 3);
}

QString strUt_doubleToString(double value, int decimals) {
    if (!std::isfinite(value)) return strUt_doublePrint(value);
    // 309 integer digits at most, plus sign, point and the requested fraction.
    char buffer[400];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed,
                                         std::clamp(decimals, 0, 60));
    if (ec != std::errc()) return strUt_doublePrint(value);
    return fromChars(buffer, end);
}

QString strUt_doublePrint(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    const double magnitude = std::fabs(value);
    const bool scientific = magnitude != 0.0 && (magnitude < 1e-4 || magnitude >= 1e16);
    char buffer[64];
    const auto [end, ec] =
        std::to_chars(buffer, buffer + sizeof buffer, value,
                      scientific ? std::chars_format::scientific : std::chars_format::fixed);
    if (ec != std::errc()) return "nan";
    QString text = fromChars(buffer, end);
    if (!scientific && !text.contains(u'.')) text += ".0";
    return text;
}

QString strUt_acceptChars(const QString& text, const QString& accepted, const QString& replacement) {
    // By code point, so a character outside the basic plane is one character, not two.
    const auto allowed = accepted.toUcs4();
    QString out;
    for (const char32_t c : text.toUcs4())
        out += allowed.contains(c) ? QString::fromUcs4(&c, 1) : replacement;
    return out;
}
