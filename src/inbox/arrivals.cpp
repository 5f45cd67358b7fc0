#include "inbox/arrivals.h"

#include "app/log.h"
#include "inbox/unread_chat.h"

namespace kibo {

void Arrivals::take(const QList<ArrivedMessage>& arrived) {
    QStringList done;
    const bool disabled = isYes(p_.settings.DisableRead);
    for (const ArrivedMessage& message : arrived) {
        const auto row = disabled || taken_.contains(message.key) ? std::nullopt : rowOf(message);
        if (row) {
            if (const auto written = p_.journal.add(*row); !written) {
                log::error("inbox", QStringLiteral("a message is left with the page: ") +
                                        QString::fromStdString(written.failure().text));
                break;
            }
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
        if (!isShown(chat.text)) chat.text = message.text;
    }
    // What showed after somebody had typed, or after a draft, may be an old message again.
    if (!message.previewBefore.isEmpty() && !isShown(message.previewBefore)) return std::nullopt;
    if (chat.text.trimmed().isEmpty() || chat.text.trimmed() == QStringLiteral(":")) return std::nullopt;
    const QString number =
        isYes(p_.settings.GetNumberInbox) ? senderNumber(chat, message.headerPicture, message.number) : chat.title;
    return IncomingRow{isYes(p_.settings.Multi),
                       p_.state.cb_Profil.text,
                       chat.title,
                       number,
                       chat.sender,
                       chat.text,
                       p_.clock.now().addMSecs(-message.ageMs).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))};
}

/// Whether a chat's row shows a message: not that somebody types, nor a text left in the message box.
bool Arrivals::isShown(const QString& text) const {
    const QString draft = p_.elements[QStringLiteral("XXDraft")];
    return !isTyping(text, p_.elements[QStringLiteral("XXTyping")]) && (draft.isEmpty() || !text.startsWith(draft));
}

}  // namespace kibo
