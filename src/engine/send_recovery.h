#pragma once

#include "engine/delivery_check.h"
#include "engine/message_sender.h"
#include "engine/outbox_queue.h"
#include "engine/send_journal.h"

namespace kibo {

/// Settles what the journal says has begun and not ended: after a crash, and after a database that broke off in the
/// middle. Nothing new is taken before that.
///
///  - not typed, still in the queue: a copy in the sent log goes, the message is sent in its turn;
///  - not typed, in neither table: withdrawn or given to another profile, so nothing is written;
///  - not typed, moved to the sent log: failed, ready to be queued again;
///  - perhaps sent: its chat is opened and shows whether it was; if that can't be told, failed as "in doubt".
class SendRecovery {
 public:
    SendRecovery(GatewayState& state, SendJournal& journal, OutboxQueue& queue, MessageSender& sender,
                 DeliveryCheck& deliveryCheck);

    /// What the tables can tell. False while a message that was not typed can't be settled: the store refuses.
    bool settleInStore();
    /// Whether a message must be looked for on the page.
    bool needsPage() const;
    /// Looks for one such message. The page must be ready and free. False when it was not touched.
    bool settleOnPage();

 private:
    bool settleTaken(const SendJournal::Entry& entry);
    void showAsMessage(const SendJournal::Entry& entry);

    GatewayState& state_;
    SendJournal& journal_;
    OutboxQueue& queue_;
    MessageSender& sender_;
    DeliveryCheck& deliveryCheck_;
};

}  // namespace kibo
