#include "widgets/shown_text.h"

namespace kibo {
namespace {

/// Those of Unicode, and the character 11, which typing a line break leaves in a text.
bool breaksLine(QChar character) {
    const char16_t code = character.unicode();
    return (code >= u'\n' && code <= u'\r') || code == 0x85 || code == 0x2028 || code == 0x2029;
}

}  // namespace

QString shownText(const QString& text, qsizetype most) {
    QString shown = text.left(most);
    // Never leave half of a character outside the basic plane, such as an emoji.
    if (text.size() > shown.size()) {
        if (!shown.isEmpty() && shown.back().isHighSurrogate()) shown.chop(1);
        shown.append(QChar(0x2026));
    }
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (QChar& character : shown)
        if (breaksLine(character)) character = QLatin1Char('\n');
    return shown;
}

QString shownLine(const QString& text, qsizetype most) {
    return shownText(text, most).replace(QLatin1Char('\n'), QChar(0x23CE)).replace(u'\t', u' ');
}

}  // namespace kibo
