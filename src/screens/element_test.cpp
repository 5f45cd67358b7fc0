#include "screens/element_test.h"

#include "browser/element_table.h"

namespace kibo {
namespace {

constexpr int kShownCharacters = 60;

QString counted(int number) {
    return number == 1 ? QStringLiteral("1 match") : QStringLiteral("%1 matches").arg(number);
}

/// A text as a literal of XPath 1.0, which knows no escapes: it must not hold double quotes.
QString literal(QString text) {
    return QLatin1Char('"') + text.remove(QLatin1Char('"')) + QLatin1Char('"');
}

/// XPath 1.0 has no function for it.
QString lowered(const QString& expression) {
    return QStringLiteral("translate(%1, 'ABCDEFGHIJKLMNOPQRSTUVWXYZ', 'abcdefghijklmnopqrstuvwxyz')").arg(expression);
}

}  // namespace

Verdict locatorVerdict(const Matches& matches) {
    if (!matches.understood) return {false, QStringLiteral("neither XPath nor CSS")};
    if (matches.count == 0) return {false, QStringLiteral("no match")};
    if (matches.visible == 0) return {true, counted(matches.count) + QStringLiteral(", not visible")};
    return {true, counted(matches.count)};
}

Verdict noticeVerdict(const QString& wanted, const Matches& shown) {
    if (!shown.understood) return locatorVerdict(shown);
    for (const QString& text : shown.texts)
        if (matchesNotice(wanted, text)) return {true, QStringLiteral("found")};
    if (shown.texts.isEmpty()) return {false, QStringLiteral("the page shows no notice")};
    return {false, QStringLiteral("the page says: ") + shown.texts.first().simplified().left(kShownCharacters)};
}

QString locatorOfTexts(const QString& wanted) {
    QStringList alternatives;
    const QStringList texts = wanted.split(QLatin1Char('|'), Qt::SkipEmptyParts);
    for (const QString& text : texts) {
        QStringList pieces;
        const QStringList words = text.split(QLatin1Char('*'), Qt::SkipEmptyParts);
        for (const QString& word : words)
            pieces.append(QStringLiteral("contains(%1, %2)").arg(lowered(QStringLiteral(".")), lowered(literal(word))));
        if (!pieces.isEmpty()) alternatives.append(pieces.join(QStringLiteral(" and ")));
    }
    if (alternatives.isEmpty()) return {};
    return QStringLiteral("//body//*[not(self::script or self::style)][text()[%1]]")
        .arg(alternatives.join(QStringLiteral(" or ")));
}

}  // namespace kibo
