#include "engine/phone_number.h"

#include <QStringList>
#include <algorithm>

namespace kibo {
namespace {

constexpr int kShortestNational = 7;

bool isAsciiDigit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

QString withoutLeadingZeros(QString digits) {
    while (digits.startsWith(QLatin1Char('0'))) digits.remove(0, 1);
    return digits;
}

}  // namespace

// Pages in some languages write numbers in the digits of their own script.
QString digitsIn(const QString& text) {
    QString digits;
    for (const QChar c : text) {
        if (c.isDigit()) digits += QChar(u'0' + c.digitValue());
    }
    return digits;
}

QString cleanedNumber(const QString& number) {
    QString cleaned = number;
    for (const char16_t c : {u'-', u'+', u' ', u'(', u')'}) cleaned.remove(QChar(c));
    return cleaned;
}

QString destinationNumber(const QString& number, const QString& trunkPrefix, const QString& countryCode) {
    const QString cleaned = cleanedNumber(number);
    if (trunkPrefix.isEmpty() || countryCode.isEmpty() || !cleaned.startsWith(trunkPrefix)) return cleaned;
    return cleanedNumber(countryCode) + cleaned.mid(trunkPrefix.size());
}

bool isPositiveNumber(const QString& cleaned) {
    return !cleaned.isEmpty() && std::all_of(cleaned.begin(), cleaned.end(), isAsciiDigit) &&
           std::any_of(cleaned.begin(), cleaned.end(), [](QChar c) { return c != QLatin1Char('0'); });
}

QString numberInPicture(const QString& address) {
    const QStringList parts = address.split(QStringLiteral("&u="));
    if (parts.size() < 2) return {};
    const QString number = parts[1].section(QStringLiteral("%40"), 0, 0);
    return isPositiveNumber(number) ? number : QString();
}

bool looksLikeNumber(const QString& title) {
    const auto isFormatting = [](QChar c) {
        // Direction marks and isolates surround numbers in right-to-left pages.
        return c.isSpace() || c == QLatin1Char('+') || c == QLatin1Char('-') || c == QChar(0x2011) ||
               c == QLatin1Char('(') || c == QLatin1Char(')') || c.category() == QChar::Other_Format;
    };
    return digitsIn(title).size() >= kShortestNational &&
           std::all_of(title.begin(), title.end(), [&](QChar c) { return c.isDigit() || isFormatting(c); });
}

bool sameSubscriber(const QString& one, const QString& other) {
    QString longer = digitsIn(one);
    QString shorter = digitsIn(other);
    if (longer == shorter) return !longer.isEmpty();
    if (longer.size() < shorter.size()) std::swap(longer, shorter);
    shorter = withoutLeadingZeros(shorter);
    return shorter.size() >= kShortestNational && longer.endsWith(shorter);
}

}  // namespace kibo
