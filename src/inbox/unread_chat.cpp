#include "inbox/unread_chat.h"

#include <algorithm>

#include "engine/phone_number.h"

namespace kibo {
namespace {

constexpr qsizetype kFewestLines = 4;
constexpr qsizetype kTypingCharacters = 6;
const QString kGroupMark = QStringLiteral(":");

/// "7", and of very many "99+" or "1,234".
bool isCount(const QString& line) {
    return !line.isEmpty() && line.front().isDigit() && std::all_of(line.begin(), line.end(), [](QChar c) {
        return c.isDigit() || c == u'+' || c == u',' || c == u'.';
    });
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
    return !typing.isEmpty() && text.left(kTypingCharacters).toUpper() == typing.left(kTypingCharacters).toUpper();
}

}  // namespace kibo
