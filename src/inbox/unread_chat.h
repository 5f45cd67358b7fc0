#pragma once

#include <QString>
#include <optional>

#include "browser/chat_page.h"

namespace kibo {

/// What a row of the chat list tells about a chat with unread messages.
struct UnreadChat {
    QString title;   ///< the saved name, or the number as the page formats it
    QString text;    ///< the last message, as the row shows it
    QString sender;  ///< in a group: who wrote; else empty
};

/// Reads a row: title, time, in a group the member and ":", the text, and last the number of unread messages. Empty
/// for a row that is no chat or has nothing unread. In a group the last line may be a message that is a number itself;
/// the page has told such a line from the count.
std::optional<UnreadChat> unreadChat(const ChatEntry& entry);

/// The same for a row whose messages are read: its last line is the text.
std::optional<UnreadChat> readChat(ChatEntry entry);

/// Number of who wrote: named by the address of the chat's picture, by the chat's title, or else `namedNumber`, by
/// which its messages name it; in a group, and where nothing names it, the chat's title.
QString senderNumber(const UnreadChat& chat, const QString& headerPicture, const QString& namedNumber);

/// Whether the row shows that somebody types instead of a message. `typing`: the page's texts for it as `matchesNotice`
/// takes them; of a single one without "*" the first six characters count, in any case.
bool isTyping(const QString& text, const QString& typing);

/// Whether the row shows a text that was left in the chat's message box. `draft`: what stands before it, several
/// separated by "|".
bool isDraft(const QString& text, const QString& draft);

}  // namespace kibo
