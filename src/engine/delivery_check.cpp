#include "engine/delivery_check.h"

#include <algorithm>

#include "engine/drawn_text.h"

namespace kibo {
namespace {

constexpr int kSmallWaitMs = 100;
/// The page draws a chat's messages after its header, and folds long texts.
constexpr int kLooks = 20;
constexpr qsizetype kUnfolded = 300;

}  // namespace

Delivery judgeDelivery(const SendJournal::Entry& entry, const QList<ChatMessage>& shown) {
    if (entry.lastMessageId.isEmpty()) return Delivery::Unknown;
    const auto before = std::find_if(shown.begin(), shown.end(),
                                     [&](const ChatMessage& message) { return message.id == entry.lastMessageId; });
    if (before == shown.end()) return Delivery::Unknown;
    const QString text = essence(entry.text).left(kUnfolded);
    const bool own = std::any_of(before + 1, shown.end(), [](const ChatMessage& message) { return message.own; });
    const bool twoFiles = !entry.row.media.isEmpty() && !entry.row.file.isEmpty();
    // Without a text it may have been the second of two files: the first one stands above then.
    if (text.isEmpty()) return own || twoFiles ? Delivery::Unknown : Delivery::NotDelivered;
    const bool found = std::any_of(before + 1, shown.end(), [&](const ChatMessage& message) {
        return message.own && essence(message.text).contains(text);
    });
    // The text goes with the first of two files and tells nothing of the second.
    if (found && twoFiles) return Delivery::Unknown;
    return found ? Delivery::Delivered : Delivery::NotDelivered;
}

DeliveryCheck::DeliveryCheck(ChatPage& page, Clock& clock, Pacing& pacing, ChatTarget& target)
    : page_(page), clock_(clock), pacing_(pacing), target_(target) {}

std::optional<Delivery> DeliveryCheck::look(const SendJournal::Entry& entry) {
    const bool byName = ChatTarget::isByName(entry.row.mode, entry.destination);
    const auto chat = byName ? target_.openName(entry.destination) : target_.openNumber(entry.destination);
    Delivery delivery = Delivery::Unknown;
    // Found is certain at once; missing only when the messages have had time to come up.
    for (int i = 0; chat && i < kLooks && delivery != Delivery::Delivered && !clock_.waitingStopped(); ++i) {
        pacing_.WA_WAIT(kSmallWaitMs);
        if (const auto shown = page_.lastMessages()) delivery = judgeDelivery(entry, *shown);
    }
    if (delivery == Delivery::Delivered) return delivery;
    if (clock_.waitingStopped() || page_.look().presence == PageLook::Presence::Gone) return std::nullopt;
    return delivery;
}

}  // namespace kibo
