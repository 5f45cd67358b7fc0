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
///  - not typed, in neither table: withdrawn or given to another profile, so nothing is written;
///  - not typed, its copy in the sent log: it goes back into the queue, but once only, unless the operator has ended
///  the
///    program or the server owed its answer: it may be this message that ends browser or gateway;
///  - not typed otherwise: failed, ready to be queued again;
///  - perhaps sent: its chat is opened and shows whether it was. What it doesn't show is looked for a second time after
///    a while, since a page may draw a chat late; if that can't be told then, failed as "in doubt".
class SendRecovery {
 public:
    SendRecovery(GatewayState& state, const Clock& clock, SendJournal& journal, OutboxQueue& queue,
                 MessageSender& sender, DeliveryCheck& deliveryCheck, MessageRecords& records, ConfirmHold confirmHold);

    /// What the tables can tell. False while a message that was not typed can't be settled: the store refuses.
    bool settleInStore();
    /// Whether a message must be looked for on the page.
    bool needsPage() const;
    enum class Look {
        Done,     ///< the page was used, and the chat has to be left
        Waiting,  ///< for the time of the second look
        NoStore   ///< the store can't tell at the moment
    };
    /// Looks for one such message. The page must be ready and free.
    Look settleOnPage();

 private:
    bool dropSettledElsewhere();
    bool settleTaken(const SendJournal::Entry& entry);
    bool looksFirst(const QString& id) const { return firstLookId_ != id; }
    void isBack(const QString& id);
    void showAsMessage(const SendJournal::Entry& entry);

    GatewayState& state_;
    const Clock& clock_;
    SendJournal& journal_;
    OutboxQueue& queue_;
    MessageSender& sender_;
    DeliveryCheck& deliveryCheck_;
    MessageRecords& records_;
    ConfirmHold confirmHold_;
    QString firstLookId_;  // of the message that the first look has not found
    qint64 firstLookMs_ = 0;
};

}  // namespace kibo
