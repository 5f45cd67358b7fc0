#pragma once

#include <QList>
#include <optional>

#include "base/clock.h"
#include "browser/chat_page.h"
#include "engine/chat_target.h"
#include "engine/pacing.h"
#include "engine/send_journal.h"

namespace kibo {

/// Whether a message that may have been sent stands in its chat.
enum class Delivery { Delivered, NotDelivered, Unknown };

/// Decides by what a chat shows, newest message last. Only messages behind the one that was the newest before Enter
/// count, since the same text may have been sent to this chat before; if that one isn't among them, nothing is certain.
Delivery judgeDelivery(const SendJournal::Entry& entry, const QList<ChatMessage>& shown);

/// Opens the chat of a message that was left in doubt and looks for it.
class DeliveryCheck {
 public:
    DeliveryCheck(ChatPage& page, Clock& clock, Pacing& pacing, ChatTarget& target);

    /// Nothing when the look was broken off: the program is about to end, or the browser has gone.
    std::optional<Delivery> look(const SendJournal::Entry& entry);

 private:
    ChatPage& page_;
    Clock& clock_;
    Pacing& pacing_;
    ChatTarget& target_;
};

}  // namespace kibo
