#include "engine/send_recovery.h"

#include <algorithm>

#include "base/log.h"

namespace kibo {
namespace {

const QString kNotTyped = QStringLiteral("the gateway ended before the message was typed; it can be queued again");
const QString kNotTypedAgain = QStringLiteral(
    "the browser was lost or the gateway ended before the message was typed, for the second time; it can be queued "
    "again");
const QString kNotSent = QStringLiteral("the message was not sent: its chat doesn't show it; it can be queued again");
const QString kCanNotTell = QStringLiteral("in doubt: the message was being sent, and its chat doesn't tell");
constexpr qint64 kSecondLookMs = 10'000;
constexpr int kMostLostLooks = 2;

}  // namespace

SendRecovery::SendRecovery(GatewayState& state, const Clock& clock, SendJournal& journal, OutboxQueue& queue,
                           MessageSender& sender, DeliveryCheck& deliveryCheck, MessageRecords& records,
                           ConfirmHold confirmHold)
    : state_(state),
      clock_(clock),
      journal_(journal),
      queue_(queue),
      sender_(sender),
      deliveryCheck_(deliveryCheck),
      records_(records),
      confirmHold_(std::move(confirmHold)) {}

bool SendRecovery::settleInStore() {
    // As long as another instance has the profile, the messages are his to settle.
    if (state_.standby.visible) return false;
    if (journal_.entries().empty()) return true;
    // Asked anew, since this process may have been stopped until now.
    if (confirmHold_ && confirmHold_({}, {}) != Hold::Ours) return false;
    if (!dropSettledElsewhere()) return false;
    bool settled = true;
    const std::vector<SendJournal::Entry> entries = journal_.entries();  // settling takes them out of the journal
    for (const SendJournal::Entry& entry : entries) {
        if (records_.isOwed(entry.row.id)) continue;
        if (entry.stage == SendJournal::Stage::Taken) settled = settleTaken(entry) && settled;
        const bool noted =
            (entry.stage == SendJournal::Stage::Failed && queue_.markFailed(entry.row.id, entry.reason)) ||
            (entry.stage == SendJournal::Stage::Sent && records_.ended(entry.row.id, {MessageRecords::kSent}));
        if (noted) journal_.ended(entry.row.id);
    }
    return settled;
}

/// An instance that had taken over meanwhile knew of them from the database.
bool SendRecovery::dropSettledElsewhere() {
    const std::vector<SendJournal::Entry> entries = journal_.entries();
    for (const SendJournal::Entry& entry : entries) {
        const auto ended = records_.endedElsewhere(entry.row.id);
        if (!ended) return false;
        if (!*ended) continue;
        log::warning("engine",
                     QStringLiteral("message %1 was settled by the instance that had taken over").arg(entry.row.id));
        journal_.ended(entry.row.id);
    }
    return true;
}

bool SendRecovery::settleTaken(const SendJournal::Entry& entry) {
    const auto place = queue_.find(entry.row.id);
    if (!place) return false;
    if (place->queued) {
        if (place->copied && !queue_.removeCopy(entry.row)) return false;
        log::info("engine", QStringLiteral("message %1 is in the queue again").arg(entry.row.id));
        isBack(entry.row.id);
        journal_.ended(entry.row.id);
        return true;
    }
    if (!place->copied) {
        // Taking is one transaction, so it never happened: somebody withdrew the row or gave it to another profile.
        log::warning("engine", QStringLiteral("message %1 is not in the queue any more; nothing was sent, and nothing "
                                              "is written")
                                   .arg(entry.row.id));
        journal_.ended(entry.row.id);
        return true;
    }
    // Neither a stop nor an answer that the server owed says anything against the message.
    const bool blameless =
        clock_.waitingStopped() || queue_.takeIsUnknown(entry.row.id) || sender_.isUnconfirmed(entry.row.id);
    if (!entry.wentBack || blameless) {
        const bool moved = queue_.putBack(entry.row);
        if (const auto elsewhere = records_.endedElsewhere(entry.row.id); !moved && elsewhere != false) {
            if (elsewhere) journal_.ended(entry.row.id);
            return elsewhere.has_value();
        }
        const auto now = moved ? std::optional(OutboxQueue::Place{true, false}) : queue_.find(entry.row.id);
        if (!now) return false;
        if (now->queued) {  // a server that broke off may have put it back all the same
            log::warning("engine",
                         QStringLiteral("message %1 is in the queue again: it was not typed").arg(entry.row.id));
            isBack(entry.row.id);
            if (entry.wentBack || !blameless)
                journal_.wentBack(entry.row.id);
            else
                journal_.ended(entry.row.id);
            return true;
        }
    }
    showAsMessage(entry);
    sender_.recordFailure(entry.wentBack ? kNotTypedAgain : kNotTyped);
    return true;
}

/// What this leaves open is closed with the message's next attempt.
void SendRecovery::isBack(const QString& id) {
    records_.ended(id, {MessageRecords::kPutBack});
}

bool SendRecovery::needsPage() const {
    return std::any_of(journal_.entries().begin(), journal_.entries().end(),
                       [](const SendJournal::Entry& entry) { return entry.stage == SendJournal::Stage::Typed; });
}

SendRecovery::Look SendRecovery::settleOnPage() {
    const auto found = std::find_if(journal_.entries().begin(), journal_.entries().end(),
                                    [](const SendJournal::Entry& e) { return e.stage == SendJournal::Stage::Typed; });
    if (found == journal_.entries().end()) return Look::NoStore;
    // A copy, since settling takes the entry out of the journal.
    SendJournal::Entry entry = *found;
    const QString id = entry.row.id;
    if (!looksFirst(id) && clock_.monotonicMs() - firstLookMs_ < kSecondLookMs) return Look::Waiting;
    const auto place = queue_.find(id);
    if (!place) return Look::NoStore;  // the store is away again
    // A store that lost its last statements may have it in the queue again; it must not go out from there.
    if (place->queued) {
        const OutboxQueue::Taken taken = queue_.take(entry.row);
        if (taken == OutboxQueue::Taken::Unknown) return Look::NoStore;
        // What the sent log refuses holds up nothing but itself.
        if (taken == OutboxQueue::Taken::Refused && !queue_.hold(id)) return Look::NoStore;
    }
    showAsMessage(entry);
    state_.step = QStringLiteral("Looking whether message %1 was sent").arg(id);
    const std::optional<Delivery> delivery = deliveryCheck_.look(entry);
    if (!delivery) {
        firstLookId_.clear();
        if (clock_.waitingStopped()) return Look::Done;
        // It may be this chat that ends the browser, and the queue waits behind it.
        journal_.lookLost(id);
        if (entry.lostLooks + 1 < kMostLostLooks) return Look::Done;
    } else if (delivery != Delivery::Delivered && looksFirst(id)) {
        log::info("engine", QStringLiteral("message %1 is not seen in its chat, looking again").arg(id));
        firstLookId_ = id;
        firstLookMs_ = clock_.monotonicMs();
        return Look::Done;
    }
    const QString status = delivery == Delivery::Delivered ? QString() : QStringLiteral("fail");
    if (!place->queued && !place->copied && !queue_.addCopy(entry.row, status)) return Look::Done;
    if (delivery == Delivery::Delivered) {
        log::info("engine", QStringLiteral("message %1 was sent: its chat shows it").arg(id));
        ++state_.sentCount;
        if (records_.ended(id, {MessageRecords::kSent}))
            journal_.ended(id);
        else
            journal_.sent(id);
    } else {
        sender_.recordFailure(delivery == Delivery::NotDelivered ? kNotSent : kCanNotTell);
    }
    firstLookId_.clear();
    return Look::Done;
}

void SendRecovery::showAsMessage(const SendJournal::Entry& entry) {
    state_.txtid.text = entry.row.id;
    state_.txtNo.text = entry.destination.isEmpty() ? entry.row.number : entry.destination;
    state_.txtMedia.text = entry.row.media;
    state_.txtFile.text = entry.row.file;
    state_.txtMsg2.text = entry.text.isEmpty() ? entry.row.text : entry.text;
}

}  // namespace kibo
