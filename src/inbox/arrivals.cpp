#include "inbox/arrivals.h"

#include "base/log.h"
#include "inbox/unread_chat.h"

namespace kibo {
namespace {

const QString kWithoutText = QStringLiteral("(media)");

}  // namespace

void Arrivals::take(const QList<ArrivedMessage>& arrived) {
    QStringList done;
    const bool disabled = isYes(p_.settings.DisableRead);
    for (const ArrivedMessage& message : arrived) {
        const auto row = disabled || taken_.contains(message.key) ? std::nullopt : rowOf(message);
        if (row) {
            if (!p_.journal.add(*row)) break;  // it stays with the page
            log::info("inbox", QStringLiteral("message of %1 characters from %2 came in while its chat was open")
                                   .arg(row->wa_text.size())
                                   .arg(log::maskedNumber(row->wa_no)));
        }
        done.append(message.key);
    }
    taken_ = {done.begin(), done.end()};
    if (!done.isEmpty()) p_.page.forgetArrived(done);
}

/// The message as a row; nothing where it turns out to be none.
std::optional<IncomingRow> Arrivals::rowOf(const ArrivedMessage& message) const {
    UnreadChat chat{message.title, message.text, message.sender};
    if (!message.badge.isEmpty()) {
        const auto unread = unreadChat({message.title, message.badge, message.lines});
        if (!unread) return std::nullopt;
        chat = *unread;
        if (!isMessage(chat.text)) chat.text = message.text;
    }
    // What showed after somebody had typed, or after a draft, may be an old message again.
    if (!message.previewBefore.isEmpty() && !isMessage(message.previewBefore)) return std::nullopt;
    // A picture or a voice note, of which the list showed nothing.
    if (!isMessage(chat.text)) chat.text = kWithoutText;
    const bool byTitle = message.inGroup || !isYes(p_.settings.GetNumberInbox);
    const QString number = byTitle ? chat.title : senderNumber(chat, message.headerPicture, message.number);
    return IncomingRow{isYes(p_.settings.Multi),
                       p_.state.cb_Profil.text,
                       chat.title,
                       number,
                       chat.sender,
                       chat.text,
                       p_.clock.now().addMSecs(-message.ageMs).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))};
}

/// Whether what a chat's row shows is a message: not that somebody types, nor a text left in the message box.
bool Arrivals::isMessage(const QString& text) const {
    const QString trimmed = text.trimmed();
    return !trimmed.isEmpty() && trimmed != QStringLiteral(":") &&
           !isTyping(text, p_.elements[QStringLiteral("XXTyping")]) &&
           !isDraft(text, p_.elements[QStringLiteral("XXDraft")]);
}

}  // namespace kibo
