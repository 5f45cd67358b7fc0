#include "inbox/unread_chat.h"

#include <algorithm>

#include "browser/element_table.h"
#include "engine/phone_number.h"

namespace kibo {
namespace {

constexpr qsizetype kFewestLines = 4;
constexpr qsizetype kTypingCharacters = 6;
const QString kGroupMark = QStringLiteral(":");

/// "7", and of very many "99+" or "1,234"; in the digits of any script.
bool isCount(const QString& line) {
    static const QString kBetween = QStringLiteral("+,.\u066b\u066c");
    return !line.isEmpty() && line.front().isDigit() &&
           std::all_of(line.begin(), line.end(), [](QChar c) { return c.isDigit() || kBetween.contains(c); });
}

}  // namespace

std::optional<UnreadChat> unreadChat(const ChatEntry& entry) {
    const QStringList& lines = entry.lines;
    const qsizetype last = lines.size() - 1;
    if (entry.title.isEmpty() || lines.size() < kFewestLines || !isCount(lines[last]) || entry.badge != lines[last])
        return std::nullopt;
    UnreadChat chat{lines[0], lines[last - 1], {}};
    if (lines[last - 2].trimmed() == kGroupMark) chat.sender = lines[last - 3].trimmed();
    return chat;
}

std::optional<UnreadChat> readChat(ChatEntry entry) {
    entry.title = entry.lines.value(0);
    entry.badge = QStringLiteral("1");
    entry.lines.append(entry.badge);
    return unreadChat(entry);
}

QString senderNumber(const UnreadChat& chat, const QString& headerPicture, const QString& namedNumber) {
    if (!chat.sender.isEmpty()) return chat.title;
    const QString pictured = numberInPicture(headerPicture);
    if (!pictured.isEmpty()) return pictured;
    if (looksLikeNumber(chat.title)) return digitsIn(chat.title);
    return namedNumber.isEmpty() ? chat.title : namedNumber;
}

bool isTyping(const QString& text, const QString& typing) {
    if (typing.contains(u'|') || typing.contains(u'*')) {
        QString shown = text;
        return matchesNotice(typing, shown.replace(QStringLiteral("..."), QStringLiteral("…")));
    }
    return !typing.isEmpty() && text.left(kTypingCharacters).toUpper() == typing.left(kTypingCharacters).toUpper();
}

bool isDraft(const QString& text, const QString& draft) {
    const QStringList beginnings = draft.split(u'|', Qt::SkipEmptyParts);
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&text](const QString& beginning) { return text.startsWith(beginning); });
}

}  // namespace kibo
