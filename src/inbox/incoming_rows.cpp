#include "inbox/incoming_rows.h"

namespace kibo {
namespace {

const QString kWithoutText = QStringLiteral("(media)");

}  // namespace

IncomingRow IncomingRows::of(const UnreadChat& chat, const QString& headerPicture, const QString& namedNumber) const {
    IncomingRow row;
    row.multi = isYes(settings_.Multi);
    row.PROFIL = state_.cb_Profil.text;
    row.title = chat.title;
    row.wa_no = isYes(settings_.GetNumberInbox) ? senderNumber(chat, headerPicture, namedNumber) : chat.title;
    row.SUB_NO = chat.sender;
    row.inGroup = !chat.sender.isEmpty();
    row.wa_text = chat.text;
    row.wa_time = clock_.now().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    return row;
}

std::optional<IncomingRow> IncomingRows::of(const ArrivedMessage& message) const {
    UnreadChat chat{message.title, message.text, message.sender};
    if (!message.badge.isEmpty()) {
        const auto unread = unreadChat({message.title, message.badge, message.lines});
        if (!unread) return std::nullopt;
        chat = *unread;
        // What the message was, the list no longer tells.
        if (showsTyping(chat.text) || showsDraft(chat.text)) chat.text.clear();
    }
    const QString trimmed = chat.text.trimmed();
    if (trimmed.isEmpty() || trimmed == QStringLiteral(":")) chat.text = kWithoutText;
    IncomingRow row = of(chat, message.headerPicture, message.number);
    if (message.inGroup) row.wa_no = chat.title;
    row.messageId = message.messageId;
    row.chatId = message.chatId;
    row.inGroup = row.inGroup || message.inGroup;
    row.messageTime = message.time;
    row.kind = message.kind;
    row.wa_time = clock_.now().addMSecs(-message.ageMs).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    return row;
}

bool IncomingRows::showsTyping(const QString& text) const {
    return isTyping(text, elements_[QStringLiteral("XXTyping")]);
}

bool IncomingRows::showsDraft(const QString& text) const {
    return isDraft(text, elements_[QStringLiteral("XXDraft")]);
}

}  // namespace kibo
