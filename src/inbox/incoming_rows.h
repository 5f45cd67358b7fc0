#pragma once

#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/gateway_state.h"
#include "inbox/incoming_row.h"
#include "inbox/unread_chat.h"

namespace kibo {

/// Makes rows of what the page shows.
class IncomingRows {
 public:
    /// All must outlive the object.
    IncomingRows(const GatewayState& state, const Settings& settings, const ElementTable& elements, const Clock& clock)
        : state_(state), settings_(settings), elements_(elements), clock_(clock) {}

    /// What a row of the chat list says; picture and number are those that the opened chat names.
    IncomingRow of(const UnreadChat& chat, const QString& headerPicture = {}, const QString& namedNumber = {}) const;
    /// A message of the open chat, or one whose mark the opening took away; nothing where it turns out to be none.
    std::optional<IncomingRow> of(const ArrivedMessage& message) const;

    /// Whether what a row of the list shows is not a message: somebody types.
    bool showsTyping(const QString& text) const;
    /// It is a text left in the message box.
    bool showsDraft(const QString& text) const;

 private:
    const GatewayState& state_;
    const Settings& settings_;
    const ElementTable& elements_;
    const Clock& clock_;
};

}  // namespace kibo
