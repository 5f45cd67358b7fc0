#pragma once

#include "engine/delivery_check.h"
#include "engine/message_sender.h"
#include "engine/outbox_queue.h"
#include "engine/send_journal.h"

namespace kibo {

/// Settles what the journal says has begun and not ended: after a crash, a stop or a lost browser, and after a database
/// that broke off in the middle. Nothing new is taken before that.
///
///  - not typed, still in the queue: a copy in the sent log goes, the message is sent in its turn;
///  - not typed, its copy in the sent log: it goes back into the queue, but once only, unless the operator has ended
///  the
///    program: it may be this message that ends browser or gateway;
///  - not typed otherwise: failed, ready to be queued again; its content comes from the journal if it must;
///  - perhaps sent: its chat is opened and shows whether it was; if that can't be told, failed as "in doubt".
class SendRecovery {
 public:
    SendRecovery(GatewayState& state, const Clock& clock, SendJournal& journal, OutboxQueue& queue,
                 MessageSender& sender, DeliveryCheck& deliveryCheck);

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
    const Clock& clock_;
    SendJournal& journal_;
    OutboxQueue& queue_;
    MessageSender& sender_;
    DeliveryCheck& deliveryCheck_;
};

}  // namespace kibo
